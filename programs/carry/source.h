// A source sentence taken apart for its transfer: words, codes, and the fonts of each place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "programs/common/code_page.h"
#include "programs/common/program.h"
#include "programs/common/sentence_file.h"

namespace klib::programs {

// In force, by group; 0: plain.
struct Fonts {
  int32_t of_group[font_group_count];

  int32_t &operator[](size_t group) { return of_group[group]; }
  const int32_t &operator[](size_t group) const { return of_group[group]; }
  bool operator==(const Fonts &other) const {
    int32_t differences = 0;
    for (size_t group = 0; group < font_group_count; group++)
      differences |= of_group[group] ^ other.of_group[group];
    return differences == 0;
  }
};

constexpr size_t all_marks = SIZE_MAX;

struct SourceWord {
  size_t begin, end;  // in the text of the sentence
  Fonts first, letter,
      last;              // of its first character, its first letter or digit, its last character
  bool uniform = true;   // from the first to the last letter or digit all have the same fonts
  bool aligned = false;  // a word of the translation has it as its source
  // Marks around the stretch that has the fonts of the letters; all_marks when it has none itself.
  size_t before = 0, behind = 0;
};

struct SourceCode {
  Piece piece;
  int32_t word;     // to which it belongs
  size_t position;  // in the word: before this byte of its text
  Fonts fonts;      // in force behind it
};

struct SourceSentence {
  std::string text;               // the words without codes, one behind the other, target code page
  std::vector<SourceWord> words;  // one at least, which may be empty
  std::vector<SourceCode> codes;  // in the order of the sentence
  bool has_fonts = false, has_anchors = false;

  bool is_font(const SourceCode &code) const { return code.piece.kind == Piece::font; }
  size_t length(int32_t word) const {
    const SourceWord &w = words[static_cast<size_t>(word)];
    return w.end - w.begin;
  }
};

// Reads the current frame of `file`, whose text must outlive the sentence. The character table of
// `from` must be active. Bytes that are no characters of `from` end the job (fail()).
// The codes of a group that stands alone between blanks belong to the end of the word before.
void read_source(const SentenceFile &file, const CodePage &from, const CodePage &to,
                 std::vector<Piece> &pieces, SourceSentence &sentence);

}  // namespace klib::programs
