// What happens when memory is exhausted: the program says so, removes its temporary files and ends
// with status 1. Nothing that follows could be trusted: libraries in between crash, or leave out
// what they had no room for.
#pragma once

#include <cstddef>

namespace klib::programs {

[[noreturn]] void end_without_memory();

// While it lives, a C++ allocation that fails and one of the library end the process that way: the
// library aborts the process then if its parameter "DEBUG" is set.
class EndsWithoutMemory {
 public:
  explicit EndsWithoutMemory(const char *program);
  ~EndsWithoutMemory();
  EndsWithoutMemory(const EndsWithoutMemory &) = delete;
  EndsWithoutMemory &operator=(const EndsWithoutMemory &) = delete;
};

// What the system says about an error; "not enough memory" for memory, in the same words
// everywhere.
const char *error_text(int error);

}  // namespace klib::programs
