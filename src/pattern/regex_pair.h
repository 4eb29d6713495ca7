// Looking for two literals of an expression, at a fixed distance from each other: they are compared
// with the text in 64 places at a time, and what is around them only where both are there.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pattern/regex.h"
#include "text/byte_blocks.h"

namespace klib::regex {

struct LiteralPair {
  size_t at[2];        // their distances from the beginning of what is looked for
  uint8_t literal[2];  // and what they are
};

// The first of `count` places, from the beginning of the text on, that has the pair; `count` when
// none has.
[[nodiscard]] size_t next_place(const uint8_t *text, const LiteralPair &pair, size_t count);

// Whether what is looked for, of `width` bytes, is somewhere; `fits` decides that for a position.
// Unknown when the pair is in so many places that a search is quicker.
template <class Fits>
[[nodiscard]] Answer find_pair(const LiteralPair &pair, size_t width, const Subject &subject,
                               Fits fits) {
  if (width > subject.length) return Answer::no;
  const uint8_t *position = subject.text;
  const uint8_t *const past = position + (subject.length - width + 1);
  size_t tries = 16 + subject.length / block_size;
  for (;; ++position) {
    position += next_place(position, pair, static_cast<size_t>(past - position));
    if (position == past) return Answer::no;
    if (tries-- == 0) return Answer::unknown;
    if (fits(position)) return Answer::yes;
  }
}

}  // namespace klib::regex
