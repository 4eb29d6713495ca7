// A UTF-8 text file, line by line.
#include "programs/common/line_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "programs/common/program.h"
#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

constexpr size_t longest_line = INT32_MAX;

}  // namespace

LineReader::LineReader(const char *name) : name_(input_name(name)), stream_(open_input(name)) {}

// Takes bytes from the block up to a line feed; whether there was one.
bool LineReader::take_line_end() {
  const std::string_view rest = std::string_view(block_).substr(position_);
  const size_t end = std::min(rest.find('\n'), rest.size());
  if (line_.size() + end > longest_line) fail(name(), number_, "is longer than 2 GiB, the limit");
  if (memchr(rest.data(), '\0', end)) fail(name(), number_, "holds a NUL byte");
  if (line_.capacity() < line_.size() + end)
    line_.reserve(std::min(std::max(2 * line_.size(), line_.size() + end), longest_line));
  line_.append(rest, 0, end);
  position_ += std::min(end + 1, rest.size());
  return end < rest.size();
}

bool LineReader::read_block() {
  constexpr size_t block_size = 65536;
  block_.resize(block_size);
  errno = 0;
  block_.resize(fread(block_.data(), 1, block_size, stream_.get()));
  if (block_.empty() && ferror(stream_.get())) fail_reading(name());
  position_ = 0;
  return !block_.empty();
}

bool LineReader::next() {
  if (position_ == block_.size() && !read_block()) return false;
  number_++;
  line_.clear();
  while (!take_line_end() && read_block()) continue;
  view_ = line_;
  if (view_.ends_with('\r')) view_.remove_suffix(1);
  if (number_ == 1 && view_.starts_with("\xEF\xBB\xBF")) view_.remove_prefix(3);
  if (find_invalid_utf8(view_) != std::string_view::npos) fail(name(), number_, "is not UTF-8");
  return true;
}

std::string_view next_word(std::string_view line, size_t &position) {
  size_t begin = position;
  while (begin < line.size() && is_white(line[begin])) begin++;
  size_t end = begin;
  while (end < line.size() && !is_white(line[end])) end++;
  position = end;
  return line.substr(begin, end - begin);
}

bool is_plain(std::string_view line) {
  if (line.empty() || line.front() == ' ' || line.back() == ' ') return false;
  bool odd = false;
  for (size_t i = 0; i + 1 < line.size(); i++)
    odd |= line[i] < ' ' || line[i] > '~' || (line[i] == ' ' && line[i + 1] == ' ');
  return !odd && line.back() <= '~' && line.back() > ' ';
}

int32_t count_words(std::string_view line) {
  if (is_plain(line)) return 1 + static_cast<int32_t>(std::count(line.begin(), line.end(), ' '));
  int32_t words = 0;
  for (size_t position = 0; !next_word(line, position).empty();) words++;
  return words;
}

}  // namespace klib::programs
