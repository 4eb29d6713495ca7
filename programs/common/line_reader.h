// A UTF-8 text file, line by line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "programs/common/input_file.h"

namespace klib::programs {

// Reads standard input under the name "-". Failures (no file, a directory, a NUL, bytes that are
// not UTF-8) end the job (fail()).
class LineReader {
 public:
  explicit LineReader(const char *name);

  // Whether there is another line; line() is then its text without line feed, carriage return
  // before it, and byte order mark, until the next call.
  bool next();
  std::string_view line() const { return view_; }
  int64_t number() const { return number_; }  // of the line, from 1
  const char *name() const { return name_.c_str(); }

 private:
  bool take_line_end();
  bool read_block();

  std::string name_;
  InputFile stream_;
  std::string block_, line_;
  size_t position_ = 0;  // in the block
  std::string_view view_;
  int64_t number_ = 0;
};

// White space of ASCII, which separates words.
inline bool is_white(char c) {
  constexpr uint64_t white = uint64_t{1} << ' ' | 0x1F << '\t';
  const auto byte = static_cast<unsigned char>(c);
  return byte <= ' ' && (white >> byte & 1) != 0;
}

// The word of the line at or after `position`, which moves after it; empty when there is none.
std::string_view next_word(std::string_view line, size_t &position);

// Whether the line is printable ASCII, its words one blank apart.
bool is_plain(std::string_view line);

// The number of words.
int32_t count_words(std::string_view line);

}  // namespace klib::programs
