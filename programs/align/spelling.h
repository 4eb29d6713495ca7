// How much two words look alike across languages.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "programs/align/vocabulary.h"

namespace klib::programs::align {

// The spelling of a type for the comparison.
std::string spelling_of(std::string_view text, UnitKind kind);

// One type, made ready to be compared with many.
struct Spelling {
  const UnitType *type;
  std::array<uint64_t, 128> places;  // of each character, a bit for each position
};
void prepare(const UnitType &type, Spelling &spelling);

// From 0, nothing in common, to 1, the same. Equal texts, numbers and spellings are the same;
// others are compared by their longest common subsequence and their common beginning.
float similarity(const Spelling &first, const UnitType &second);

}  // namespace klib::programs::align
