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

// Whether the code ends with its closing byte; then `body` is what stands inside it.
bool inside(std::string_view code, char close, std::string_view &body) {
  if (code.size() < 2 || code.back() != close) return false;
  body = code.substr(1, code.size() - 2);
  return true;
}

Piece anchor_piece(const SentenceFile &file, std::string_view code) {
  std::string_view body;
  if (!inside(code, anchor_end, body)) fail(file.name(), file.line(), "an anchor is cut off");
  const int32_t number = whole_number(body);
  if (number < 0) fail(file.name(), file.line(), "an anchor without a number");
  return {Piece::anchor, code, number};
}

Piece font_piece(const SentenceFile &file, std::string_view code) {
  std::string_view body;
  if (!inside(code, font_end, body)) fail(file.name(), file.line(), "a font code is cut off");
  const size_t separator = std::min(body.find(font_separator), body.size());
  const int group = font_group(body.data(), separator);
  const int32_t number = whole_number(body.substr(std::min(separator + 1, body.size())));
  if (group < 0 || number < 0)
    fail(file.name(), file.line(), "unknown font '%s'", readable(body).c_str());
  return {Piece::font, code, number, group};
}

void split_text(std::string_view text, std::vector<Piece> &pieces) {
  for (size_t begin = 0, end; begin < text.size(); begin = end) {
    const bool blank = text[begin] == ' ';
    end = std::min(blank ? text.find_first_not_of(' ', begin) : text.find(' ', begin), text.size());
    pieces.push_back({blank ? Piece::blank : Piece::text, text.substr(begin, end - begin)});
  }
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
    fail(name(), line_, "a sentence stands inside another");
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

void split_sentence(const SentenceFile &file, const std::string &text, std::vector<Piece> &pieces) {
  pieces.clear();
  const std::string_view whole(text);
  size_t position = 0;
  init_parser(P_ALIEN | P_ANCHOR | P_FONT);
  parse_from_string(text.c_str());
  try {
    for (int32_t kind; (kind = parse(nullptr)) != P_END;) {
      const std::string_view bytes = whole.substr(position, strlen(token()));
      position += bytes.size();
      switch (kind) {
        case P_ALIEN:
          pieces.push_back({Piece::alien, bytes});
          break;
        case P_ANCHOR:
          pieces.push_back(anchor_piece(file, bytes));
          break;
        case P_FONT:
          pieces.push_back(font_piece(file, bytes));
          break;
        default:
          split_text(bytes, pieces);
      }
    }
  } catch (...) {
    exit_parser();
    throw;
  }
  exit_parser();
}

}  // namespace klib::programs
