// A text in blocks of sixty-four bytes: which bytes of a block have a value, or lie in a range of
// values, as a word with one bit per byte, the first byte's lowest.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "pattern/regex.h"
#include "text/byte_blocks.h"

namespace klib::regex {

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

inline uint64_t equal(const Block &block, uint8_t value) {
  BlockMask found(block.bytes);
  found.add_equal(value);
  return found.bits();
}

// The bytes that lie in one of the ranges.
[[nodiscard]] uint64_t within(const Block &block, const ByteRange *ranges, size_t count);

// The bytes that equal the one `distance` before them.
inline uint64_t equal_at_distance(const Block &block, ptrdiff_t distance) {
  const auto before = bytes_from(*block.subject, static_cast<ptrdiff_t>(block.base) - distance);
  BlockMask found(block.bytes);
  found.add_equal_to(before.data());
  return found.bits() & block.inside;
}

}  // namespace klib::regex
