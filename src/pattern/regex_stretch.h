// Stretches of an expression: items one after the other that always take the same number of bytes.
// Every match holds bytes that fit each of them. So a look for one that few texts have says no for
// most texts, in much less time than a search takes; and where the expression is one stretch, the
// look is the search.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pattern/regex.h"

namespace klib::regex {

inline constexpr uint32_t no_literals = UINT32_MAX;

struct Stretch {
  const uint8_t *first, *past;  // its items
  uint32_t width;               // the bytes that they take
  // How often texts have the two of its literals that are looked for: the rarest ones side by side,
  // else the first and the last. With only one literal both are that one.
  uint32_t common;
  uint32_t at[2];      // their distances from the beginning of the stretch
  uint8_t literal[2];  // and what they are
};

// The stretch that begins with an item. After it comes an item that can take more bytes or fewer,
// or the end of the expression.
[[nodiscard]] Stretch stretch_from(const uint8_t *item);

[[nodiscard]] inline bool is_end(const uint8_t *item) {
  return *item == end || *item == end_anchor;
}

// Whether a stretch fits at a position. Its width must be left there, or the text end with a NUL.
[[nodiscard]] bool fits(const Stretch &stretch, const uint8_t *text, const uint8_t *position);

enum class Answer : uint8_t { no, yes, unknown };

// Whether a stretch fits somewhere. Unknown when it has no literals, and when its literals are in
// so many places that a search is quicker.
[[nodiscard]] Answer find(const Stretch &stretch, const Subject &subject);

}  // namespace klib::regex
