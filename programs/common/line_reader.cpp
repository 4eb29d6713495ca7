// A UTF-8 text file, line by line.
#include "programs/common/line_reader.h"

#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "programs/common/program.h"
#include "programs/common/utf8.h"

namespace klib::programs {

LineReader::LineReader(const char *name) : name_(input_name(name)), stream_(open_input(name)) {}

LineReader::~LineReader() { free(buffer_); }

bool LineReader::next() {
  errno = 0;
  const ssize_t length = getline(&buffer_, &room_, stream_.get());
  if (length < 0) {
    if (!feof(stream_.get())) fail(name(), 0, "cannot be read: %s", strerror(errno));
    return false;
  }
  number_++;
  line_ = std::string_view(buffer_, static_cast<size_t>(length));
  if (line_.ends_with('\n')) line_.remove_suffix(1);
  if (line_.ends_with('\r')) line_.remove_suffix(1);
  if (number_ == 1 && line_.starts_with("\xEF\xBB\xBF")) line_.remove_prefix(3);
  if (line_.find('\0') != std::string_view::npos) fail(name(), number_, "holds a NUL byte");
  if (find_invalid_utf8(line_) != std::string_view::npos) fail(name(), number_, "is not UTF-8");
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
