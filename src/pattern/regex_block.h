// Sixty-four bytes of a text at a time: which of them have a value, or lie in a range of values, as
// a word with one bit per byte, the first byte's lowest.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "pattern/regex.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace klib::regex {

inline constexpr size_t block_size = 64;

struct Range {
  uint8_t first, last;
};

struct Block {
  const uint8_t *bytes;
  const Subject *subject;
  size_t base;         // index in the text of the first byte
  uint64_t inside;     // the bytes before the end of the text
  uint64_t positions;  // these and the end itself
};

// The block at `base`, a multiple of the block size and at most the length of the text. Where the
// text ends in it, its bytes are copied to `tail`, with NULs after them.
inline Block block_at(const Subject &subject, size_t base, std::array<uint8_t, block_size> &tail) {
  const size_t left = subject.length - base;
  const uint8_t *bytes = subject.text + base;
  if (left >= block_size) return {bytes, &subject, base, ~uint64_t{0}, ~uint64_t{0}};
  tail = {};
  std::copy_n(bytes, left, tail.begin());
  const uint64_t inside = (uint64_t{1} << left) - 1;
  return {tail.data(), &subject, base, inside, inside << 1 | 1};
}

// The bytes `from` to `from` + 63 of the text, with NULs for those outside it.
inline std::array<uint8_t, block_size> bytes_from(const Subject &subject, ptrdiff_t from) {
  std::array<uint8_t, block_size> bytes{};
  const auto length = static_cast<ptrdiff_t>(subject.length);
  const ptrdiff_t first = std::max<ptrdiff_t>(from, 0);
  const ptrdiff_t past = std::min(from + static_cast<ptrdiff_t>(block_size), length);
  if (first < past)
    std::copy(subject.text + first, subject.text + past, bytes.begin() + (first - from));
  return bytes;
}

#if defined(__SSE2__)

inline __m128i load(const uint8_t *bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
}

// The bytes of a block that have been found, each as a byte of ones.
struct Found {
  __m128i parts[4];

  template <class Find>
  void add(Find find) {
    for (size_t i = 0; i < 4; ++i) parts[i] = _mm_or_si128(parts[i], find(16 * i));
  }
  [[nodiscard]] uint64_t bits() const {
    uint64_t result = 0;
    for (size_t i = 0; i < 4; ++i)
      result |= uint64_t{static_cast<uint16_t>(_mm_movemask_epi8(parts[i]))} << (16 * i);
    return result;
  }
};

inline void add_equal(Found &found, const Block &block, uint8_t value) {
  const __m128i wanted = _mm_set1_epi8(static_cast<char>(value));
  found.add([&](size_t i) { return _mm_cmpeq_epi8(load(block.bytes + i), wanted); });
}

inline void add_range(Found &found, const Block &block, Range range) {
  const __m128i first = _mm_set1_epi8(static_cast<char>(range.first));
  const __m128i width = _mm_set1_epi8(static_cast<char>(range.last - range.first));
  found.add([&](size_t i) {
    const __m128i above = _mm_sub_epi8(load(block.bytes + i), first);
    return _mm_cmpeq_epi8(_mm_min_epu8(above, width), above);
  });
}

inline void add_equal_bytes(Found &found, const Block &block, const uint8_t *others) {
  found.add([&](size_t i) { return _mm_cmpeq_epi8(load(block.bytes + i), load(others + i)); });
}

// Two bytes to look for in 16 places at a time: those at which `a` has the one and `b` the other.
struct Pair {
  Pair(uint8_t of_a, uint8_t of_b)
      : first(_mm_set1_epi8(static_cast<char>(of_a))),
        second(_mm_set1_epi8(static_cast<char>(of_b))) {}
  [[nodiscard]] uint32_t places(const uint8_t *a, const uint8_t *b) const {
    const __m128i both =
        _mm_and_si128(_mm_cmpeq_epi8(load(a), first), _mm_cmpeq_epi8(load(b), second));
    return static_cast<uint32_t>(_mm_movemask_epi8(both));
  }
  __m128i first, second;
};

#else

struct Found {
  uint64_t result;

  template <class Find>
  void add(Find find) {
    for (size_t i = 0; i < block_size; ++i) result |= uint64_t{find(i)} << i;
  }
  [[nodiscard]] uint64_t bits() const { return result; }
};

inline void add_equal(Found &found, const Block &block, uint8_t value) {
  found.add([&](size_t i) { return block.bytes[i] == value; });
}

inline void add_range(Found &found, const Block &block, Range range) {
  found.add(
      [&](size_t i) { return range.first <= block.bytes[i] && block.bytes[i] <= range.last; });
}

inline void add_equal_bytes(Found &found, const Block &block, const uint8_t *others) {
  found.add([&](size_t i) { return block.bytes[i] == others[i]; });
}

struct Pair {
  Pair(uint8_t of_a, uint8_t of_b) : first(of_a), second(of_b) {}
  [[nodiscard]] uint32_t places(const uint8_t *a, const uint8_t *b) const {
    uint32_t result = 0;
    for (size_t i = 0; i < 16; ++i)
      result |= static_cast<uint32_t>(a[i] == first && b[i] == second) << i;
    return result;
  }
  uint8_t first, second;
};

#endif

inline uint64_t equal(const Block &block, uint8_t value) {
  Found found{};
  add_equal(found, block, value);
  return found.bits();
}

// The bytes that lie in one of the ranges.
inline uint64_t within(const Block &block, const Range *ranges, size_t count) {
  Found found{};
  for (const Range *range = ranges; range != ranges + count; ++range) {
    if (range->first == range->last)
      add_equal(found, block, range->first);
    else
      add_range(found, block, *range);
  }
  return found.bits();
}

// The bytes that equal the one `distance` before them.
inline uint64_t equal_at_distance(const Block &block, ptrdiff_t distance) {
  const auto before = bytes_from(*block.subject, static_cast<ptrdiff_t>(block.base) - distance);
  Found found{};
  add_equal_bytes(found, block, before.data());
  return found.bits() & block.inside;
}

}  // namespace klib::regex
