// Looking at many bytes at once: at words of 8, vectors and pairs of 16, and blocks of 64.
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

// Masks: bit i is about byte i.

#if defined(__SSE2__)

[[nodiscard]] inline __m128i load_sixteen(const uint8_t *bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
}

#endif

inline constexpr size_t block_size = 64;

// Two bytes to look for in 16 places at a time, or in the 64 of a block: those at which `a` has the
// one and `b` the other.
struct BytePair {
  static constexpr size_t at_once = 16;

#if defined(__SSE2__)
  BytePair(uint8_t of_a, uint8_t of_b)
      : first(_mm_set1_epi8(static_cast<char>(of_a))),
        second(_mm_set1_epi8(static_cast<char>(of_b))) {}
  [[nodiscard]] uint32_t places(const uint8_t *a, const uint8_t *b) const {
    return mask(both(a, b));
  }
  [[nodiscard]] uint64_t block_places(const uint8_t *a, const uint8_t *b) const {
    const __m128i found[4] = {both(a, b), both(a + 16, b + 16), both(a + 32, b + 32),
                              both(a + 48, b + 48)};
    const __m128i in_any =
        _mm_or_si128(_mm_or_si128(found[0], found[1]), _mm_or_si128(found[2], found[3]));
    if (mask(in_any) == 0) return 0;  // as in most blocks
    uint64_t result = 0;
    for (size_t i = 0; i < 4; ++i) result |= uint64_t{mask(found[i])} << (16 * i);
    return result;
  }

 private:
  [[nodiscard]] __m128i both(const uint8_t *a, const uint8_t *b) const {
    return _mm_and_si128(_mm_cmpeq_epi8(load_sixteen(a), first),
                         _mm_cmpeq_epi8(load_sixteen(b), second));
  }
  [[nodiscard]] static uint32_t mask(const __m128i &found) {
    return static_cast<uint32_t>(_mm_movemask_epi8(found));
  }
  __m128i first, second;
#else
  BytePair(uint8_t of_a, uint8_t of_b) : first(of_a), second(of_b) {}
  [[nodiscard]] uint32_t places(const uint8_t *a, const uint8_t *b) const {
    uint32_t result = 0;
    for (size_t i = 0; i < at_once; ++i)
      result |= static_cast<uint32_t>(a[i] == first && b[i] == second) << i;
    return result;
  }
  [[nodiscard]] uint64_t block_places(const uint8_t *a, const uint8_t *b) const {
    uint64_t result = 0;
    for (size_t i = 0; i < block_size; i += at_once) result |= uint64_t{places(a + i, b + i)} << i;
    return result;
  }

 private:
  uint8_t first, second;
#endif
};

struct ByteRange {
  uint8_t first, last;
};

// The bytes of a block that have been found by any of the looks at it.
class BlockMask {
 public:
  explicit BlockMask(const uint8_t *block) : block_(block) {}

#if defined(__SSE2__)
  void add_equal(uint8_t byte) {
    const __m128i wanted = _mm_set1_epi8(static_cast<char>(byte));
    add([&](size_t i) { return _mm_cmpeq_epi8(load_sixteen(block_ + i), wanted); });
  }
  void add_range(ByteRange range) {
    const __m128i first = _mm_set1_epi8(static_cast<char>(range.first));
    const __m128i width = _mm_set1_epi8(static_cast<char>(range.last - range.first));
    add([&](size_t i) {
      const __m128i above = _mm_sub_epi8(load_sixteen(block_ + i), first);
      return _mm_cmpeq_epi8(_mm_min_epu8(above, width), above);
    });
  }
  void add_equal_to(const uint8_t *others) {
    add([&](size_t i) {
      return _mm_cmpeq_epi8(load_sixteen(block_ + i), load_sixteen(others + i));
    });
  }
  [[nodiscard]] uint64_t bits() const {
    uint64_t result = 0;
    for (size_t i = 0; i < 4; ++i)
      result |= uint64_t{static_cast<uint16_t>(_mm_movemask_epi8(found_[i]))} << (16 * i);
    return result;
  }

 private:
  template <class Find>
  void add(Find find) {
    for (size_t i = 0; i < 4; ++i) found_[i] = _mm_or_si128(found_[i], find(16 * i));
  }
  const uint8_t *block_;
  __m128i found_[4]{};  // each byte of ones
#else
  void add_equal(uint8_t byte) {
    add([&](size_t i) { return block_[i] == byte; });
  }
  void add_range(ByteRange range) {
    add([&](size_t i) { return range.first <= block_[i] && block_[i] <= range.last; });
  }
  void add_equal_to(const uint8_t *others) {
    add([&](size_t i) { return block_[i] == others[i]; });
  }
  [[nodiscard]] uint64_t bits() const { return found_; }

 private:
  template <class Find>
  void add(Find find) {
    for (size_t i = 0; i < block_size; ++i) found_ |= uint64_t{find(i)} << i;
  }
  const uint8_t *block_;
  uint64_t found_ = 0;
#endif
};

// Which bytes of the block are `byte`.
[[nodiscard]] inline uint64_t bytes_equal_to(char byte, const char *block) {
  BlockMask mask(reinterpret_cast<const uint8_t *>(block));
  mask.add_equal(static_cast<uint8_t>(byte));
  return mask.bits();
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
