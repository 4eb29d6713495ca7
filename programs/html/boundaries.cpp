// The rules are those of Unicode Standard Annex 29. A text is read once from left to right; only
// after a full stop it is read ahead, up to the next letter or mark.
#include "programs/html/boundaries.h"

#include "character_table.h"
#include "programs/html/character_bits.h"

namespace klib::programs {
namespace {

constexpr char32_t first_uncased = 0x0590;  // Latin, Greek, Cyrillic and Armenian come before it

unsigned char bits_of(char32_t c) {
  if (c / block_size >= sizeof character_blocks) return 0;
  return character_bytes[character_blocks[c / block_size] * block_size + c % block_size];
}

SentenceBreak break_of(char32_t c) { return static_cast<SentenceBreak>(bits_of(c) & break_bits); }

// Unicode counts all brackets and quotation marks after a mark among those of its sentence.
bool is_opening(char32_t c) { return (bits_of(c) & opening_bit) != 0; }

bool is_mark(SentenceBreak kind) {
  return kind == SentenceBreak::full_stop || kind == SentenceBreak::mark;
}

bool is_cased(SentenceBreak kind) {
  return kind == SentenceBreak::lower || kind == SentenceBreak::upper;
}

bool ends_paragraph(SentenceBreak kind) {
  return kind == SentenceBreak::separator || kind == SentenceBreak::carriage_return ||
         kind == SentenceBreak::line_feed;
}

// Like break_of(), also at the end of the text.
SentenceBreak break_at(std::u32string_view text, size_t i) {
  return i < text.size() ? break_of(text[i]) : SentenceBreak::other;
}

// The position after the character at `i` and what is attached to it.
size_t next_of(std::u32string_view text, size_t i) {
  do {
    i++;
  } while (break_at(text, i) == SentenceBreak::attached);
  return i;
}

size_t skip(std::u32string_view text, size_t i, SentenceBreak kind) {
  while (break_at(text, i) == kind) i = next_of(text, i);
  return i;
}

// Whether the first letter comes before the next mark and is a lower-case one.
bool is_lower_next(std::u32string_view text, size_t i) {
  for (; i < text.size(); i++) {
    const SentenceBreak kind = break_of(text[i]);
    if (kind == SentenceBreak::lower) return true;
    if (kind == SentenceBreak::upper || kind == SentenceBreak::letter || is_mark(kind) ||
        ends_paragraph(kind))
      return false;
  }
  return false;
}

// Whether a full stop between these two is inside a number or an abbreviation.
bool joins(SentenceBreak before, SentenceBreak after) {
  return after == SentenceBreak::digit || (after == SentenceBreak::upper && is_cased(before));
}

// Whether the sentence goes on at `i`, after a mark and the brackets and blanks that follow it.
bool goes_on(std::u32string_view text, size_t i, SentenceBreak mark) {
  const SentenceBreak kind = break_at(text, i);
  return kind == SentenceBreak::comma || is_mark(kind) || ends_paragraph(kind) ||
         (mark == SentenceBreak::full_stop && is_lower_next(text, i));
}

// The end of the sentence that begins at `i`, with the blanks after it.
size_t end_of_sentence(std::u32string_view text, size_t i) {
  SentenceBreak before = SentenceBreak::other;
  while (i < text.size()) {
    const SentenceBreak kind = break_of(text[i]);
    if (ends_paragraph(kind)) {
      const bool is_pair = kind == SentenceBreak::carriage_return &&
                           break_at(text, i + 1) == SentenceBreak::line_feed;
      return i + (is_pair ? 2 : 1);
    }
    i = next_of(text, i);
    if (is_mark(kind) && !(kind == SentenceBreak::full_stop && joins(before, break_at(text, i)))) {
      i = skip(text, skip(text, i, SentenceBreak::closing), SentenceBreak::blank);
      if (!goes_on(text, i, kind)) return i;
    }
    before = kind;
  }
  return i;
}

}  // namespace

bool is_capital(char32_t c) { return (bits_of(c) & capital_bit) != 0; }

bool is_letter_or_digit(char32_t c) { return (bits_of(c) & letter_or_digit_bit) != 0; }

SentencePart sentence_part(char32_t c) {
  switch (break_of(c)) {
    case SentenceBreak::full_stop:
    case SentenceBreak::mark:
      return SentencePart::mark;
    case SentenceBreak::lower:
    case SentenceBreak::upper:
      return SentencePart::cased_letter;
    case SentenceBreak::letter:
      return c < first_uncased ? SentencePart::cased_letter : SentencePart::uncased_letter;
    default:
      return SentencePart::other;
  }
}

void find_sentence_ends(std::u32string_view text, std::vector<bool> &ends) {
  ends.assign(text.size(), false);
  for (size_t end = 0; end < text.size();) {
    end = end_of_sentence(text, end);
    size_t last = end - 1;
    while (last > 0 && (text[last] == ' ' || is_opening(text[last]))) last--;
    ends[last] = true;
  }
}

}  // namespace klib::programs
