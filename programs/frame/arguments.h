// The command line of the programs, in the manner of GNU: what belongs to the programs alone is an
// --option, a parameter of the engine is -NAME VALUE, both before, between and after the file
// names; "--" ends them; "-" is a file name.
#pragma once

#include <string>
#include <vector>

#include "programs/common/program.h"

namespace klib::programs {

struct Arguments {
  enum Outcome { run, done, bad };  // done: --help or --version has been printed
  Outcome outcome = run;
  std::vector<std::string> parameters;  // -NAME, VALUE, -NAME, VALUE ..., checked
  std::vector<const char *> names;
  const Job *job = nullptr;  // the program's, or that of an option
  bool quiet = false;
  const char *report = nullptr;  // the file for scripts
};

// Reads the arguments, stores the values of the program's options in their places, and prints what
// --help and --version ask for. What is wrong is reported.
Arguments read_arguments(const Program &program, int argc, char **argv);

}  // namespace klib::programs
