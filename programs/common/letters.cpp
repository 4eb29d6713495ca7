// Letters and marks, by Unicode's blocks of punctuation and symbols.
#include "programs/common/letters.h"

#include <algorithm>
#include <iterator>

namespace klib::programs {
namespace {

// Characters beyond ASCII that are no letters, in ascending order.
constexpr struct {
  char32_t first, last;
} marks[] = {
    {0x0080, 0x00A9}, {0x00AB, 0x00B4}, {0x00B6, 0x00B9}, {0x00BB, 0x00BF}, {0x00D7, 0x00D7},
    {0x00F7, 0x00F7}, {0x037E, 0x037E}, {0x0387, 0x0387}, {0x0589, 0x058A}, {0x05BE, 0x05BE},
    {0x060C, 0x060C}, {0x061B, 0x061F}, {0x06D4, 0x06D4}, {0x0964, 0x0965}, {0x2000, 0x206F},
    {0x20A0, 0x20CF}, {0x2190, 0x2BFF}, {0x2E00, 0x2E7F}, {0x3000, 0x303F}, {0xFE10, 0xFE6F},
    {0xFF01, 0xFF0F}, {0xFF1A, 0xFF20}, {0xFF3B, 0xFF40}, {0xFF5B, 0xFF65},
};
static_assert(std::ranges::is_sorted(marks, {}, [](const auto &run) { return run.first; }));

}  // namespace

bool is_letter(char32_t c) {
  if (c < 0x80) return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  const auto run = std::ranges::lower_bound(marks, c, {}, [](const auto &r) { return r.last; });
  return run == std::end(marks) || c < run->first;
}

}  // namespace klib::programs
