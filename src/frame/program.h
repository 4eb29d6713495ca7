// The program frame inside the library.
#pragma once

namespace klib::program {

// The name that the main loop was given, or null. Not copied: it is the program's own text.
[[nodiscard]] const char *name();

}  // namespace klib::program
