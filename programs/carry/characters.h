// What placing asks about a character.
#pragma once

#include <cstdint>

namespace klib::programs {

enum class CharKind : uint8_t {
  blank,  // white space, no-break spaces too
  mark,   // punctuation, quotation marks, brackets, symbols
  digit,
  upper,     // an upper-case letter
  letter,    // any other letter, and what combines with one
  unspaced,  // a letter of a script without blanks between words: Han, Kana, Hangul,
             // ...
};

// The kinds of the first characters, which are nearly all that most texts have.
constexpr char32_t common_characters = 0x500;  // Latin, Greek, Cyrillic
const CharKind *kinds_of_common_characters();

CharKind kind_of(char32_t character);

// Letters and digits, which make up a word; all other characters are around them.
constexpr bool is_core(CharKind kind) { return kind >= CharKind::digit; }

// The same for characters that translations exchange: a letter without its case, '"' for all
// quotation marks, '(' and ')' for all brackets, '-' for all dashes, '.' for all that ends a
// sentence or a clause, but ',' for all commas.
char32_t fold(char32_t character);

inline bool is_apostrophe(char32_t c) { return c == '\'' || c == U'\u2019'; }
inline bool is_hyphen(char32_t c) { return c == '-' || c == U'\u2010' || c == U'\u2011'; }

}  // namespace klib::programs
