// Looking at many bytes at once: at words of 8, vectors of 16 and blocks of 64.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace klib {

// Words: arithmetic on eight bytes at a time.

inline constexpr size_t word_size = sizeof(uint64_t);

[[nodiscard]] inline uint64_t load_word(const char *bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

inline void store_word(char *bytes, uint64_t word) { std::memcpy(bytes, &word, sizeof word); }

// The word with this byte in all places.
[[nodiscard]] constexpr uint64_t in_each_byte(uint8_t byte) {
  return uint64_t{0x0101010101010101} * byte;
}

// The place, from 0, of the byte that comes first in memory among those with a bit in `marks`,
// which is not 0.
[[nodiscard]] inline size_t first_marked_byte(uint64_t marks) {
  constexpr bool first_is_low = std::endian::native == std::endian::little;
  return static_cast<size_t>(first_is_low ? std::countr_zero(marks) : std::countl_zero(marks)) / 8;
}

// Vectors: a comparison sets all bits of each byte for which it is true.

using ByteVector = uint8_t __attribute__((vector_size(16)));
inline constexpr ptrdiff_t vector_size = sizeof(ByteVector);

[[nodiscard]] inline ByteVector load_vector(const char *bytes) {
  ByteVector vector;
  std::memcpy(&vector, bytes, sizeof vector);
  return vector;
}

inline void store_vector(char *bytes, const ByteVector &vector) {
  std::memcpy(bytes, &vector, sizeof vector);
}

[[nodiscard]] inline bool any(const ByteVector &condition) {
  uint64_t halves[2];
  std::memcpy(halves, &condition, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

// Blocks: bit i of a mask is about byte i.

inline constexpr size_t block_size = 64;

// Which bytes of the block are `byte`.
[[nodiscard]] inline uint64_t bytes_equal_to(char byte, const char *block) {
  uint64_t equal = 0;
#if defined(__SSE2__)
  const __m128i wanted = _mm_set1_epi8(byte);
  for (size_t i = 0; i < block_size; i += sizeof wanted) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(block + i));
    const int mask = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted));
    equal |= static_cast<uint64_t>(static_cast<uint32_t>(mask)) << i;
  }
#else
  for (size_t i = 0; i < block_size; ++i) equal |= uint64_t{block[i] == byte} << i;
#endif
  return equal;
}

// Whether any byte of the block is `limit` or below.
[[nodiscard]] inline bool lowest_at_most(uint8_t limit, const char *block) {
#if defined(__SSE2__)
  const auto bytes = [block](size_t i) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(block) + i);
  };
  const __m128i lowest =
      _mm_min_epu8(_mm_min_epu8(bytes(0), bytes(1)), _mm_min_epu8(bytes(2), bytes(3)));
  const __m128i limited = _mm_min_epu8(lowest, _mm_set1_epi8(static_cast<char>(limit)));
  return _mm_movemask_epi8(_mm_cmpeq_epi8(limited, lowest)) != 0;
#else
  bool found = false;
  for (size_t i = 0; i < block_size; ++i) found |= static_cast<uint8_t>(block[i]) <= limit;
  return found;
#endif
}

}  // namespace klib
