// How the numbered containers grow: by a fixed step, or to a percentage of the old size.
#pragma once

#include <cstddef>
#include <cstdint>

namespace klib::growth {

// The size after one step: `increment` more, or when that is negative, -increment percent of
// `size`.
[[nodiscard]] constexpr int64_t step(int64_t size, int64_t increment) {
  return increment >= 0 ? size + increment : size * -increment / 100;
}

// A size in bytes as the memory operations take it. Containers stay below 2 GiB: any larger size
// becomes one that cannot be had, so that asking for it takes the out-of-memory path.
[[nodiscard]] constexpr size_t request(int64_t size) {
  return size > INT32_MAX ? SIZE_MAX : static_cast<size_t>(size);
}

}  // namespace klib::growth
