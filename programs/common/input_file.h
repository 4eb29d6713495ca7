// Files that are read, "-" among them.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace klib::programs {

struct CloseInput {
  void operator()(FILE *stream) const;  // leaves standard input open
};
using InputFile = std::unique_ptr<FILE, CloseInput>;

// Opens a file to be read; "-" is standard input. A failure ends the job (fail()).
InputFile open_input(const char *name);

// Whether there is a file of this name; ends the job when that cannot be found out.
bool is_there(const std::string &name);

// What messages call the file: "standard input" for "-".
const char *input_name(const char *name);

// Ends the job with what the system says about a stream that could not be read.
[[noreturn]] void fail_reading(const char *name);

}  // namespace klib::programs
