// What is known of a character where sentences may end, in one byte. make_character_table.cpp
// writes a table of these bytes, boundaries.cpp asks it.
#pragma once

namespace klib::programs {

// How a character counts in Unicode's rules for sentences: the lowest bits of its byte.
enum class SentenceBreak : unsigned char {
  other,
  attached,  // belongs to the character before: accents, marks of no width
  carriage_return,
  line_feed,
  separator,  // any other that ends a paragraph
  blank,
  lower,
  upper,
  letter,  // that is neither of them
  digit,
  full_stop,  // may also be inside a sentence
  mark,       // any other that ends a sentence
  comma,      // and all else after which a sentence goes on
  closing     // brackets and quotation marks, opening ones too
};

constexpr unsigned char break_bits = 0x0F, capital_bit = 0x10, letter_or_digit_bit = 0x20,
                        opening_bit = 0x40;

// Characters of a block of the table.
constexpr char32_t block_size = 256;

}  // namespace klib::programs
