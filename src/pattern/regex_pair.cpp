// The places of two literals; see regex_pair.h.
//
// Tested by regex_test.cpp.

#include "pattern/regex_pair.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace klib::regex {

namespace {

size_t next_of_few(const uint8_t *a, const uint8_t *b, const LiteralPair &pair, size_t count) {
  for (const uint8_t *at = a;; ++at) {
    const auto left = static_cast<size_t>(a + count - at);
    at = static_cast<const uint8_t *>(std::memchr(at, pair.literal[0], left));
    if (at == nullptr) return count;
    if (at[b - a] == pair.literal[1]) return static_cast<size_t>(at - a);
  }
}

}  // namespace

// The first block does not wait for the length of the text. Two follow between the questions
// whether the text goes on, as the processor cannot foretell the answers.
size_t next_place(const uint8_t *text, const LiteralPair &pair, size_t count) {
  constexpr size_t at_once = BytePair::at_once;
  const uint8_t *const a = text + pair.at[0], *const b = text + pair.at[1];
  if (count < at_once) return next_of_few(a, b, pair, count);
  const BytePair bytes(pair.literal[0], pair.literal[1]);
  const auto lowest = [](uint64_t bits) { return static_cast<size_t>(std::countr_zero(bits)); };
  if (count >= block_size) {
    const size_t last = count - block_size;
    if (const uint64_t bits = bytes.block_places(a, b); bits != 0) return lowest(bits);
    for (size_t from = block_size; from < count; from += 2 * block_size) {
      const size_t one = std::min(from, last), two = std::min(from + block_size, last);
      if (const uint64_t bits = bytes.block_places(a + one, b + one); bits != 0)
        return one + lowest(bits);
      if (const uint64_t bits = bytes.block_places(a + two, b + two); bits != 0)
        return two + lowest(bits);
    }
    return count;
  }
  for (size_t from = 0; from < count; from += at_once) {
    const size_t first = std::min(from, count - at_once);
    if (const uint32_t bits = bytes.places(a + first, b + first); bits != 0)
      return first + lowest(bits);
  }
  return count;
}

}  // namespace klib::regex
