// A change of the translation is noted for each kept element, and for each word outside of its
// place that translates nothing but it; then the text is written again and the codes are moved
// along.
#include "programs/carry/keep.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

namespace klib::programs {
namespace {

struct Change {
  Range range;          // of the translation; empty: an insertion
  bool before = false;  // of an insertion: what is at its place comes after it
  uint32_t element = no_span;
  std::u32string text{};
  uint32_t block = 0, length = 0;  // the element's own text inside `text`
  int64_t moves = 0;               // what is after all changes up to this one moves by so much
};

struct Keeper {
  const Side &source, &target;
  const Evidence &evidence;
  const Markup &markup;
  std::vector<uint32_t> element_of;  // the kept element that each source word is part of
  std::vector<Change> changes{};

  const Span &element(uint32_t e) const { return markup.spans[e]; }
  bool is_of(uint32_t target_word, uint32_t e) const {
    const Range own = element(e).source;
    return std::ranges::any_of(evidence.sources_of(target_word), [&](const Link &link) {
      const Range word = source.words[static_cast<uint32_t>(link.source)];
      return word.begin < own.end && word.end > own.begin;
    });
  }
  // Whether a word translates other words than those of the element.
  bool is_foreign(uint32_t target_word, uint32_t e) const {
    return !evidence.sources_of(target_word).empty() && !is_of(target_word, e);
  }
};

void find_elements(Keeper &keeper) {
  const Side &source = keeper.source;
  keeper.element_of.assign(source.word_count(), no_span);
  for (uint32_t e = 0; e < keeper.markup.spans.size(); e++) {
    const Span &element = keeper.element(e);
    if (!element.kept) continue;
    for (uint32_t w = source.word_at[element.source.begin];
         w < source.word_count() && source.words[w].begin < element.source.end; w++)
      keeper.element_of[w] = e;
  }
}

bool needs_blank(const Side &target, uint32_t at, bool before) {
  if (before) return target.kinds[at] != CharKind::unspaced;
  return target.kinds[at - 1] != CharKind::unspaced;
}

// The element beside a word that is not its own.
Change beside(const Keeper &keeper, uint32_t e, uint32_t word) {
  const auto links = keeper.evidence.sources_of(word);
  const Range range = keeper.target.words[word];
  const bool before =
      !links.empty() && keeper.source.words[static_cast<uint32_t>(links.front().source)].begin >=
                            keeper.element(e).source.end;
  const uint32_t at = before ? range.begin : range.end;
  Change change{{at, at}, before, e};
  change.text = keeper.source.view(keeper.element(e).source);
  change.length = static_cast<uint32_t>(change.text.size());
  if (needs_blank(keeper.target, at, before)) {
    change.text.insert(before ? change.text.end() : change.text.begin(), U' ');
    if (!before) change.block = 1;
  }
  return change;
}

// The element after one that has taken its place, too, with what is between them.
Change after(const Keeper &keeper, uint32_t e, const Change &last) {
  const Side &source = keeper.source;
  const Range between{keeper.element(last.element).source.end, keeper.element(e).source.begin};
  Change change{{last.range.end, last.range.end}, false, e};
  const bool marks = !between.empty() && !source.has_core(between);
  if (marks || between.empty())
    change.text = source.view({std::min(between.begin, between.end), between.end});
  if (!marks && between.begin != between.end) change.text = U" ";
  change.block = static_cast<uint32_t>(change.text.size());
  change.text += source.view(keeper.element(e).source);
  change.length = static_cast<uint32_t>(change.text.size()) - change.block;
  return change;
}

// Whether there is a code in a word or at its edges.
bool has_code(const std::vector<Code> &codes, Range word) {
  const auto code = std::ranges::lower_bound(codes, word.begin, {}, &Code::at);
  return code != codes.end() && code->at <= word.end;
}

// Takes a word away: with the blank before it, but without the marks after it.
Change removal(const Side &target, uint32_t w) {
  const Range word = target.words[w];
  Change change{{word.begin, target.core_end[word.end]}};
  if (change.range.empty()) change.range.end = word.end;
  if (word.begin > 0)
    change.range.begin--;
  else if (change.range.end == word.end && w + 1 < target.word_count())
    change.range.end = target.words[w + 1].begin;
  return change;
}

// Words of others between those of an element stay where they are if markup is at them. The element
// then takes the place of the longest row of words without such a one, and its other words go.
void part_from_others(Keeper &keeper, uint32_t e, const std::vector<Code> &codes, Range &range) {
  const Side &target = keeper.target;
  const uint32_t first = target.word_at[range.begin], last = target.word_at[range.end - 1];
  const auto stays = [&](uint32_t w) { return keeper.is_foreign(w, e); };
  bool has_markup = false;
  uint32_t best = first, best_end = first;
  for (uint32_t w = first, begin = first; w <= last; w++) {
    if (stays(w)) {
      has_markup = has_markup || has_code(codes, target.words[w]);
      begin = w + 1;
    } else if (w + 1 - begin > best_end - best) {
      best = begin, best_end = w + 1;
    }
  }
  if (!has_markup || best == best_end) return;
  for (uint32_t w = first; w <= last; w++)
    if ((w < best || w >= best_end) && target.words[w].begin >= range.begin &&
        target.words[w].end <= range.end && !stays(w) && !keeper.evidence.sources_of(w).empty())
      keeper.changes.push_back(removal(target, w));
  range = {std::max(range.begin, target.words[best].begin),
           std::min(range.end, target.words[best_end - 1].end)};
}

// Returns the end of what it has changed; the next element begins there at the earliest.
uint32_t keep_element(Keeper &keeper, uint32_t e, uint32_t limit, const std::vector<Code> &codes) {
  const Side &target = keeper.target;
  const Span &element = keeper.element(e);
  Range range = element.target;
  const std::u32string_view text = keeper.source.view(element.source);
  range.begin = std::max(range.begin, limit);
  if (range.empty() && limit > 0) {
    keeper.changes.push_back(after(keeper, e, keeper.changes.back()));
    return limit;
  }
  uint32_t first = target.word_at[std::min(element.target.begin, target.size() - 1)];
  first = std::min(first, target.word_count() - 1);
  uint32_t last = range.empty() ? first : target.word_at[range.end - 1];
  const bool same = !range.empty() && target.view(range) == text;
  if (!same) {
    while (!range.empty() && first < last && keeper.is_foreign(first, e))
      range.begin = std::max(range.begin, target.words[++first].begin);
    while (!range.empty() && first < last && keeper.is_foreign(last, e))
      range.end = std::min(range.end, target.words[--last].end);
  }
  if (range.empty() || (!same && first == last && keeper.is_foreign(first, e))) {
    keeper.changes.push_back(beside(keeper, e, first));
    return std::max(limit, keeper.changes.back().range.end);
  }
  const uint32_t end = range.end;
  if (!same) part_from_others(keeper, e, codes, range);
  first = target.word_at[range.begin], last = target.word_at[range.end - 1];
  Change change{range, false, e};
  change.text = text;
  change.length = static_cast<uint32_t>(text.size());
  for (uint32_t w = first + 1; !same && w < last; w++)
    if (keeper.is_foreign(w, e)) change.text.append(U" ").append(target.view(target.words[w]));
  keeper.changes.push_back(change);
  return std::max(limit, end);
}

// Words that translate nothing but an element that has its place elsewhere.
void drop_strays(Keeper &keeper, const std::vector<Code> &codes) {
  const Side &target = keeper.target;
  for (uint32_t w = 0; w < target.word_count(); w++) {
    const auto links = keeper.evidence.sources_of(w);
    if (links.empty() || !target.has_core(target.words[w])) continue;
    const uint32_t e = keeper.element_of[static_cast<uint32_t>(links.front().source)];
    if (e == no_span || keeper.element(e).fallback) continue;
    const Span &element = keeper.element(e);
    const bool is_own = std::ranges::all_of(links, [&](const Link &link) {
      const Range word = keeper.source.words[static_cast<uint32_t>(link.source)];
      return keeper.element_of[static_cast<uint32_t>(link.source)] == e &&
             keeper.source.next_core[word.begin] >= element.source.begin &&
             keeper.source.core_end[word.end] <= element.source.end;
    });
    const Range word = target.words[w];
    const bool elsewhere = word.end <= element.target.begin || word.begin >= element.target.end;
    if (!is_own || !elsewhere || has_code(codes, word)) continue;
    keeper.changes.push_back(removal(target, w));
  }
}

// Leaves out changes inside others.
void settle_changes(std::vector<Change> &changes) {
  std::ranges::stable_sort(changes, {}, [](const Change &change) { return change.range.begin; });
  uint32_t end = 0;
  std::erase_if(changes, [&](const Change &change) {
    if (change.element == no_span && change.range.begin < end) return true;
    end = std::max(end, change.range.end);
    return false;
  });
  int64_t moves = 0;
  for (Change &change : changes)
    change.moves = moves +=
        static_cast<int64_t>(change.text.size()) - (int64_t{change.range.end} - change.range.begin);
}

// Where a change is in the new text.
uint32_t new_begin(const std::vector<Change> &changes, size_t i) {
  return static_cast<uint32_t>(changes[i].range.begin + (i == 0 ? 0 : changes[i - 1].moves));
}

uint32_t moved(const std::vector<Change> &changes, uint32_t at) {
  auto after = static_cast<size_t>(
      std::ranges::upper_bound(changes, at, {}, [](const Change &c) { return c.range.begin; }) -
      changes.begin());
  for (; after > 0; after--) {
    const Change &change = changes[after - 1];
    const bool is_insertion = change.range.empty();
    if (is_insertion ? change.range.begin < at || change.before : change.range.end <= at)
      return static_cast<uint32_t>(at + change.moves);
    if (!is_insertion && change.range.begin < at)
      return new_begin(changes, after - 1) + change.block + change.length;
  }
  return at;
}

// Where each number is first among the codes.
using Places = std::unordered_map<int32_t, size_t>;

// The place of the code that ends what the code at `i` begins, or the number of codes.
size_t end_of(const std::vector<Code> &codes, const Places &places, size_t i, const Span &element) {
  const auto ends = [&](const Code &code) {
    return element.is_font() ? code.group == element.group
                             : !code.is_font() && code.number == element.closer;
  };
  if (!element.is_font()) {  // its closing anchor may be far away
    const auto closer = places.find(element.closer);
    if (closer != places.end() && closer->second > i && ends(codes[closer->second]))
      return closer->second;
  }
  const auto after = codes.begin() + static_cast<std::ptrdiff_t>(i) + 1;
  return static_cast<size_t>(std::find_if(after, codes.end(), ends) - codes.begin());
}

// Lets the spans that come first inside what becomes a kept element begin where it does, so that
// they go around it: they would lose all of their text.
void begin_with_elements(const Keeper &keeper, const Places &places, std::vector<Code> &codes) {
  std::vector<Range> elements;  // in their order
  for (const Change &change : keeper.changes)
    if (change.element != no_span && !change.range.empty()) elements.push_back(change.range);
  for (const Span &span : keeper.markup.spans) {
    const auto opener = places.find(span.number);
    if (span.kept || opener == places.end()) continue;
    const size_t place = opener->second;
    size_t &begin = codes[place].at;
    const auto next = std::ranges::lower_bound(elements, begin, {}, &Range::begin);
    if (next == elements.begin()) continue;
    const Range around = *(next - 1);
    if (begin >= around.end || (place > 0 && codes[place - 1].at > around.begin)) continue;
    const size_t closer = end_of(codes, places, place, span);
    if (closer < codes.size() && codes[closer].at <= around.end) begin = around.begin;
  }
}

// Moves the codes with the text; those of kept elements go around their blocks, and those of the
// elements around them take the blocks in.
void move_codes(const Keeper &keeper, std::vector<Code> &codes) {
  constexpr int deepest = 64;  // of the nesting that is looked at
  Places places;
  for (size_t i = 0; i < codes.size(); i++)
    if (codes[i].number != 0) places.emplace(codes[i].number, i);
  begin_with_elements(keeper, places, codes);
  for (Code &code : codes) code.at = moved(keeper.changes, static_cast<uint32_t>(code.at));
  std::vector<int> ranks(codes.size());  // among codes at one position
  for (size_t i = 0; i < keeper.changes.size(); i++) {
    const Change &change = keeper.changes[i];
    if (change.element == no_span) continue;
    const size_t begin = new_begin(keeper.changes, i) + change.block, end = begin + change.length;
    int depth = 0;
    for (uint32_t e = change.element; e != no_span && depth < deepest; depth++) {
      const Span &element = keeper.element(e);
      const bool is_kept = e == change.element;
      e = element.parent;
      const auto opener = places.find(element.number);
      if (opener == places.end()) continue;
      const size_t closer = end_of(codes, places, opener->second, element);
      if (closer == codes.size()) continue;
      size_t &from = codes[opener->second].at, &to = codes[closer].at;
      const Range own = keeper.element(change.element).source;
      const bool has_nothing_else = !keeper.source.has_core({element.source.begin, own.begin}) &&
                                    !keeper.source.has_core({own.end, element.source.end});
      from = has_nothing_else ? begin : std::min(from, begin);
      to = has_nothing_else ? end : std::max(to, end);
      if (is_kept) ranks[opener->second] = 1, ranks[closer] = -1;
    }
  }
  std::vector<size_t> order(codes.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::ranges::stable_sort(order, [&](size_t one, size_t other) {
    return codes[one].at != codes[other].at ? codes[one].at < codes[other].at
                                            : ranks[one] < ranks[other];
  });
  std::vector<Code> sorted;
  sorted.reserve(codes.size());
  for (const size_t i : order) sorted.push_back(codes[i]);
  codes = std::move(sorted);
}

std::u32string changed_text(const Keeper &keeper) {
  std::u32string text;
  uint32_t position = 0;
  for (const Change &change : keeper.changes) {
    if (change.range.begin > position) text += keeper.target.view({position, change.range.begin});
    text += change.text;
    position = std::max(position, change.range.end);
  }
  return text.append(keeper.target.view({position, keeper.target.size()}));
}

}  // namespace

void put_kept_back(const Side &source, const Evidence &evidence, const Markup &markup, Side &target,
                   std::vector<Code> &codes) {
  Keeper keeper{source, target, evidence, markup, {}};
  find_elements(keeper);
  std::vector<uint32_t> kept;
  for (uint32_t e = 0; e < markup.spans.size(); e++)
    if (markup.spans[e].kept) kept.push_back(e);
  std::ranges::stable_sort(kept, {}, [&](uint32_t e) { return markup.spans[e].target.begin; });
  uint32_t limit = 0;
  for (const uint32_t e : kept) limit = keep_element(keeper, e, limit, codes);
  drop_strays(keeper, codes);
  settle_changes(keeper.changes);
  move_codes(keeper, codes);
  target.text = changed_text(keeper);
}

}  // namespace klib::programs
