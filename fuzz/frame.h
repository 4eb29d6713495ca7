// What all fuzz targets share. A target is one function that takes the fuzzer's bytes apart with
// Input, drives a room of the library with them, and checks what must hold for any input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace klib::fuzz {

// Reads values off the front of the fuzzer's bytes; when they are used up every value is 0 or
// empty.
class Input {
 public:
  Input(const uint8_t *data, size_t size) : next_(data), end_(data + size) {}
  [[nodiscard]] bool empty() const { return next_ == end_; }
  uint8_t byte() { return empty() ? uint8_t{0} : *next_++; }
  int32_t number();  // any 32 bits
  uint32_t below(uint32_t end) { return end == 0 ? 0 : byte() % end; }
  std::string text();  // up to the next NUL, which is skipped
  std::string rest();  // everything that is left, NULs included

 private:
  const uint8_t *next_, *end_;
};

// Ends the run with the text when `holds` is false.
void require(bool holds, const char *what);

// A file of this process in a scratch directory that is the working directory, with the content.
std::string scratch_file(const char *name, const std::string &content);
std::string read_scratch(const char *name);

// Parameters at their defaults, everything released, no log.
void fresh_library();

// Font tables with groups, named groups and packets as the input has them.
void declare_fonts(Input &input);

}  // namespace klib::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
