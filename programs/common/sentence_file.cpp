// Sentence files through the library's parser. It delivers a code that the end of the file cuts off
// like a whole one, and takes a NUL for the end, so both are looked for here.
#include "programs/common/sentence_file.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "klib.h"
#include "programs/common/program.h"

namespace klib::programs {
namespace {

char *token() { return p_root[parser_level].token; }

// Most texts are a line, or end with one.
int64_t lines_in(std::string_view text) {
  const size_t first = std::min(text.find('\n'), text.size());
  return std::count(text.begin() + static_cast<ptrdiff_t>(first), text.end(), '\n');
}

// The number that the text is, or -1.
int32_t whole_number(std::string_view text) {
  int32_t number = -1;
  const char *end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end && number >= 0 ? number : -1;
}

// Whether the code ends with its closing byte; then `body` is what is inside it.
bool inside(std::string_view code, char close, std::string_view &body) {
  if (code.size() < 2 || code.back() != close) return false;
  body = code.substr(1, code.size() - 2);
  return true;
}

}  // namespace

SentenceFile::SentenceFile(const char *name, bool fits_language)
    : name_(name), stream_(open_input(name)) {
  read_header();
  if (fits_language) fit_language(TextParameter::language, header_.own_language(), name);
  init_parser(P_SENTENCE | P_ANCHOR);
}

SentenceFile::~SentenceFile() { exit_parser(); }

void SentenceFile::read_header() {
  constexpr size_t longest = 200;
  std::string line;
  int c;
  while ((c = getc(stream_.get())) != EOF && c != '\n' && line.size() < longest)
    line += static_cast<char>(c);
  if (ferror(stream_.get())) fail_reading(name());
  header_ = read_sentence_header(name(), line);
}

void SentenceFile::take_frame(char *code) {
  const std::string_view whole(code);
  if (whole.size() < 2 || whole.back() != frame_end) fail(name(), line_, "a sentence is cut off");
  if (whole.find(frame_begin, 1) != std::string_view::npos)
    fail(name(), line_, "a sentence is inside another");
  if (whole[1] < '0' || whole[1] > '9') fail(name(), line_, "a sentence without a number");
  text_ = kti_body(code);
  if (text_.find('\n') != text_.npos) std::replace(text_.begin(), text_.end(), '\n', ' ');
  number_ = current_sentence_number;
}

SentenceFile::Kind SentenceFile::next() {
  for (;;) {
    line_ = next_line_;
    const int32_t kind = parse(stream_.get());
    if (kind == P_END) break;
    const std::string_view text(token());
    next_line_ += lines_in(text);
    if (kind == P_SENTENCE) {
      take_frame(token());
      return frame;
    }
    if (kind == P_ANCHOR) {
      std::string_view body;
      number_ = inside(text, anchor_end, body) ? whole_number(body) : -1;
      if (number_ < 0) fail(name(), line_, "an anchor without a number");
      return anchor;
    }
    const size_t visible = text.find_first_not_of(" \t\r\n");
    if (visible != std::string_view::npos)
      fail(name(), line_ + lines_in(text.substr(0, visible)), "text outside of a sentence");
  }
  if (ferror(stream_.get())) fail_reading(name());
  if (!feof(stream_.get())) fail(name(), line_, "holds a NUL byte");
  return end;
}

}  // namespace klib::programs
