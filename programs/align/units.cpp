// Words between blanks, taken apart.
//
//   “Bibliothek”.      -> " bibliothek " .
//   l'aéroport         -> l aéroport
//   ftp.debian.org,    -> ftp.debian.org ,
//   古い家です。        -> 古い 家 です .
#include "programs/align/units.h"

#include <algorithm>
#include <string>

#include "programs/align/characters.h"
#include "programs/common/line_reader.h"
#include "programs/common/utf8.h"

namespace klib::programs::align {
namespace {

bool is_apostrophe(char32_t c) { return c == '\'' || c == 0x2019 || c == 0x02BC; }

bool is_hyphen(char32_t c) { return c == '-' || c == 0x2010 || c == 0x2011; }

// Marks that hold numbers, names of files and addresses together when letters or digits are on
// both sides.
bool is_connector(char32_t c) {
  return c < 0x80 && c != 0 &&
         std::string_view(".,:/@_\\&+=~#").find(static_cast<char>(c)) != std::string_view::npos;
}

struct WordReader {
  std::string_view line;
  size_t position, end;  // the rest of the word
  int32_t word;
  Vocabulary &vocabulary;
  std::vector<Unit> &units;
  std::string text{};
  std::vector<size_t> ends{};

  char32_t peek() const {
    size_t next = position;
    return next_character(line.substr(0, end), next);
  }
  char32_t take() { return next_character(line.substr(0, end), position); }
};

bool is_run(char32_t c) { return is_letter_or_digit(c) && !is_without_blanks(c); }

void add_unit(WordReader &reader, size_t begin, UnitKind kind, bool without_blanks) {
  const int32_t type = find_or_add(reader.vocabulary, reader.text, kind);
  reader.units.push_back({type, reader.word, static_cast<int32_t>(begin),
                          static_cast<int32_t>(reader.position), without_blanks});
}

// Letters and digits, with connectors between them.
void read_run(WordReader &reader) {
  const size_t begin = reader.position;
  bool has_letter = false;
  reader.text.clear();
  while (reader.position < reader.end) {
    const size_t before = reader.position;
    const char32_t c = reader.take();
    const bool connects = is_connector(c) && reader.position < reader.end && is_run(reader.peek());
    if (!connects && !is_run(c) && !is_invisible(c)) {
      reader.position = before;
      break;
    }
    has_letter = has_letter || is_letter(c);
    if (!is_invisible(c)) append_utf8(folded(c), reader.text);
  }
  add_unit(reader, begin, has_letter ? UnitKind::word : UnitKind::number, false);
}

// A stretch of a script without blanks.
void read_words(WordReader &reader) {
  const size_t begin = reader.position;
  size_t stretch_end = begin;
  while (reader.position < reader.end && is_without_blanks(reader.peek())) {
    reader.take();
    stretch_end = reader.position;
  }
  find_dictionary_words(reader.line.substr(begin, stretch_end - begin), reader.ends);
  size_t unit = begin;
  for (const size_t end : reader.ends) {
    reader.text.assign(reader.line.substr(unit, begin + end - unit));
    reader.position = begin + end;
    add_unit(reader, unit, UnitKind::word, true);
    unit = reader.position;
  }
  reader.position = stretch_end;
}

// A mark, as often as it is repeated.
void read_marks(WordReader &reader) {
  const size_t begin = reader.position;
  const char32_t mark = reader.take();
  while (reader.position < reader.end && reader.peek() == mark) reader.take();
  reader.text.clear();
  append_utf8(folded_mark(mark), reader.text);
  add_unit(reader, begin, UnitKind::mark, false);
}

// Whether the character here only divides letters: an apostrophe or hyphen inside the word.
bool is_divider(const WordReader &reader, size_t begin) {
  const char32_t c = reader.peek();
  if (reader.position == begin || (!is_apostrophe(c) && !is_hyphen(c))) return false;
  size_t next = reader.position;
  next_character(reader.line, next);
  if (next >= reader.end) return false;
  const bool letter_before =
      !reader.units.empty() && reader.units.back().end == static_cast<int32_t>(reader.position) &&
      reader.vocabulary.types[static_cast<size_t>(reader.units.back().type)].kind != UnitKind::mark;
  return letter_before &&
         is_letter_or_digit(next_character(reader.line.substr(0, reader.end), next));
}

void read_word(WordReader &reader) {
  const size_t begin = reader.position, before = reader.units.size();
  while (reader.position < reader.end) {
    const char32_t c = reader.peek();
    if (is_without_blanks(c))
      read_words(reader);
    else if (is_letter_or_digit(c))
      read_run(reader);
    else if (is_invisible(c) || is_divider(reader, begin))
      reader.take();
    else
      read_marks(reader);
  }
  if (reader.units.size() > before) return;
  reader.text.assign(reader.line.substr(begin, reader.end - begin));
  add_unit(reader, begin, UnitKind::mark, false);
}

}  // namespace

std::string source_line(std::string_view line) {
  std::string text(line);
  std::replace(text.begin(), text.end(), '\v', '\x01');
  return text;
}

void read_units(std::string_view line, Vocabulary &vocabulary, std::vector<Unit> &units) {
  units.clear();
  WordReader reader{line, 0, 0, 0, vocabulary, units};
  for (;; reader.word++) {
    while (reader.position < line.size() && is_white(line[reader.position])) reader.position++;
    if (reader.position == line.size()) return;
    reader.end = reader.position;
    while (reader.end < line.size() && !is_white(line[reader.end])) reader.end++;
    read_word(reader);
  }
}

}  // namespace klib::programs::align
