// One side of a transfer: a sentence or its translation, with what placing asks about its text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "programs/carry/characters.h"
#include "programs/common/sentence.h"

namespace klib::programs {

constexpr uint32_t no_position = UINT32_MAX;

// A stretch of a text, from character `begin` to before `end`.
struct Range {
  uint32_t begin, end;
  bool empty() const { return begin >= end; }
  bool operator==(const Range &) const = default;
};

struct Side {
  std::u32string text;
  std::vector<Range> words;  // of the alignment: not empty, in order, only blanks between them

  // Found by survey(). The first has a span for each character, the others one more.
  std::vector<CharKind> kinds;
  std::vector<uint32_t> word_at;    // the word that the character is in, or else the next one
  std::vector<uint32_t> next_core;  // the first letter or digit from here on, or the end
  std::vector<uint32_t> core_end;   // the end of the last letter or digit before, or 0
  std::vector<uint32_t> partners;   // of brackets and quotation marks in pairs, else no_position
  std::vector<uint32_t> openers[2], closers[2];  // of pairs: quotation marks, brackets
  std::vector<uint32_t> ends_before;             // for each word: how many before it end a sentence

  uint32_t size() const { return static_cast<uint32_t>(text.size()); }
  uint32_t word_count() const { return static_cast<uint32_t>(words.size()); }
  bool is_core(uint32_t i) const { return programs::is_core(kinds[i]); }
  bool is_blank(uint32_t i) const { return kinds[i] == CharKind::blank; }
  bool has_core(Range range) const { return next_core[range.begin] < range.end; }
  // Whether the position is inside a run of letters and digits.
  bool is_in_run(uint32_t i) const { return i > 0 && i < size() && is_core(i - 1) && is_core(i); }
  std::u32string_view view(Range range) const {
    return std::u32string_view(text).substr(range.begin, range.end - range.begin);
  }
};

// The words of the text that blanks part, U+0020 alone.
void split_at_blanks(Side &side);

// Fills what is known about the text and the words.
void survey(Side &side);

// What a word is known by: the range without brackets, quotation marks, commas and stops around it,
// or all of it when there is nothing else.
Range key_of(const Side &side, Range range);

// Takes the marks of `from`, the innermost first, in `side` before `position`, leaving out those
// that are not there; the result is the position before the last one taken. Blanks between them do
// not count.
uint32_t take_marks_before(const Side &side, uint32_t position, const Side &from, Range marks);
// The same after `position`.
uint32_t take_marks_after(const Side &side, uint32_t position, const Side &from, Range marks);

}  // namespace klib::programs
