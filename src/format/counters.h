// The counters inside the library.
#pragma once

namespace klib::counters {

void reset();

}  // namespace klib::counters
