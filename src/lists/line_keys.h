// Eight bytes of a text as one number that orders as they do.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "text/byte_blocks.h"
#include "text/bytes.h"

namespace klib::containers {

// Bytes that can all be read: texts among them are read eight bytes at a time, even where the last
// of the eight belong to the next text.
struct Readable {
  const char *begin;
  const char *end;

  [[nodiscard]] bool holds_word_at(const char *bytes) const {
    // Unsigned: a text before `begin` is out of range like one after `end`.
    const uintptr_t size = address(end) - address(begin);
    const uintptr_t offset = address(bytes) - address(begin);
    return offset < size && size - offset >= word_size;
  }
  static uintptr_t address(const char *bytes) { return reinterpret_cast<uintptr_t>(bytes); }
};

// A key: eight bytes, the first one highest, with zeros from the text's NUL on.
inline constexpr size_t key_size = word_size;

// Whether the text ends within the key.
[[nodiscard]] inline bool is_complete(uint64_t key) { return (key & 0xFF) == 0; }

// The key of a text that has eight bytes to be read.
[[nodiscard]] inline uint64_t key_of_word(const char *bytes) {
  uint64_t word = load_word(bytes);
  if (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  // In every zero byte the top bit; a byte above the first zero may have it wrongly.
  const uint64_t zeros = (word - in_each_byte(1)) & ~word & in_each_byte(0x80);
  return __builtin_bswap64(word & (((zeros & (0 - zeros)) >> 7) - 1));
}

[[nodiscard]] inline uint64_t key_at(const char *bytes, Readable readable) {
  if (readable.holds_word_at(bytes)) return key_of_word(bytes);
  uint64_t key = 0;
  size_t i = 0;
  for (; i < key_size && bytes[i] != '\0'; ++i) key = key << 8 | u8(bytes[i]);
  return i == 0 ? 0 : key << 8 * (key_size - i);
}

}  // namespace klib::containers
