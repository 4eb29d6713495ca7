// Types with the two views that let rare words learn from others: the stem, which is shared by the
// forms of a word in most cases, and the spelling, which is close to that of the translation when
// both are one name or one borrowed word.
#include "programs/align/vocabulary.h"

#include "programs/align/characters.h"
#include "programs/align/spelling.h"

namespace klib::programs::align {
namespace {

// Letters that tell a word from others: two syllables of Korean, two characters of Chinese or
// Japanese, four letters of an alphabet.
size_t stem_length(char32_t first) {
  constexpr size_t of_alphabets = 4, of_others = 2;
  return is_syllabic(first) ? of_others : of_alphabets;
}

// The beginning of a word; all of a number or mark.
std::string_view stem_of(std::string_view text, UnitKind kind) {
  if (kind != UnitKind::word) return text;
  size_t position = 0;
  size_t left = stem_length(next_character(text, position));
  while (--left > 0 && position < text.size()) next_character(text, position);
  return text.substr(0, position);
}

int32_t number_of(TextNumbers &numbers, std::string_view text) {
  const auto found = numbers.find(text);
  if (found != numbers.end()) return found->second;
  const auto number = static_cast<int32_t>(numbers.size());
  numbers.emplace(text, number);
  return number;
}

}  // namespace

int32_t find_or_add(Vocabulary &vocabulary, std::string_view text, UnitKind kind) {
  const int32_t number = number_of(vocabulary.numbers, text);
  if (static_cast<size_t>(number) < vocabulary.types.size()) return number;
  const int32_t stem = number_of(vocabulary.stems, stem_of(text, kind));
  if (static_cast<size_t>(stem) == vocabulary.stem_occurrences.size())
    vocabulary.stem_occurrences.push_back(0);
  vocabulary.types.push_back({std::string(text), {}, kind, stem, 0, false});
  return number;
}

void spell(Vocabulary &vocabulary, int32_t type) {
  UnitType &entry = vocabulary.types[static_cast<size_t>(type)];
  if (entry.is_spelled) return;
  entry.spelling = spelling_of(entry.text, entry.kind);
  entry.is_spelled = true;
}

void count_occurrences(Vocabulary &vocabulary, int32_t type, float count) {
  UnitType &entry = vocabulary.types[static_cast<size_t>(type)];
  entry.occurrences += count;
  vocabulary.stem_occurrences[static_cast<size_t>(entry.stem)] += count;
  vocabulary.all_occurrences += static_cast<double>(count);
}

}  // namespace klib::programs::align
