// Sixty-four bytes at a time: which of them equal a given one, and whether any is
// below a limit.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace klib {

inline constexpr size_t block_size = 64;

// Bit i of the result says whether block[i] is `byte`.
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

// Whether any of the block's bytes is `limit` or below.
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
