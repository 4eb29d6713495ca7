// Where the codes of the source go in the translation.
//
// A code goes into the target words that are aligned with its source word, at the place that
// corresponds, by lengths, to its place there. Inside a word it moves to the nearest boundary
// between two kinds of characters like the one where it was ("ab|,cd" to "xyz|,w"), and out of the
// notation '<' letter '[' ... ']' '>' that marks units of the translation. An anchor is never lost:
// without an aligned word it goes into the word of the same number, or else to the last word. A
// font code without one is dropped; the words after it have its font even so.
//
// Every code costs a search in the sums of its aligned words' lengths, and a search for a boundary
// near its place. When no boundary is near, those of the whole word are listed once for each pair
// of character classes, so that the time stays linear.

#include <algorithm>
#include <span>
#include <string_view>

#include "text/bytes.h"
#include "text/character_types.h"
#include "transfer/transfer.h"

namespace klib::transfer {

namespace {

constexpr size_t none = SIZE_MAX;

struct Placement {
  size_t word;  // of the translation
  size_t position;
};

// The boundaries of one target word between a byte that shares a class with `before` and one that
// shares a class with `after`, ascending.
struct BoundaryList {
  uint32_t before, after;
  size_t next;  // another list of the same word, or none
  memory::ArenaVector<size_t> positions;
};

struct Placing {
  const SourceTable &source;
  const TargetTable &targets;
  AlignmentIndex index;
  memory::ArenaVector<uint64_t> reach;  // of the aligned words at hand: lengths added up
  memory::ArenaVector<size_t>
      first_list;  // of each target word in `boundaries`; empty until needed
  memory::ArenaVector<BoundaryList> boundaries;
};

uint32_t character_class(char byte) {
  using namespace character_types;
  return properties(u8(byte)) & (upper | lower | digit | punct | nonletter);
}

bool matches(std::string_view text, size_t position, uint32_t before, uint32_t after) {
  return (character_class(text[position - 1]) & before) != 0 &&
         (character_class(text[position]) & after) != 0;
}

const BoundaryList &list_boundaries(Placing &placing, size_t word, uint32_t before,
                                    uint32_t after) {
  auto &lists = placing.boundaries;
  if (placing.first_list.empty()) placing.first_list.resize(placing.targets.words.size(), none);
  for (size_t i = placing.first_list[word]; i != none; i = lists[i].next)
    if (lists[i].before == before && lists[i].after == after) return lists[i];

  BoundaryList list{.before = before,
                    .after = after,
                    .next = placing.first_list[word],
                    .positions = memory::ArenaVector<size_t>(placing.boundaries.get_allocator())};
  const std::string_view text = placing.targets.word(word);
  for (size_t position = 1; position < text.size(); ++position)
    if (matches(text, position, before, after)) list.positions.push_back(position);
  lists.push_back(std::move(list));
  placing.first_list[word] = lists.size() - 1;
  return lists.back();
}

// The matching boundary inside the word that is nearest to the position, the left one of two; none
// when there is none.
size_t nearest_boundary(Placing &placing, size_t word, size_t position, uint32_t before,
                        uint32_t after) {
  constexpr size_t look_around = 64;
  const std::string_view text = placing.targets.word(word);
  for (size_t distance = 0; distance <= look_around; ++distance) {
    const bool left = distance < position, right = position + distance < text.size();
    if (!left && !right) return none;
    if (left && matches(text, position - distance, before, after)) return position - distance;
    if (right && matches(text, position + distance, before, after)) return position + distance;
  }
  const auto &positions = list_boundaries(placing, word, before, after).positions;
  const auto right = std::lower_bound(positions.begin(), positions.end(), position);
  if (right == positions.begin()) return right == positions.end() ? none : *right;
  const auto left = right - 1;
  return right == positions.end() || position - *left <= *right - position ? *left : *right;
}

// The listed target words, one entry for each time that source word `w` is named.
std::span<const uint32_t> aligned_targets(const Placing &placing, size_t w) {
  const auto &[starts, targets] = placing.index;
  return std::span(targets).subspan(starts[w], starts[w + 1] - starts[w]);
}

// Needs the list's `reach`.
Placement proportional_position(Placing &placing, const SourceWord &word, const WordCode &code,
                                std::span<const uint32_t> list) {
  const auto &reach = placing.reach;
  const uint64_t place =
      word.text_length == 0 ? 0 : reach.back() * code.position / word.text_length;
  const auto entry =
      static_cast<size_t>(std::lower_bound(reach.begin(), reach.end(), place) - reach.begin());
  const size_t target = list[entry];
  const auto position = static_cast<size_t>(place - (entry == 0 ? 0 : reach[entry - 1]));
  const size_t length = placing.targets.words[target].length;
  if (position == 0 || code.position == 0 || code.position == word.text_length ||
      position == length)
    return {target, position};

  const uint32_t before = character_class(code.before), after = character_class(code.after);
  if (before == after) return {target, position};
  const size_t boundary = nearest_boundary(placing, target, position, before, after);
  if (boundary != none) return {target, boundary};
  if (list.size() > 1) return {target, position};
  return {target, position <= length / 2 ? 0 : length};
}

// A code belongs before the '<' or after the '[' of "<A[", and after the '>' of "]>".
size_t adjust_for_brackets(std::string_view text, size_t position) {
  const auto at = [&](size_t offset) { return offset < text.size() ? text[offset] : '\0'; };
  const auto is_one_of = [](char byte, std::string_view letters) {
    return letters.find(byte) != letters.npos;
  };
  if (position >= 2 && at(position) == '[' && at(position - 2) == '<' &&
      is_one_of(at(position - 1), "AMCTNU"))
    ++position;
  if (position >= 1 && at(position - 1) == '<' && is_one_of(at(position), "AMCTU") &&
      at(position + 1) == '[')
    --position;
  if (position >= 1 && at(position - 1) == ']' && at(position) == '>') ++position;
  return position;
}

// Adds up the lengths of the listed words for the searches of a source word's codes.
void measure(Placing &placing, std::span<const uint32_t> list) {
  placing.reach.clear();
  uint64_t length = 0;
  for (const uint32_t target : list)
    placing.reach.push_back(length += placing.targets.words[target].length);
}

Placement place_code(Placing &placing, const SourceWord &word, const WordCode &code,
                     std::span<const uint32_t> list) {
  if (list.empty()) return {placing.targets.words.size() - 1, 0};
  const Placement place = proportional_position(placing, word, code, list);
  return {place.word, adjust_for_brackets(placing.targets.word(place.word), place.position)};
}

}  // namespace

memory::ArenaVector<PlacedCode> distribute_codes(const SourceTable &source,
                                                 const TargetTable &targets, memory::Arena &arena) {
  Placing placing{.source = source,
                  .targets = targets,
                  .index = index_alignment(targets, source.words.size(), arena),
                  .reach = memory::ArenaVector<uint64_t>(arena),
                  .first_list = memory::ArenaVector<size_t>(arena),
                  .boundaries = memory::ArenaVector<BoundaryList>(arena)};
  memory::ArenaVector<PlacedCode> placed(arena);
  placed.reserve(source.codes.size());
  for (size_t w = 0; w < source.words.size(); ++w) {
    const auto codes = source.codes_of(w);
    if (codes.empty()) continue;
    auto list = aligned_targets(placing, w);
    const bool lost = list.empty();
    const auto same_number = static_cast<uint32_t>(w);
    if (lost && w < targets.words.size()) list = std::span(&same_number, 1);
    measure(placing, list);
    uint32_t number = source.words[w].first_code;
    for (const WordCode &code : codes) {
      if (!lost || code.kind != P_FONT) {
        const Placement place = place_code(placing, source.words[w], code, list);
        const size_t offset = targets.words[place.word].start + place.position;
        placed.push_back({static_cast<uint32_t>(offset), number});
      }
      ++number;
    }
  }
  std::sort(placed.begin(), placed.end(), [](const PlacedCode &a, const PlacedCode &b) {
    return a.offset != b.offset ? a.offset < b.offset : a.code < b.code;
  });
  return placed;
}

}  // namespace klib::transfer
