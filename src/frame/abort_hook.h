// The program's abort hook inside the library.
#pragma once

namespace klib::abort_hook {

void reset();

}  // namespace klib::abort_hook
