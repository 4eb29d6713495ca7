// A span whose text is in the translation as it is goes there. Other spans go to the stretch of
// the translation with the best sum: each word that is aligned with one inside the span counts for
// it, each word between that is aligned with others counts against it, and each that is aligned
// with nothing counts against it a little. So a stray pair of the alignment, far from the rest,
// moves nothing, and a gap is filled unless its words clearly belong to something else.
#include "programs/carry/projection.h"

#include <algorithm>

namespace klib::programs {
namespace {

constexpr uint32_t longest_reach = 8;    // words
constexpr uint32_t longest_text = 1000;  // characters of a text that is looked for as it is
constexpr uint32_t words_at_edges = 16;
constexpr size_t links_at_edges = 16;

struct Words {  // from the first to the last
  uint32_t first, last;
};

// The words that a span has letters or digits of, or all of its words when it has none.
Words words_of(const Side &source, Range span) {
  uint32_t begin = source.next_core[span.begin], end = source.core_end[span.end];
  if (begin >= end || begin >= span.end) begin = span.begin, end = span.end;
  return {source.word_at[begin], source.word_at[end - 1]};
}

// Whether the word ends here: nothing that follows is part of it.
bool ends_there(const Side &side, uint32_t end) {
  if (end == side.size() || side.is_blank(end) || is_hyphen(side.text[end])) return true;
  if (side.kinds[end] == CharKind::mark) {
    const char32_t shape = fold(side.text[end]);
    return shape == '"' || shape == '(' || shape == ')' || shape == ',' || shape == '.';
  }
  return (side.kinds[end] == CharKind::unspaced) != (side.kinds[end - 1] == CharKind::unspaced);
}

// Whether the text begins where the piece does.
bool is_text_at(const Side &side, const TextPiece &piece, std::u32string_view text) {
  const uint32_t begin = piece.range.begin, end = begin + static_cast<uint32_t>(text.size());
  return end <= side.size() && ends_there(side, end) && side.view({begin, end}) == text;
}

bool is_named(const Evidence &evidence, Words words, uint32_t target) {
  auto links = evidence.sources_of(target);
  if (links.size() > links_at_edges) links = links.first(links_at_edges);
  return std::any_of(links.begin(), links.end(), [&](const Link &link) {
    const auto w = static_cast<uint32_t>(link.source);
    return w >= words.first && w <= words.last;
  });
}

// The first word of a text, or an empty range when a text like this is not looked for.
Range first_word_of(const Side &source, Range text) {
  const uint32_t length = text.end - text.begin;
  if (length > longest_text || (length == 1 && source.kinds[text.begin] > CharKind::digit))
    return {};
  const uint32_t end = std::min(text.end, source.words[source.word_at[text.begin]].end);
  const Range first = key_of(source, {text.begin, end});
  return first.begin == text.begin ? first : Range{};
}

// Finds the text of the span in the translation. Where it occurs as often as in the source, it is
// the occurrence with the same number; else the one that the alignment names, or if there is none,
// the one with the same number or the only one. An occurrence inside a word is not counted; what
// the words have then belongs to them.
bool find_same_text(const Projection &projection, Range span, Range &found) {
  const Side &source = projection.sides.source, &target = projection.sides.target;
  const Evidence &evidence = projection.evidence;
  const Range text = key_of(source, span), first = first_word_of(source, text);
  if (first.empty()) return false;
  const std::u32string_view view = source.view(text);
  uint32_t in_source = 0, before = 0, listed_before = 0;
  bool is_counted = false;
  for (const TextPiece &piece : find_pieces(evidence.source_pieces, source.view(first))) {
    if (!is_text_at(source, piece, view)) continue;
    in_source++;
    before += piece.range.begin < text.begin;
    is_counted |= piece.range.begin == text.begin;
    listed_before += !is_counted;
  }
  if (is_counted) before = listed_before;
  uint32_t count = 0;
  const TextPiece *named = nullptr, *as_manyth = nullptr, *last = nullptr;
  for (const TextPiece &piece : find_pieces(evidence.target_pieces, source.view(first))) {
    if (!is_text_at(target, piece, view)) continue;
    if (count++ == before) as_manyth = &piece;
    if (!named && is_named(evidence, words_of(source, span), piece.word)) named = &piece;
    last = &piece;
  }
  const TextPiece *piece = count == in_source && is_counted ? as_manyth : named;
  if (!piece && (count > in_source || (count == 1 && is_counted)))
    piece = as_manyth ? as_manyth : last;
  if (!piece) return false;
  const uint32_t begin = piece->range.begin, end = begin + (text.end - text.begin);
  found = {take_marks_before(target, begin, source, {span.begin, text.begin}),
           take_marks_after(target, end, source, {text.end, span.end})};
  return true;
}

// Collects the words of the translation that are aligned with words of the span.
void gather(Projection &projection, Range span, Words words) {
  const Side &source = projection.sides.source;
  const Evidence &evidence = projection.evidence;
  auto &inside = projection.inside;
  inside.clear();
  const uint32_t core_begin = source.next_core[span.begin];
  const bool has_core = core_begin < span.end;
  const bool few = projection.work_left == 0;
  for (uint32_t w = words.first; w <= words.last; w++) {
    if (few && w == words.first + words_at_edges && w + words_at_edges <= words.last)
      w = words.last - words_at_edges + 1;
    const Range word{std::max(source.words[w].begin, span.begin),
                     std::min(source.words[w].end, span.end)};
    if (has_core && !source.has_core(word)) continue;
    auto targets = evidence.targets_of(w);
    if (few && targets.size() > links_at_edges) targets = targets.first(links_at_edges);
    for (const uint32_t target : targets) {
      if (has_core && !projection.sides.target.has_core(projection.sides.target.words[target]))
        continue;
      inside.emplace_back(target, evidence.weight(w, target));
    }
  }
  const size_t work = inside.size() + (words.last - words.first);
  projection.work_left -= std::min(work, projection.work_left);
  std::sort(inside.begin(), inside.end());
  size_t kept = 0;
  for (size_t i = 0; i < inside.size(); i++)
    if (kept > 0 && inside[kept - 1].first == inside[i].first)
      inside[kept - 1].second += inside[i].second;
    else
      inside[kept++] = inside[i];
  inside.resize(kept);
}

// The stretch of words with the largest sum. It costs a word to go beyond the end of a sentence, if
// the span does not.
Words best_stretch(const Projection &projection, Words words) {
  const std::vector<int64_t> &cost = projection.evidence.cost;
  const std::vector<uint32_t> &ends = projection.sides.target.ends_before;
  const std::vector<uint32_t> &own_ends = projection.sides.source.ends_before;
  const int64_t end_cost = own_ends[words.last] > own_ends[words.first] ? 0 : full_weight;
  Words best{}, current{};
  int64_t best_sum = 0, sum = 0;
  uint32_t before = 0;
  for (const auto &[word, weight] : projection.inside) {
    if (sum > 0) sum -= cost[word] - cost[before] + end_cost * (ends[word] - ends[before - 1]);
    if (sum <= 0) sum = 0, current.first = word;
    const int64_t outside = cost[word + 1] - cost[word] - weight;
    sum += std::max<int64_t>(weight - outside, 1);
    current.last = word;
    before = word + 1;
    if (sum > best_sum) best_sum = sum, best = current;
  }
  return best;
}

// The shape of the first mark after the letters of a word, or 0.
char32_t mark_after(const Side &side, uint32_t word) {
  const Range range = side.words[word];
  const uint32_t mark = std::max(side.core_end[range.end], range.begin);
  return mark < range.end ? fold(side.text[mark]) : 0;
}

// Words that are aligned with nothing belong to the span when they are between it and a mark
// that is there in the source, too.
void reach_to_marks(const Projection &projection, Range span, Words &words) {
  const auto &[source, target] = projection.sides;
  const Evidence &evidence = projection.evidence;
  const uint32_t first = source.word_at[span.begin], last = source.word_at[span.end - 1];
  if (first > 0 && span.begin == source.words[first].begin) {
    const char32_t mark = mark_after(source, first - 1);
    uint32_t w = words.first;
    const uint32_t limit = w - std::min(w, longest_reach);
    if (mark != 0) {
      while (w > limit && evidence.sources_of(w - 1).empty() && mark_after(target, w - 1) == 0) w--;
      if (w > 0 && mark_after(target, w - 1) == mark) words.first = w;
    }
  }
  const Range word = source.words[last];
  if (span.end < word.end && source.next_core[span.end] >= word.end) {
    const char32_t mark = fold(source.text[span.end]);
    uint32_t w = words.last;
    const uint32_t limit = std::min(w + longest_reach, target.word_count() - 1);
    while (w < limit && mark_after(target, w) == 0 && evidence.sources_of(w + 1).empty()) w++;
    if (mark != '.' && mark_after(target, w) == mark) words.last = w;
  }
}

// A span without aligned words goes around the unaligned words between the translations of its
// neighbours, a pair of anchors else around the word of the nearest of them.
bool find_by_neighbours(const Projection &projection, const Span &span, Words words, Words &found) {
  const auto &[source, target] = projection.sides;
  const Evidence &evidence = projection.evidence;
  const uint32_t before = evidence.aligned_before[words.first];
  const uint32_t after = evidence.aligned_after[words.last + 1];
  const uint32_t count = target.word_count();
  const uint32_t left = before == no_position ? 0 : evidence.targets_of(before).back() + 1;
  const uint32_t right = after == no_position ? count : evidence.targets_of(after).front();
  const auto is_free = [&](uint32_t w) { return evidence.sources_of(w).empty(); };
  if (before != no_position || after != no_position) {
    for (uint32_t w = left; w < right; w++) {
      if (!is_free(w) || !target.has_core(target.words[w])) continue;
      found = {w, w};
      while (found.last + 1 < right && is_free(found.last + 1)) found.last++;
      return true;
    }
  }
  if (span.is_font()) return false;
  bool to_right =
      before == no_position || (after != no_position && after - words.last <= words.first - before);
  if (span.parent != no_span && before != no_position && after != no_position) {
    const Range around = projection.spans[span.parent].source;
    const bool before_is_in = source.words[before].end > around.begin;
    const bool after_is_in = source.words[after].begin < around.end;
    if (before_is_in != after_is_in) to_right = after_is_in;
  }
  if (before == no_position && after == no_position)
    found.first = std::min(words.first, count - 1);
  else if (to_right)
    found.first = right;
  else
    found.first = left - 1;
  found.last = found.first;
  return true;
}

// All words but those that are only marks.
Words whole_translation(const Side &target) {
  const uint32_t size = target.size();
  if (target.core_end[size] == 0) return {0, target.word_count() - 1};
  return {target.word_at[target.next_core[0]], target.word_at[target.core_end[size] - 1]};
}

bool find_words(Projection &projection, Span &span, Words &found) {
  const Side &source = projection.sides.source;
  const Range range = span.source;
  const bool has_core = source.has_core(range);
  if (has_core && source.core_end[range.begin] == 0 &&
      source.next_core[range.end] == source.size()) {
    found = whole_translation(projection.sides.target);
    return true;
  }
  const Words words = words_of(source, range);
  gather(projection, range, words);
  if (projection.inside.empty()) {
    span.fallback = true;
    return find_by_neighbours(projection, span, words, found);
  }
  found = best_stretch(projection, words);
  reach_to_marks(projection, range, found);
  return true;
}

}  // namespace

void project(Projection &projection, Span &span) {
  const Sides &sides = projection.sides;
  if (find_same_text(projection, span.source, span.target)) return;
  Words words;
  if (!find_words(projection, span, words)) {
    span.dropped = true;
    return;
  }
  Range placed{place_begin(sides, projection.evidence, span.source, words.first),
               place_end(sides, projection.evidence, span.source, words.last)};
  placed = keep_pairs_whole(sides, span.source, placed);
  const Range whole{sides.target.words[words.first].begin, sides.target.words[words.last].end};
  const bool is_without_letters =
      sides.source.has_core(span.source) && !sides.target.has_core(placed);
  if (placed.empty() || (is_without_letters && sides.target.has_core(whole))) placed = whole;
  span.target = placed;
}

}  // namespace klib::programs
