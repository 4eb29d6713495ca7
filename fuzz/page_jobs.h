// Jobs of the page programs, run in this process with their files in the scratch directory.
#pragma once

#include "fuzz/frame.h"
#include "programs/common/program.h"

namespace klib::fuzz {

// Takes the language of a job from the input.
std::string any_language(Input &input);

struct Outcome {
  bool good;             // the exit status is 0
  std::string messages;  // what was written to standard error
};

// Runs a program with these arguments after the directory of the parameter file. Its standard
// output is thrown away.
Outcome run(const programs::Program &program, const std::vector<std::string> &arguments);

void clear_scratch();
std::string scratch_files();  // their names in order, each with a blank after it
bool has_scratch(const std::string &name);

// The words that are separated by white space of ASCII.
std::vector<std::string> words_of(const std::string &line);

// Bytes of a page in UTF-8; the run ends when they are not valid in the encoding.
std::string to_utf8(const std::string &bytes, const std::string &encoding);

}  // namespace klib::fuzz
