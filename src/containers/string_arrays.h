// The numbered arrays' part that only the library and its tests use.
#pragma once

namespace klib::string_arrays {

// Releases the arrays of all slots, not what their elements point to.
void reset();

}  // namespace klib::string_arrays
