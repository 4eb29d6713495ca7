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

struct Block {
  const uint8_t *bytes;
  const Subject *subject;
  size_t base;         // index in the text of the first byte
  uint64_t inside;     // the bytes before the end of the text
  uint64_t positions;  // these and the end itself
};

// The block at `base`, a multiple of the block size and at most the length of the text.
inline Block block_at(const Subject &subject, size_t base) {
  const size_t left = subject.length - base;
  const bool whole = left >= block_size;
  const uint64_t inside = whole ? ~uint64_t{0} : (uint64_t{1} << left) - 1;
  return {whole ? subject.text + base : &subject.last[block_size - left], &subject, base, inside,
          inside << 1 | 1};
}

// The bytes `from` to `from` + 63 of the text; NULs stand for those outside it.
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

// The bits of the bytes for which compare(first of 16 bytes) has a byte of ones.
template <class Compare>
inline uint64_t bits_where(Compare compare) {
  uint64_t bits = 0;
  for (size_t i = 0; i < block_size; i += 16)
    bits |= uint64_t{static_cast<uint16_t>(_mm_movemask_epi8(compare(i)))} << i;
  return bits;
}

inline uint64_t equal(const Block &block, uint8_t value) {
  const __m128i wanted = _mm_set1_epi8(static_cast<char>(value));
  return bits_where([&](size_t i) { return _mm_cmpeq_epi8(load(block.bytes + i), wanted); });
}

inline uint64_t within(const Block &block, uint8_t first, uint8_t last) {
  const __m128i low = _mm_set1_epi8(static_cast<char>(first));
  const __m128i width = _mm_set1_epi8(static_cast<char>(last - first));
  return bits_where([&](size_t i) {
    const __m128i above = _mm_sub_epi8(load(block.bytes + i), low);
    return _mm_cmpeq_epi8(_mm_min_epu8(above, width), above);
  });
}

// The bytes that equal the one `distance` before them.
inline uint64_t equal_at_distance(const Block &block, ptrdiff_t distance) {
  const auto before = bytes_from(*block.subject, static_cast<ptrdiff_t>(block.base) - distance);
  return block.inside & bits_where([&](size_t i) {
           return _mm_cmpeq_epi8(load(block.bytes + i), load(&before[i]));
         });
}

#else

template <class Holds>
inline uint64_t bits_where(Holds holds) {
  uint64_t bits = 0;
  for (size_t i = 0; i < block_size; ++i) bits |= uint64_t{holds(i)} << i;
  return bits;
}

inline uint64_t equal(const Block &block, uint8_t value) {
  return bits_where([&](size_t i) { return block.bytes[i] == value; });
}

inline uint64_t within(const Block &block, uint8_t first, uint8_t last) {
  return bits_where([&](size_t i) { return first <= block.bytes[i] && block.bytes[i] <= last; });
}

inline uint64_t equal_at_distance(const Block &block, ptrdiff_t distance) {
  const auto before = bytes_from(*block.subject, static_cast<ptrdiff_t>(block.base) - distance);
  return block.inside & bits_where([&](size_t i) { return block.bytes[i] == before[i]; });
}

#endif

}  // namespace klib::regex
