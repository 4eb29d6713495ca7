// Two words that are one name or one borrowed word have most letters in the same order, and their
// beginnings tell more than their ends:
//
//   likeness   = (longest common subsequence + common beginning) / (2 * longer length)
//   similarity = ((likeness - chance) / (1 - chance))², 0 below `chance`
#include "programs/align/spelling.h"

#include <algorithm>
#include <bit>

#include "programs/align/characters.h"

namespace klib::programs::align {
namespace {

constexpr size_t shortest = 3, longest = 64;  // of the spellings that are compared
constexpr float chance = 0.35F;               // the likeness that words have by chance

// The bits of a row of the table of common subsequences: a 0 is where its length grows.
size_t common_subsequence(const Spelling &first, std::string_view second) {
  uint64_t row = ~uint64_t{0};
  for (const char c : second) {
    const uint64_t matches = row & first.places[static_cast<unsigned char>(c)];
    row = (row + matches) | (row - matches);
  }
  const size_t length = first.type->spelling.size();
  const uint64_t used = length < 64 ? (uint64_t{1} << length) - 1 : ~uint64_t{0};
  return static_cast<size_t>(std::popcount(~row & used));
}

size_t common_beginning(std::string_view first, std::string_view second) {
  const size_t length = std::min(first.size(), second.size());
  size_t i = 0;
  while (i < length && first[i] == second[i]) i++;
  return i;
}

}  // namespace

std::string spelling_of(std::string_view text, UnitKind kind) {
  if (kind == UnitKind::mark) return "";
  std::string spelling = in_latin(text);
  std::replace(spelling.begin(), spelling.end(), 'l', 'r');  // one sound in many scripts
  return spelling;
}

void prepare(const UnitType &type, Spelling &spelling) {
  spelling.type = &type;
  spelling.places.fill(0);
  const size_t length = std::min(type.spelling.size(), longest);
  for (size_t i = 0; i < length; i++)
    spelling.places[static_cast<unsigned char>(type.spelling[i])] |= uint64_t{1} << i;
}

float similarity(const Spelling &first, const UnitType &second) {
  const UnitType &type = *first.type;
  if (type.text == second.text) return 1;
  if (type.kind == UnitKind::mark || second.kind == UnitKind::mark) return 0;
  const std::string_view a = type.spelling, b = second.spelling;
  if (!a.empty() && a == b) return 1;
  if (type.kind == UnitKind::number || second.kind == UnitKind::number) return 0;
  if (a.size() < shortest || b.size() < shortest || a.size() > longest || b.size() > longest)
    return 0;
  const size_t common = common_subsequence(first, b) + common_beginning(a, b);
  const float likeness =
      static_cast<float>(common) / static_cast<float>(2 * std::max(a.size(), b.size()));
  const float excess = std::max((likeness - chance) / (1 - chance), 0.0F);
  return excess * excess;
}

}  // namespace klib::programs::align
