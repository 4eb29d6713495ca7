// What all tests share: a notation for bytes, a fixture that starts from a fresh library with a
// log in a scratch directory, and ways to make single calls of the platform fail.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "klib.h"
#include "parameters/parameters.h"
#include "tests/reset.h"

namespace klib::test {

// "a{98}Bold{99}b" with every {hex} pair turned into its byte, and the inverse: bytes below 0x20
// and above 0x7E, and '{' and '}', are shown as {XX}. A null text is shown as "(null)".
std::string bytes(std::string_view notation);
std::string show(std::string_view text);
std::string show(const char *text);

// A text that the library returned, shown in the notation; it is released.
std::string take(char *text);

// Every module as it is loaded (release_modules), and the platform's own calls in force again, with
// every allocation counted.
void reset_all();

// The value of a parameter, by its name.
int32_t &number_of(const char *name);
char *&text_of(const char *name);

std::string read_file(const std::string &name);
void write_file(const std::string &name, std::string_view content);

// A fresh library, default parameters, an own working directory, and an open log. A test fails when
// a block that it allocated through the library is left over at its end.
class Library : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // What was logged since the last call, without time stamps; the log is opened again if an abort
  // has closed it.
  std::string log();

  std::string directory_;  // absolute, removed at the end with all that is in it

 private:
  std::string previous_directory_;
  size_t log_read_ = 0;
};

// From here to the end of the scope the n-th allocation (from 1) fails, and only that one.
class FailingAllocation {
 public:
  explicit FailingAllocation(int n);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation &) = delete;
  [[nodiscard]] bool happened() const;
};

// Number of blocks allocated through the library and not yet released, since reset_all.
int64_t blocks_in_use();

}  // namespace klib::test
