// A point stays with the word that it touches. What both sides share at the beginning or the end of
// the sentence carries it first ("4.3.<x/>2019 Update"); between two blanks or after one it is a
// cut, and goes where most of what was before it is before it again; and what is between a word
// and the mark after it goes in front of that mark.
#include "programs/carry/points.h"

#include <algorithm>

namespace klib::programs {
namespace {

constexpr uint32_t cut_reach = 4;         // words on each side of a cut
constexpr uint32_t phrase_reach = 8;      // words before a mark that may belong to the same phrase
constexpr uint32_t longest_phrase = 500;  // characters
constexpr size_t links_looked_at = 16;

// Where the places of the source are that both texts share from the beginning, or from the end.
struct Shared {
  std::vector<uint32_t> from_begin;  // by place in the source
  std::vector<uint32_t> from_end;    // by distance from its end
};

struct Placing {
  const Sides &sides;
  const Evidence &evidence;
  Shared shared;
  // The word after the last stretch of unaligned words of which a point has gone to that word.
  uint32_t moved_on_to = no_position;
};

Shared find_shared(const Side &source, const Side &target) {
  Shared shared;
  uint32_t i = 0, j = 0;
  for (;; i++, j++) {
    while (i < source.size() && source.is_blank(i)) shared.from_begin.push_back(j), i++;
    shared.from_begin.push_back(j);
    while (j < target.size() && target.is_blank(j)) j++;
    if (i == source.size() || j == target.size() || fold(source.text[i]) != fold(target.text[j]))
      break;
  }
  i = source.size(), j = target.size();
  for (;; i--, j--) {
    while (i > 0 && source.is_blank(i - 1)) shared.from_end.push_back(j), i--;
    shared.from_end.push_back(j);
    while (j > 0 && target.is_blank(j - 1)) j--;
    if (i == 0 || j == 0 || fold(source.text[i - 1]) != fold(target.text[j - 1])) break;
  }
  return shared;
}

// The place on the side of the blanks there on which it is in the source.
uint32_t beside_blanks(const Sides &sides, uint32_t at, uint32_t place) {
  const auto &[source, target] = sides;
  const bool stands_before = source.text[at] == ' ';
  if (stands_before)
    while (place > 0 && target.is_blank(place - 1)) place--;
  else if (source.text[at - 1] == ' ')
    while (place < target.size() && target.is_blank(place)) place++;
  return place;
}

// The place that follows from the beginning or the end of the sentence, or no_position.
uint32_t shared_place(const Placing &placing, uint32_t at) {
  const Shared &shared = placing.shared;
  const Side &target = placing.sides.target;
  const uint32_t to_end = placing.sides.source.size() - at;
  uint32_t place = no_position;
  if (at < shared.from_begin.size())
    place = beside_blanks(placing.sides, at, shared.from_begin[at]);
  if ((place == no_position || target.is_in_run(place)) && to_end < shared.from_end.size())
    place = beside_blanks(placing.sides, at, shared.from_end[to_end]);
  return place != no_position && target.is_in_run(place) ? no_position : place;
}

// Forward over the words of the phrase that word `w` ends, to the next mark if it is this one.
uint32_t before_mark(const Placing &placing, uint32_t place, uint32_t w, char32_t mark) {
  const Side &target = placing.sides.target;
  const Evidence &evidence = placing.evidence;
  const auto is_of_phrase = [&](uint32_t word) {
    const auto sources = evidence.sources_of(word);
    return sources.empty() || std::ranges::any_of(sources, [&](const Link &link) {
             const auto source = static_cast<uint32_t>(link.source);
             return source <= w && source + phrase_reach >= w;
           });
  };
  const uint32_t begin = target.word_at[place - 1];
  const uint32_t end = std::min(target.size(), place + longest_phrase);
  for (uint32_t i = place; i < end; i++) {
    if (target.kinds[i] == CharKind::mark && !is_hyphen(target.text[i]) &&
        !is_apostrophe(target.text[i]))
      return fold(target.text[i]) == fold(mark) ? target.core_end[i] : place;
    const uint32_t word = target.word_at[i];
    if (word > begin && i == target.words[word].begin &&
        (word > begin + 2 * phrase_reach || !is_of_phrase(word)))
      return place;
  }
  return place;
}

uint32_t place_after(const Placing &placing, Point &point) {
  const auto &[source, target] = placing.sides;
  const Evidence &evidence = placing.evidence;
  const uint32_t at = point.source, w = source.word_at[at - 1];
  const Range word = source.words[w];
  const uint32_t core = std::max(source.core_end[at], word.begin);
  if (at < word.end && source.next_core[at] == source.size()) {
    const uint32_t end = target.core_end[target.size()];
    return take_marks_after(target, end, source, {core, at});
  }
  uint32_t aligned = evidence.aligned_before[w + 1];
  point.fallback = aligned != w;
  if (point.fallback && placing.moved_on_to == evidence.aligned_after[w] &&
      placing.moved_on_to != no_position)
    aligned = placing.moved_on_to;
  if (aligned == no_position) {
    const uint32_t next = evidence.aligned_after[w];
    return next == no_position ? 0 : target.words[evidence.targets_of(next).front()].begin;
  }
  const Range here = target.words[evidence.targets_of(aligned).back()];
  uint32_t place = target.core_end[here.end];
  if (place <= here.begin) place = here.end;
  if (at < word.end && !source.is_core(at)) place = before_mark(placing, place, w, source.text[at]);
  return aligned == w ? take_marks_after(target, place, source, {core, at}) : place;
}

uint32_t place_before(Placing &placing, Point &point) {
  const auto &[source, target] = placing.sides;
  const Evidence &evidence = placing.evidence;
  const uint32_t at = point.source, w = source.word_at[at];
  const uint32_t aligned = evidence.aligned_after[w];
  point.fallback = aligned != w;
  if (point.fallback) placing.moved_on_to = aligned;
  if (aligned == no_position) {
    const uint32_t last = evidence.aligned_before[w];
    return last == no_position ? target.size() : target.words[evidence.targets_of(last).back()].end;
  }
  const Range here = target.words[evidence.targets_of(aligned).front()];
  uint32_t place = target.next_core[here.begin];
  if (place >= here.end) place = here.begin;
  const uint32_t core = source.next_core[at];
  if (aligned != w || core >= source.words[w].end) return place;
  return take_marks_before(target, place, source, {at, core});
}

// The word of the translation before which the cut before a word of the source is best, the last
// of those that are as good.
uint32_t find_cut(const Placing &placing, uint32_t next_word) {
  const auto &[source, target] = placing.sides;
  std::vector<std::pair<uint32_t, int64_t>> gains;  // of a cut not before this word
  const auto vote = [&](uint32_t w, uint32_t distance, bool before) {
    auto targets = placing.evidence.targets_of(w);
    const int64_t weight =
        full_weight / (distance + 1) / static_cast<int64_t>(std::max<size_t>(targets.size(), 1));
    targets = targets.first(std::min(targets.size(), links_looked_at));
    for (const uint32_t word : targets) gains.emplace_back(word + 1, before ? weight : -weight);
  };
  for (uint32_t d = 0; d < cut_reach; d++) {
    if (d < next_word) vote(next_word - 1 - d, d, true);
    if (next_word + d < source.word_count()) vote(next_word + d, d, false);
  }
  if (gains.empty()) return std::min(next_word, target.word_count());
  std::sort(gains.begin(), gains.end());
  uint32_t best = gains[0].first - 1;
  int64_t best_sum = 0, sum = 0;
  for (size_t i = 0; i < gains.size(); i++) {
    sum += gains[i].second;
    const bool is_last = i + 1 == gains.size();
    if (sum <= best_sum || (!is_last && gains[i + 1].first == gains[i].first)) continue;
    best_sum = sum;
    best = is_last ? target.word_count() : gains[i + 1].first - 1;
  }
  return best;
}

uint32_t place_at_cut(Placing &placing, Point &point) {
  const auto &[source, target] = placing.sides;
  const uint32_t at = point.source, w = source.word_at[at];
  point.fallback =
      !placing.evidence.is_aligned(w) && (w == 0 || !placing.evidence.is_aligned(w - 1));
  if (!placing.evidence.is_aligned(w)) placing.moved_on_to = placing.evidence.aligned_after[w];
  const uint32_t last = find_cut(placing, w);
  const bool stands_alone = source.text[at] == ' ';
  if (stands_alone) return last == 0 ? 0 : target.words[last - 1].end;
  return last == target.word_count() ? target.size() : target.words[last].begin;
}

uint32_t place_in_word(Placing &placing, Point &point) {
  const auto &[source, target] = placing.sides;
  const uint32_t at = point.source, w = source.word_at[at];
  const Range word = source.words[w];
  auto targets = placing.evidence.targets_of(w);
  targets = targets.first(std::min(targets.size(), links_looked_at));
  for (const uint32_t here : targets)
    if (const uint32_t place = place_inside(placing.sides, at, here); place != no_position)
      return place;
  if (!source.is_in_run(at))
    return source.is_core(at) ? place_before(placing, point) : place_after(placing, point);
  if (targets.empty()) return place_before(placing, point);
  const Range here = target.words[targets.front()];
  const uint64_t length = here.end - here.begin;
  return here.begin + static_cast<uint32_t>(length * (at - word.begin) / (word.end - word.begin));
}

// A point between a blank and a mark that belongs to what is before it (`here <img>, too`) goes to
// the last word before the blank, and on to the mark; no_position when that word is not aligned.
uint32_t place_before_mark(const Placing &placing, uint32_t at) {
  const auto &[source, target] = placing.sides;
  const char32_t shape = fold(source.text[at]);
  if (source.kinds[at] != CharKind::mark || (shape != ',' && shape != '.' && shape != ')') ||
      source.word_at[at] == 0)
    return no_position;
  if (source.next_core[at] == source.size())
    return beside_blanks(placing.sides, at, target.core_end[target.size()]);
  const uint32_t w = source.word_at[at] - 1;
  if (!placing.evidence.is_aligned(w)) return no_position;
  const Range here = target.words[placing.evidence.targets_of(w).back()];
  uint32_t place = target.core_end[here.end];
  if (place <= here.begin) place = here.end;
  place = before_mark(placing, place, w, source.text[at]);
  return beside_blanks(placing.sides, at, place);
}

uint32_t place(Placing &placing, Point &point) {
  const Side &source = placing.sides.source;
  const uint32_t at = point.source;
  if (at == 0) return 0;
  if (at == source.size()) return placing.sides.target.size();
  if (const uint32_t place = shared_place(placing, at); place != no_position) return place;
  if (source.text[at - 1] == ' ') {
    const uint32_t place = place_before_mark(placing, at);
    return place != no_position ? place : place_at_cut(placing, point);
  }
  if (source.text[at] == ' ') return place_after(placing, point);
  const Range word = source.words[source.word_at[at]];
  if (at == word.begin) return place_before(placing, point);
  const bool core_before = source.core_end[at] > word.begin;
  const bool core_after = source.next_core[at] < word.end;
  if (core_before && core_after) return place_in_word(placing, point);
  return core_before ? place_after(placing, point) : place_before(placing, point);
}

}  // namespace

void place_points(const Sides &sides, const Evidence &evidence, std::vector<Point> &points) {
  if (points.empty()) return;
  Placing placing{sides, evidence, find_shared(sides.source, sides.target)};
  for (size_t p = 0; p < points.size(); p++) {
    const bool is_joined = p > 0 && points[p].blank > Point::begins_blank;
    points[p].target = is_joined ? points[p - 1].target : place(placing, points[p]);
  }
}

}  // namespace klib::programs
