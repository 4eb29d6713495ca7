// Sentences in the bytes of a sentence file, and back. docs/file-formats.md has the grammar.
#include "programs/common/sentence.h"

#include <algorithm>
#include <charconv>

#include "klib.h"
#include "programs/common/program.h"

namespace klib::programs {
namespace {

// Reads the text of one frame from its front to its end.
struct Reader {
  const SentenceFile &file;
  const CodePage &page;
  std::string_view text;
  Sentence &sentence;
  char32_t *characters;  // room for as many as the text has bytes
  size_t position = 0, count = 0;
};

// The number that the text is, or -1.
int32_t whole_number(std::string_view text) {
  int32_t number = -1;
  const char *const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end && number >= 0 ? number : -1;
}

// What is in the code that begins here, up to its closing byte; the position moves after it.
std::string_view take_code(Reader &reader, char close, const char *what) {
  const size_t begin = reader.position + 1, end = reader.text.find(close, begin);
  if (end == std::string_view::npos)
    fail(reader.file.name(), reader.file.line(), "%s is cut off", what);
  reader.position = end + 1;
  return reader.text.substr(begin, end - begin);
}

void take_anchor(Reader &reader) {
  const int32_t number = whole_number(take_code(reader, anchor_end, "an anchor"));
  if (number < 0) fail(reader.file.name(), reader.file.line(), "an anchor without a number");
  reader.sentence.codes.push_back({reader.count, number});
}

void take_font(Reader &reader) {
  const std::string_view body = take_code(reader, font_end, "a font code");
  const size_t separator = std::min(body.find(font_separator), body.size());
  const int group = font_group(body.data(), separator);
  const int32_t number = whole_number(body.substr(std::min(separator + 1, body.size())));
  if (group < 0 || number < 0)
    fail(reader.file.name(), reader.file.line(), "unknown font '%s'", readable(body).c_str());
  reader.sentence.codes.push_back({reader.count, number, group});
}

void take_character(Reader &reader) {
  const size_t begin = reader.position;
  const bool alien = reader.text[begin] == alien_marker;
  char32_t c = next_character(reader.page, reader.text, reader.position);
  if (c == 0) {
    constexpr size_t alien_size = 5;
    const size_t shown = std::max(reader.position - begin, alien ? alien_size : 1);
    fail({reader.file.name(), reader.file.line(), reader.sentence.number}, "no-character", {},
         "%s is no character of %s", readable(reader.text.substr(begin, shown)).c_str(),
         parameter(TextParameter::language));
  }
  if (alien && (c == '<' || c == '>' || c == '&')) c |= bare_flag;
  reader.characters[reader.count++] = c;
}

// Takes the bytes that are characters of the page, up to a code or an alien.
void take_run(Reader &reader) {
  size_t position = reader.position, count = reader.count;
  for (char32_t c; position < reader.text.size(); position++) {
    c = reader.page.character[static_cast<unsigned char>(reader.text[position])];
    if (c == 0) break;
    reader.characters[count++] = c;
  }
  reader.position = position;
  reader.count = count;
}

void append_decimal(int32_t number, std::string &text) {
  char digits[12];
  const auto result = std::to_chars(digits, digits + sizeof digits, number);
  text.append(digits, result.ptr);
}

void append_characters(std::u32string_view characters, const CodePage &page, std::string &text) {
  for (size_t i = 0; i < characters.size();) {
    size_t end = i;
    while (end < characters.size() && byte_of(page, characters[end]) != 0) end++;
    const size_t size = text.size();
    text.resize(size + end - i);
    std::ranges::transform(characters.substr(i, end - i),
                           text.begin() + static_cast<std::ptrdiff_t>(size),
                           [&](char32_t c) { return static_cast<char>(byte_of(page, c)); });
    i = end;
    if (i == characters.size()) break;
    const char32_t c = characters[i++];
    if ((c & bare_flag) != 0)
      append_alien(c & ~bare_flag, text);
    else
      append_character(page, c, text);
  }
}

}  // namespace

void append_anchor(int32_t number, std::string &text) {
  text += anchor_begin;
  append_decimal(number, text);
  text += anchor_end;
}

void append_font(int group, int32_t number, std::string &text) {
  text += font_begin;
  text += font_groups[group];
  text += font_separator;
  append_decimal(number, text);
  text += font_end;
}

void Sentence::clear() {
  number = 0;
  text.clear();
  codes.clear();
}

void find_words(std::u32string_view text, std::vector<WordRange> &words) {
  words.clear();
  for (size_t begin = 0;;) {
    while (begin < text.size() && text[begin] == ' ') begin++;
    if (begin == text.size()) return;
    const size_t end = std::min(text.find(U' ', begin), text.size());
    words.push_back({begin, end});
    begin = end;
  }
}

bool has_codes(std::string_view frame_text) {
  return frame_text.find(anchor_begin) != std::string_view::npos ||
         frame_text.find(font_begin) != std::string_view::npos;
}

void read_sentence(const SentenceFile &file, const CodePage &page, Sentence &sentence) {
  sentence.clear();
  sentence.number = file.number();
  sentence.text.resize(file.text().size());
  Reader reader{file, page, file.text(), sentence, sentence.text.data()};
  while (reader.position < reader.text.size()) {
    const char c = reader.text[reader.position];
    if (c == anchor_begin)
      take_anchor(reader);
    else if (c == font_begin)
      take_font(reader);
    else if (page.character[static_cast<unsigned char>(c)] != 0)
      take_run(reader);
    else
      take_character(reader);
  }
  sentence.text.resize(reader.count);
}

void append_sentence(const Sentence &sentence, const CodePage &page, std::string &text) {
  const std::u32string_view characters = sentence.text;
  auto code = sentence.codes.begin();
  const auto append_codes = [&](size_t at) {
    for (; code != sentence.codes.end() && code->at == at; ++code)
      if (code->is_font())
        append_font(code->group, code->number, text);
      else
        append_anchor(code->number, text);
  };
  for (size_t i = 0, end; i < characters.size(); i = end) {
    append_codes(i);
    end = characters.size();
    if (code != sentence.codes.end() && code->at > i) end = std::min(end, code->at);
    append_characters(characters.substr(i, end - i), page, text);
  }
  append_codes(characters.size());
}

void write_frame(FILE *stream, int32_t number, std::string &text) {
  current_sentence_number = number;
  kti_format(stream, text.data(), -1);
}

}  // namespace klib::programs
