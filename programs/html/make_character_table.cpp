// Writes the table of characters that boundaries.cpp includes, as ICU knows them: programs that ask
// no more need not load ICU, which takes longer than their work on a short page.
//
//   make_character_table FILE
//
// The table has two stages: the number of the block for every block_size code points, and the
// blocks, of which equal ones are there once.
#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "programs/html/character_bits.h"

namespace klib::programs {
namespace {

constexpr UChar32 code_points = UCHAR_MAX_VALUE + 1;

using Block = std::array<unsigned char, block_size>;

SentenceBreak break_of(UChar32 c) {
  switch (u_getIntPropertyValue(c, UCHAR_SENTENCE_BREAK)) {
    case U_SB_EXTEND:
    case U_SB_FORMAT:
      return SentenceBreak::attached;
    case U_SB_CR:
      return SentenceBreak::carriage_return;
    case U_SB_LF:
      return SentenceBreak::line_feed;
    case U_SB_SEP:
      return SentenceBreak::separator;
    case U_SB_SP:
      return SentenceBreak::blank;
    case U_SB_LOWER:
      return SentenceBreak::lower;
    case U_SB_UPPER:
      return SentenceBreak::upper;
    case U_SB_OLETTER:
      return SentenceBreak::letter;
    case U_SB_NUMERIC:
      return SentenceBreak::digit;
    case U_SB_ATERM:
      return SentenceBreak::full_stop;
    case U_SB_STERM:
      return SentenceBreak::mark;
    case U_SB_SCONTINUE:
      return SentenceBreak::comma;
    case U_SB_CLOSE:
      return SentenceBreak::closing;
    default:
      return SentenceBreak::other;
  }
}

unsigned char bits_of(UChar32 c) {
  int bits = static_cast<int>(break_of(c));
  if (u_isUUppercase(c) || u_istitle(c)) bits |= capital_bit;
  if (u_isalnum(c)) bits |= letter_or_digit_bit;
  const int8_t category = u_charType(c);
  if (category == U_START_PUNCTUATION || category == U_INITIAL_PUNCTUATION) bits |= opening_bit;
  return static_cast<unsigned char>(bits);
}

void write_bytes(FILE *file, const char *name, const std::vector<unsigned char> &bytes) {
  fprintf(file, "\nconstexpr unsigned char %s[] = {", name);
  for (size_t i = 0; i < bytes.size(); i++) fprintf(file, i % 24 ? " %d," : "\n    %d,", bytes[i]);
  fprintf(file, "\n};\n");
}

bool write_table(FILE *file) {
  std::vector<Block> blocks;
  std::vector<unsigned char> numbers, bytes;
  for (UChar32 c = 0; c < code_points;) {
    Block block;
    for (unsigned char &byte : block) byte = bits_of(c++);
    const auto known = std::find(blocks.begin(), blocks.end(), block);
    const auto number = known - blocks.begin();
    if (number > 0xFF) return false;
    numbers.push_back(static_cast<unsigned char>(number));
    if (known != blocks.end()) continue;
    blocks.push_back(block);
    bytes.insert(bytes.end(), block.begin(), block.end());
  }
  fprintf(file, "// Characters by the tables of ICU " U_ICU_VERSION
                ". Written by make_character_table.cpp.\n#pragma once\n");
  write_bytes(file, "character_blocks", numbers);
  write_bytes(file, "character_bytes", bytes);
  return true;
}

}  // namespace
}  // namespace klib::programs

int main(int count, char **arguments) {
  FILE *const file = count == 2 ? fopen(arguments[1], "w") : nullptr;
  if (!file) {
    fprintf(stderr, "usage: make_character_table FILE\n");
    return 1;
  }
  if (!klib::programs::write_table(file)) {
    fprintf(stderr, "the characters need more than 256 blocks\n");
    return 1;
  }
  if (ferror(file) | fclose(file)) {
    perror(arguments[1]);
    return 1;
  }
  return 0;
}
