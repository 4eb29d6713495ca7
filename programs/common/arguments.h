// The check of a program's arguments, before the main loop takes them.
#pragma once

#include "programs/common/program.h"

namespace klib::programs {

enum class Arguments { good, help, bad };

// Prints the usage text for -h and --help, and says on standard error what is wrong otherwise.
Arguments check_arguments(const Program &program, int argc, char **argv);

}  // namespace klib::programs
