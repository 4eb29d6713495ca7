// A tag is at the edge of a word, at the edge of its letters, or inside it. Marks around the
// letters follow the source: those that an element has there it has here, if they are there. A
// place inside a word is found by what both words share, or by the change of characters there.
#include "programs/carry/edges.h"

#include <algorithm>

namespace klib::programs {
namespace {

constexpr uint32_t longest_word = 1000;  // longer ones are not looked into
constexpr uint32_t longest_article = 5;  // of letters before an apostrophe
constexpr uint32_t shortest_noun = 3;    // of letters after it

uint32_t length_of(Range range) { return range.end - range.begin; }

bool is_same(const Sides &sides, uint32_t source, uint32_t target) {
  return fold(sides.source.text[source]) == fold(sides.target.text[target]);
}

bool are_same(const Sides &sides, Range source, Range target) {
  if (length_of(source) != length_of(target)) return false;
  for (uint32_t i = 0; i < length_of(source); i++)
    if (!is_same(sides, source.begin + i, target.begin + i)) return false;
  return true;
}

// Where both words go on differently after the same `length` characters, if that is an edge.
uint32_t after_same_beginning(const Sides &sides, Range source, Range target, uint32_t at) {
  const uint32_t length = at - source.begin, place = target.begin + length;
  if (length > length_of(target) || !are_same(sides, {source.begin, at}, {target.begin, place}))
    return no_position;
  return sides.target.is_in_run(place) && !sides.source.is_in_run(at) ? no_position : place;
}

uint32_t before_same_end(const Sides &sides, Range source, Range target, uint32_t at) {
  const uint32_t length = source.end - at;
  if (length > length_of(target)) return no_position;
  const uint32_t place = target.end - length;
  if (!are_same(sides, {at, source.end}, {place, target.end})) return no_position;
  return sides.target.is_in_run(place) && !sides.source.is_in_run(at) ? no_position : place;
}

bool is_letter(CharKind kind) { return kind == CharKind::upper || kind == CharKind::letter; }

bool is_like(CharKind a, CharKind b) { return a == b || (is_letter(a) && is_letter(b)); }

// The place nearest to the same proportion of the word where the kinds of characters change as they
// do in the source.
uint32_t at_same_change(const Sides &sides, Range source, Range target, uint32_t at, bool exactly) {
  const CharKind before = sides.source.kinds[at - 1], after = sides.source.kinds[at];
  if (before == after) return no_position;
  const auto fits = [&](uint32_t i) {
    const CharKind a = sides.target.kinds[i - 1], b = sides.target.kinds[i];
    if (exactly) return a == before && b == after;
    return is_like(a, before) && is_like(b, after) && !is_letter(a) != !is_letter(b);
  };
  const uint32_t length = length_of(target);
  const uint32_t middle =
      target.begin +
      static_cast<uint32_t>(uint64_t{length} * (at - source.begin) / length_of(source));
  for (uint32_t d = 0; d <= length; d++) {
    if (middle >= target.begin + 1 + d && middle - d < target.end && fits(middle - d))
      return middle - d;
    if (middle + d > target.begin && middle + d < target.end && fits(middle + d)) return middle + d;
  }
  return no_position;
}

// The end of an article that an apostrophe joins to its noun ("l'application"), or the beginning.
uint32_t after_article(const Side &side, Range key) {
  for (uint32_t i = key.begin; i < key.end && i <= key.begin + longest_article; i++) {
    if (side.is_core(i)) continue;
    const bool joins = i > key.begin && is_apostrophe(side.text[i]) &&
                       key.end - i > shortest_noun && side.is_core(i + 1);
    return joins ? i + 1 : key.begin;
  }
  return key.begin;
}

// The word of the source at the edge of an element, when it is a part of the word here.
bool is_last_part(const Sides &sides, Range source, Range target) {
  const uint32_t length = length_of(source);
  if (length < 2 || length >= length_of(target)) return false;
  const uint32_t begin = target.end - length;
  const char32_t joint = sides.target.text[begin - 1];
  return (is_hyphen(joint) || is_apostrophe(joint)) && are_same(sides, source, {begin, target.end});
}

bool is_first_part(const Sides &sides, Range source, Range target) {
  const uint32_t length = length_of(source);
  if (length < 2 || length >= length_of(target)) return false;
  return is_hyphen(sides.target.text[target.begin + length]) &&
         are_same(sides, source, {target.begin, target.begin + length});
}

bool speaks_for(const Evidence &evidence, uint32_t source, uint32_t target) {
  const auto targets = evidence.targets_of(source);
  return targets.size() == 1 && targets[0] == target;
}

bool links(const Evidence &evidence, uint32_t source, uint32_t target) {
  return std::ranges::binary_search(evidence.targets_of(source), target);
}

// The last of the openers before `end`, or no_position when that is before `begin`.
uint32_t last_between(const std::vector<uint32_t> &places, uint32_t begin, uint32_t end) {
  const auto next = std::lower_bound(places.begin(), places.end(), end);
  return next != places.begin() && *(next - 1) >= begin ? *(next - 1) : no_position;
}

uint32_t first_between(const std::vector<uint32_t> &places, uint32_t begin, uint32_t end) {
  const auto first = std::lower_bound(places.begin(), places.end(), begin);
  return first != places.end() && *first < end ? *first : no_position;
}

}  // namespace

uint32_t place_inside(const Sides &sides, uint32_t at, uint32_t word) {
  const Range source = sides.source.words[sides.source.word_at[at]];
  const Range target = sides.target.words[word];
  if (length_of(source) > longest_word || length_of(target) > longest_word) return no_position;
  uint32_t place = after_same_beginning(sides, source, target, at);
  if (place == no_position) place = before_same_end(sides, source, target, at);
  if (place == no_position) place = at_same_change(sides, source, target, at, true);
  if (place == no_position && !sides.source.is_in_run(at))
    place = at_same_change(sides, source, target, at, false);
  return place;
}

uint32_t place_begin(const Sides &sides, const Evidence &evidence, Range element, uint32_t word) {
  const Side &source = sides.source, &target = sides.target;
  const Range here = target.words[word];
  uint32_t begin = element.begin, core = source.next_core[begin];
  if (core >= element.end) return here.begin;
  const Range there = source.words[source.word_at[core]];
  if (begin > there.begin && source.core_end[begin] > there.begin) {
    const uint32_t place = place_inside(sides, begin, word);
    if (place != no_position) return place;
    begin = there.begin;
    core = source.next_core[begin];
  }
  uint32_t place = std::min(target.next_core[here.begin], here.end);
  if (place == here.end) place = here.begin;
  const Range key = key_of(target, here), word_there = key_of(source, there);
  const uint32_t w = source.word_at[core];
  uint32_t part = no_position;
  if (w > 0 && word_there.begin == there.begin &&
      key_of(source, source.words[w - 1]).end == source.words[w - 1].end) {
    if (is_last_part(sides, word_there, key))
      part = key.end - length_of(word_there);
    else if (links(evidence, w, word) && speaks_for(evidence, w - 1, word))
      for (uint32_t i = key.begin + 1; i + 1 < key.end; i++)
        if (is_hyphen(target.text[i])) {
          part = i + 1;
          break;
        }
  }
  if (part != no_position)
    place = part;
  else if (key.begin == place && after_article(source, word_there) == word_there.begin)
    place = after_article(target, key);
  return take_marks_before(target, place, source, {begin, core});
}

uint32_t place_end(const Sides &sides, const Evidence &evidence, Range element, uint32_t word) {
  const Side &source = sides.source, &target = sides.target;
  const Range here = target.words[word];
  uint32_t end = element.end, core = source.core_end[end];
  if (core <= element.begin) return here.end;
  const Range there = source.words[source.word_at[core - 1]];
  if (end < there.end && source.next_core[end] < there.end) {
    const uint32_t place = place_inside(sides, end, word);
    if (place != no_position) return place;
    end = there.end;
    core = source.core_end[end];
  }
  const Range key = key_of(target, here), word_there = key_of(source, there);
  const uint32_t w = source.word_at[core - 1];
  if (w + 1 < source.word_count() && word_there.end == there.end) {
    if (is_first_part(sides, word_there, key)) return key.begin + length_of(word_there);
    if (links(evidence, w, word) && speaks_for(evidence, w + 1, word))
      for (uint32_t i = key.end; i-- > key.begin + 1;)
        if (is_hyphen(target.text[i])) return i;
  }
  uint32_t place = target.core_end[here.end];
  if (place <= here.begin) place = here.end;
  return take_marks_after(target, place, source, {core, end});
}

Range keep_pairs_whole(const Sides &sides, Range element, Range placed) {
  const Side &source = sides.source, &target = sides.target;
  const uint32_t last = element.end - 1, opener = source.partners[last];
  if (opener != no_position && opener < last && opener >= element.begin) {
    const auto &openers = target.openers[fold(source.text[last]) == ')'];
    uint32_t open = last_between(openers, placed.begin, placed.end);
    if (open == no_position)
      open =
          first_between(openers, placed.end, std::min(target.next_core[placed.end], target.size()));
    if (open != no_position) placed.end = target.partners[open] + 1;
  }
  const uint32_t closer = source.partners[element.begin];
  if (closer != no_position && closer > element.begin && closer < element.end) {
    const auto &closers = target.closers[fold(source.text[closer]) == ')'];
    const uint32_t close = first_between(closers, placed.begin, placed.end);
    if (close != no_position) placed.begin = target.partners[close];
  }
  return placed;
}

}  // namespace klib::programs
