// The bytes of an expression that stand for themselves.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "text/bytes.h"

namespace klib::regex {

// Bytes that match themselves wherever an item can begin.
inline constexpr std::array<bool, 256> ordinary = [] {
  std::array<bool, 256> table{};
  table.fill(true);
  for (const char byte : {'\0', '\n', '\\', '[', '.', '$', '*'}) table[u8(byte)] = false;
  return table;
}();

// Members of a bracket expression that match themselves and leave the set narrow.
inline constexpr std::array<bool, 256> plain_member = [] {
  std::array<bool, 256> table{};
  std::fill_n(table.begin(), 0x80, true);
  for (const char byte : {'\0', '\n', '-', ']'}) table[u8(byte)] = false;
  return table;
}();

}  // namespace klib::regex
