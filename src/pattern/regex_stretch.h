// Stretches of an expression: items one after the other that always take the same number of bytes.
// Every match holds bytes that fit each of them. So a look for one that few texts have says no for
// most texts, in much less time than a search takes; and where the expression is one stretch, the
// look is the search.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pattern/regex.h"
#include "pattern/regex_pair.h"

namespace klib::regex {

inline constexpr uint32_t no_literals = UINT32_MAX;

struct Stretch {
  const uint8_t *first, *past;  // its items
  uint32_t width;               // the bytes that they take
  // How often texts have the two of its literals that are looked for: the rarest ones side by side,
  // else the first and the last. With only one literal both are that one.
  uint32_t common;
  LiteralPair pair;
};

// Reads the stretch that begins with an item. After it comes an item that can take more bytes or
// fewer, or the end of the expression. (A result that is copied would have to be waited for.)
void read_stretch(const uint8_t *item, Stretch &stretch);

[[nodiscard]] inline bool is_end(const uint8_t *item) {
  return *item == end || *item == end_anchor;
}

// Whether a stretch fits at a position. Its width must be left there, or the text end with a NUL.
[[nodiscard]] bool fits(const Stretch &stretch, const uint8_t *text, const uint8_t *position);

// Whether a stretch fits somewhere. Unknown when it has no literals, and when its literals are in
// so many places that a search is quicker.
[[nodiscard]] Answer find(const Stretch &stretch, const Subject &subject);

}  // namespace klib::regex
