// A sentence of the programs, from reading to writing: its characters, and the codes between them.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "programs/common/code_page.h"
#include "programs/common/codes.h"
#include "programs/common/sentence_file.h"

namespace klib::programs {

// Added to a '<', '>' or '&' that is in the page as itself.
constexpr char32_t bare_flag = 0x80000000;

// An anchor, or the selection of a font for what follows.
struct Code {
  size_t at;       // before this character of the text
  int32_t number;  // of the anchor or the font; font 0: plain
  int group = -1;  // of the font, its place in font_groups; -1: an anchor

  bool is_font() const { return group >= 0; }
};

// Use the same sentence again for the next one: it keeps its room.
struct Sentence {
  int32_t number = 0;
  std::u32string text;      // blanks separate words; there are no other codes in it than bare_flag
  std::vector<Code> codes;  // in their order

  void clear();
  void add_anchor(int32_t anchor) { codes.push_back({text.size(), anchor}); }
  void add_font(int group, int32_t font) { codes.push_back({text.size(), font, group}); }
};

// The words of a sentence: runs without blanks.
struct WordRange {
  size_t begin, end;
};
void find_words(std::u32string_view text, std::vector<WordRange> &words);

// Reads the current frame of `file`. A code that is cut off, an anchor without a number, an unknown
// font and bytes that are no characters of `page` end the job (fail()).
void read_sentence(const SentenceFile &file, const CodePage &page, Sentence &sentence);

// Whether the text of a frame has any anchor or font.
bool has_codes(std::string_view frame_text);

// Appends what is in a frame for the sentence.
void append_sentence(const Sentence &sentence, const CodePage &page, std::string &text);

// Writes the text of a frame, which is changed, under its number, wrapped at "KTI-WIDTH".
void write_frame(FILE *stream, int32_t number, std::string &text);

}  // namespace klib::programs
