// Decimal numbers in texts.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace klib {

// The number at the start of a text: white space skipped, an optional sign, digits up to the first
// other byte. 0 without digits; the nearest 32-bit number for what is beyond 32 bits.
[[nodiscard]] inline int32_t decimal_value(const char *text) {
  const long long value = std::strtoll(text, nullptr, 10);
  return static_cast<int32_t>(std::clamp<long long>(value, INT32_MIN, INT32_MAX));
}

}  // namespace klib
