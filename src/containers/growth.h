// How the numbered containers grow: by a fixed step, or to a percentage of the old size.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace klib::growth {

// The size after one step: `increment` more, or when that is negative, -increment percent of
// `size`.
[[nodiscard]] constexpr int64_t step(int64_t size, int64_t increment) {
  return increment >= 0 ? size + increment : size * -increment / 100;
}

// The first size above `used` that the steps reach. A step that does not enlarge is one of 1.
[[nodiscard]] constexpr int64_t size_above(int64_t used, int64_t size, int64_t increment) {
  if (size > used) return size;
  if (increment >= -100) {
    const int64_t fixed = std::max<int64_t>(increment, 1);
    return size + ((used - size) / fixed + 1) * fixed;
  }
  while (size <= used) size = std::max(step(size, increment), size + 1);
  return size;
}

// A size in bytes as the memory operations take it. Containers stay below 2 GiB: any larger size
// becomes one that cannot be had, so that asking for it takes the out-of-memory path.
[[nodiscard]] constexpr size_t request(int64_t size) {
  return size > INT32_MAX ? SIZE_MAX : static_cast<size_t>(size);
}

}  // namespace klib::growth
