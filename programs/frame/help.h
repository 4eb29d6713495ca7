// What --help and --version print.
#pragma once

#include <span>

#include "programs/common/program.h"

namespace klib::programs {

// Print on standard output; false, with a message, when it cannot be written.
bool print_help(const Program &program, std::span<const Option> common);
bool print_version(const Program &program);

}  // namespace klib::programs
