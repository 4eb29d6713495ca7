// The log inside the library.
#pragma once

namespace klib::logging {

void reset();

}  // namespace klib::logging
