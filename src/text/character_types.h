// Character types inside the library: the property word of a byte by one indexed load, and a name
// for every bit.
#pragma once

#include <array>
#include <cstdint>

#include "klib.h"
#include "text/byte_blocks.h"

namespace klib::character_types {

enum Type : uint32_t {
  upper = 0x80000000,
  lower = 0x40000000,
  digit = 0x20000000,
  kavro = 0x10000000,  // the engine's own marker bytes
  white = 0x08000000,
  nonword = 0x04000000,  // all but letters, ASCII digits, '-' and '.'
  question = 0x01000000,
  inverted = 0x00800000,    // question and exclamation marks that open a clause
  clause_end = 0x00400000,  // '!' '.' ':' ';' '?' and the Greek raised dot
  punct = 0x00100000,
  special = 0x00080000,
  inword = 0x00040000,
  separator = 0x00020000,
  closing_separator = 0x00010000,  // a separator that is not inverted
  nonletter = 0x00008000,

  letter = upper | lower,
  alphnum = letter | digit,
};

// The property word of a byte in the active table. A loop over a text copies `c_t` into a local
// variable first: a store through a char pointer makes the compiler load it again.
[[nodiscard]] inline uint32_t properties(uint8_t byte) { return c_t[byte]; }

using Table = std::array<uint32_t, 256>;  // property words by byte
extern const Table western, russian, greek;

// One of the library's own tables, whose words never change; programs may install others.
[[nodiscard]] inline bool is_built_in(const uint32_t *table) {
  return table == western.data() || table == russian.data() || table == greek.data();
}

// Of eight bytes those that may be white in a built-in table, 00-20 and 80-FF: a bit in each.
[[nodiscard]] inline uint64_t may_be_white(uint64_t word) {
  const uint64_t below_21 = ~((word & in_each_byte(0x7F)) + in_each_byte(0x80 - 0x21));
  return (word | below_21) & in_each_byte(0x80);
}

// Likewise of a block.
[[nodiscard]] inline uint64_t may_be_white(const char *block) {
  BlockMask mask(reinterpret_cast<const uint8_t *>(block));
  mask.add_range({0x00, 0x20});
  mask.add_range({0x80, 0xFF});
  return mask.bits();
}

}  // namespace klib::character_types
