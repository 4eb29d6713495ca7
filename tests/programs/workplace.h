// What the tests of the programs share: an own directory in which the built programs run, and a
// notation for bytes.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace klib::test {

// "{98}weight{FF}2{99}" with every {hex} pair turned into its byte, and the inverse, in which line
// feeds are shown as '/' at the end of a line.
std::string coded(std::string_view notation);
std::string shown(std::string_view bytes);

struct Outcome {
  int status;
  std::string errors;  // what was written to standard error
  std::string output;
};

class Workplace : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  void write(const std::string &name, std::string_view content) const;
  std::string read(const std::string &name) const;  // "(none)" when there is no such file
  // `before` is for the shell that runs the program, such as "ulimit -f 1; ".
  Outcome run(const std::string &program, const std::string &arguments,
              const std::string &before = "") const;
  // A sentence file, with the header that it needs to belong to job.anc, if there is one; and one
  // without its header.
  void write_sentences(const std::string &name, std::string_view content,
                       const std::string &language = "ENGLISH") const;
  std::string read_sentences(const std::string &name) const;
  // Extracts the page to job.*, and checks that it comes back without a translation. The lines of
  // JOB.txt, each followed by '/'.
  std::string offered(const std::string &page, const std::string &options = "") const;
  std::string files() const;  // the names of all files, in order

  std::string directory_;
};

}  // namespace klib::test
