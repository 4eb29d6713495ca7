// The double stack's part that only the library and its tests use.
#pragma once

namespace klib::double_stack {

// Releases the double stack and the texts still on it.
void reset();

}  // namespace klib::double_stack
