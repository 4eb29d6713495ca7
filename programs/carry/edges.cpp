// A tag is at the edge of a word, at the edge of its letters, or inside it. Marks around the
// letters follow the source: those that a span has there it has here, if they are there. A
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

bool is_aligned_with(const Evidence &evidence, uint32_t source, uint32_t target) {
  return std::ranges::binary_search(evidence.targets_of(source), target);
}

bool is_aligned_with_alone(const Evidence &evidence, uint32_t source, uint32_t target) {
  const auto targets = evidence.targets_of(source);
  return targets.size() == 1 && targets[0] == target;
}

// Whether the word begins or ends with what it is known by, so that no mark parts it from its
// neighbour.
bool begins_bare(const Side &side, uint32_t w) {
  return key_of(side, side.words[w]).begin == side.words[w].begin;
}
bool ends_bare(const Side &side, uint32_t w) {
  return key_of(side, side.words[w]).end == side.words[w].end;
}

// Where the part of a compound begins that is the first word `w` of a span, and not the word before
// it, which the compound has, too: the part is that word, or both words are aligned with the
// compound. no_position when `word` is no such compound.
uint32_t begin_of_part(const Sides &sides, const Evidence &evidence, uint32_t w, uint32_t word) {
  const auto &[source, target] = sides;
  if (w == 0 || !begins_bare(source, w) || !ends_bare(source, w - 1)) return no_position;
  const Range there = key_of(source, source.words[w]), here = key_of(target, target.words[word]);
  const uint32_t length = length_of(there);
  if (length > 1 && length < length_of(here)) {
    const uint32_t place = here.end - length;
    const char32_t joint = target.text[place - 1];
    if ((is_hyphen(joint) || is_apostrophe(joint)) && are_same(sides, there, {place, here.end}))
      return place;
  }
  if (is_aligned_with(evidence, w, word) && is_aligned_with_alone(evidence, w - 1, word))
    for (uint32_t i = here.begin + 1; i + 1 < here.end; i++)
      if (is_hyphen(target.text[i])) return i + 1;
  return no_position;
}

// The same for the last word of a span and the word after it: where the part ends.
uint32_t end_of_part(const Sides &sides, const Evidence &evidence, uint32_t w, uint32_t word) {
  const auto &[source, target] = sides;
  if (w + 1 == source.word_count() || !ends_bare(source, w)) return no_position;
  const Range there = key_of(source, source.words[w]), here = key_of(target, target.words[word]);
  const uint32_t length = length_of(there), place = here.begin + length;
  if (length > 1 && length < length_of(here) && is_hyphen(target.text[place]) &&
      are_same(sides, there, {here.begin, place}))
    return place;
  if (is_aligned_with(evidence, w, word) && is_aligned_with_alone(evidence, w + 1, word))
    for (uint32_t i = here.end; i-- > here.begin + 1;)
      if (is_hyphen(target.text[i])) return i;
  return no_position;
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

// An edge of a span that has marks alone: `edge` is that of the word.
static uint32_t place_of_marks(const Sides &sides, uint32_t at, uint32_t word, uint32_t edge) {
  const Side &source = sides.source;
  if (at == source.size() || at <= source.words[source.word_at[at]].begin) return edge;
  const uint32_t place = place_inside(sides, at, word);
  return place == no_position ? edge : place;
}

uint32_t place_begin(const Sides &sides, const Evidence &evidence, Range span, uint32_t word) {
  const auto &[source, target] = sides;
  const Range here = target.words[word];
  uint32_t begin = span.begin, core = source.next_core[begin];
  if (core >= span.end) return place_of_marks(sides, begin, word, here.begin);
  const uint32_t w = source.word_at[core];
  const Range there = source.words[w];
  if (begin > there.begin && source.core_end[begin] > there.begin) {
    const uint32_t place = place_inside(sides, begin, word);
    if (place != no_position) return place;
    begin = there.begin;
    core = source.next_core[begin];
  }
  uint32_t place = target.next_core[here.begin];
  if (place >= here.end) place = here.begin;
  if (length_of(here) <= longest_word) {
    const Range key = key_of(target, here), key_there = key_of(source, there);
    const uint32_t part = begin_of_part(sides, evidence, w, word);
    if (part != no_position)
      place = part;
    else if (key.begin == place && after_article(source, key_there) == key_there.begin)
      place = after_article(target, key);
  }
  return take_marks_before(target, place, source, {begin, core});
}

uint32_t place_end(const Sides &sides, const Evidence &evidence, Range span, uint32_t word) {
  const auto &[source, target] = sides;
  const Range here = target.words[word];
  uint32_t end = span.end, core = source.core_end[end];
  if (core <= span.begin) return place_of_marks(sides, end, word, here.end);
  const uint32_t w = source.word_at[core - 1];
  const Range there = source.words[w];
  if (end < there.end && source.next_core[end] < there.end) {
    const uint32_t place = place_inside(sides, end, word);
    if (place != no_position) return place;
    end = there.end;
    core = source.core_end[end];
  }
  if (length_of(here) <= longest_word) {
    const uint32_t part = end_of_part(sides, evidence, w, word);
    if (part != no_position) return part;
  }
  uint32_t place = target.core_end[here.end];
  if (place <= here.begin) place = here.end;
  return take_marks_after(target, place, source, {core, end});
}

Range keep_pairs_whole(const Sides &sides, Range span, Range placed) {
  const Side &source = sides.source, &target = sides.target;
  const uint32_t last = span.end - 1, opener = source.partners[last];
  if (opener != no_position && opener < last && opener >= span.begin) {
    const auto &openers = target.openers[fold(source.text[last]) == ')'];
    uint32_t open = last_between(openers, placed.begin, placed.end);
    if (open == no_position)
      open =
          first_between(openers, placed.end, std::min(target.next_core[placed.end], target.size()));
    if (open != no_position) placed.end = target.partners[open] + 1;
  }
  const uint32_t closer = source.partners[span.begin];
  if (closer != no_position && closer > span.begin && closer < span.end) {
    const auto &closers = target.closers[fold(source.text[closer]) == ')'];
    const uint32_t close = first_between(closers, placed.begin, placed.end);
    if (close != no_position) placed.begin = target.partners[close];
  }
  return placed;
}

}  // namespace klib::programs
