// The types of a language: what the units of its lines have been reduced to, each once.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace klib::programs::align {

enum class UnitKind : uint8_t { word, number, mark };  // a mark is punctuation or a symbol

struct UnitType {
  std::string text;      // UTF-8, lower case; of a mark the one that represents its sort
  std::string spelling;  // how it is compared across languages; filled in when it occurs
  UnitKind kind;
  int32_t stem;       // types that begin alike share one
  float occurrences;  // in the lines so far
  bool is_spelled;
};

struct TextHash {
  using is_transparent = void;
  size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};
using TextNumbers = std::unordered_map<std::string, int32_t, TextHash, std::equal_to<>>;

// Numbers are given in the order of the first occurrence; the maps only look up.
struct Vocabulary {
  std::vector<UnitType> types;
  std::vector<float> stem_occurrences;
  double all_occurrences = 0;
  TextNumbers numbers, stems;
};

// The number of a type; a new one has no occurrences.
int32_t find_or_add(Vocabulary &vocabulary, std::string_view text, UnitKind kind);

// Finds the spelling of a type unless that has been done.
void spell(Vocabulary &vocabulary, int32_t type);

void count_occurrences(Vocabulary &vocabulary, int32_t type, float count);

}  // namespace klib::programs::align
