// Everything here is one walk through the text, so that placing a code is a few looks into arrays.
#include "programs/carry/side.h"

#include <algorithm>

namespace klib::programs {
namespace {

constexpr int quotes = 0, brackets = 1;
constexpr uint32_t most_marks = 16;  // around a word that are looked at

// Quotation marks that come in pairs; the single ones may be apostrophes.
bool is_quote(char32_t c) {
  if (c == '\'' || c == '`' || (c >= U'\u2018' && c <= U'\u201B') || c == U'\u2039' ||
      c == U'\u203A')
    return false;
  return fold(c) == '"';
}

// Languages differ in which of these open and which close.
bool closes(char32_t open, char32_t c) {
  switch (open) {
    case U'\u201E':
      return c == U'\u201C' || c == U'\u201D';
    case U'\u201C':
      return c == U'\u201D';
    case U'\u00AB':
      return c == U'\u00BB';
    case U'\u00BB':
      return c == U'\u00AB' || c == U'\u00BB';
    case U'\u300C':
      return c == U'\u300D';
    case U'\u300E':
      return c == U'\u300F';
    default:
      return c == open;
  }
}

void find_partners(Side &side, bool has_marks) {
  side.partners.assign(side.size() + 1, no_position);
  for (const int kind : {quotes, brackets}) side.openers[kind].clear(), side.closers[kind].clear();
  if (!has_marks) return;
  uint32_t open_quote = no_position;
  std::vector<uint32_t> open_brackets;
  const auto join = [&](uint32_t open, uint32_t close, int kind) {
    side.partners[open] = close;
    side.partners[close] = open;
    side.openers[kind].push_back(open);
    side.closers[kind].push_back(close);
  };
  for (uint32_t i = 0; i < side.size(); i++) {
    if (side.kinds[i] != CharKind::mark) continue;
    const char32_t c = side.text[i];
    if (is_quote(c)) {
      const bool ends = open_quote != no_position && closes(side.text[open_quote], c);
      if (ends) join(open_quote, i, quotes);
      open_quote = ends ? no_position : i;
    } else if (const char32_t shape = fold(c); shape == '(') {
      open_brackets.push_back(i);
    } else if (shape == ')' && !open_brackets.empty()) {
      join(open_brackets.back(), i, brackets);
      open_brackets.pop_back();
    }
  }
  std::sort(side.openers[brackets].begin(), side.openers[brackets].end());
}

bool ends_sentence(char32_t c) {
  return c == '.' || c == '!' || c == '?' || c == U'\u3002' || c == U'\uFF01' || c == U'\uFF1F';
}

void find_ends(Side &side) {
  side.ends_before.resize(side.words.size() + 1);
  uint32_t count = 0;
  for (size_t w = 0; w < side.words.size(); w++) {
    side.ends_before[w] = count;
    count += ends_sentence(side.text[side.words[w].end - 1]);
  }
  side.ends_before.back() = count;
}

bool is_around_words(char32_t c) {
  const char32_t shape = fold(c);
  return shape == '"' || shape == '(' || shape == ')' || shape == ',' || shape == '.';
}

}  // namespace

void split_at_blanks(Side &side) {
  side.words.clear();
  const std::u32string_view text(side.text);
  for (size_t begin = 0;;) {
    while (begin < text.size() && text[begin] == ' ') begin++;
    if (begin == text.size()) return;
    const size_t end = std::min(text.find(U' ', begin), text.size());
    side.words.push_back({static_cast<uint32_t>(begin), static_cast<uint32_t>(end)});
    begin = end;
  }
}

void survey(Side &side) {
  const uint32_t size = side.size();
  side.kinds.resize(size);
  side.word_at.resize(size + 1);
  side.next_core.resize(size + 1);
  side.core_end.resize(size + 1);
  const CharKind *const common = kinds_of_common_characters();
  const char32_t *const text = side.text.data();
  CharKind *const kinds = side.kinds.data();
  uint32_t *const core_ends = side.core_end.data(), *const next_cores = side.next_core.data();
  bool has_marks = false;
  uint32_t core_end = 0, next_core = size;
  for (uint32_t i = 0; i < size; i++) {
    const CharKind kind = text[i] < common_characters ? common[text[i]] : kind_of(text[i]);
    kinds[i] = kind;
    has_marks |= kind == CharKind::mark;
    core_ends[i] = core_end;
    core_end = is_core(kind) ? i + 1 : core_end;
  }
  core_ends[size] = core_end;
  next_cores[size] = next_core;
  for (uint32_t i = size; i-- > 0;) {
    const uint32_t mask = 0 - uint32_t{is_core(kinds[i])};  // no branch depends on the text
    next_cores[i] = next_core = (i & mask) | (next_core & ~mask);
  }
  uint32_t *place = side.word_at.data();
  for (uint32_t w = 0; w < side.word_count(); w++)
    place = std::fill_n(place, side.word_at.data() + side.words[w].end - place, w);
  std::fill(place, side.word_at.data() + size + 1, side.word_count());
  find_partners(side, has_marks);
  find_ends(side);
}

Range key_of(const Side &side, Range range) {
  Range key = range;
  const auto is_around = [&](uint32_t i) {
    return side.is_blank(i) || (side.kinds[i] == CharKind::mark && is_around_words(side.text[i]));
  };
  while (key.begin < key.end && is_around(key.begin)) key.begin++;
  while (key.begin < key.end && is_around(key.end - 1)) key.end--;
  return key.empty() ? range : key;
}

uint32_t take_marks_before(const Side &side, uint32_t position, const Side &from, Range marks) {
  marks.begin = std::max(marks.begin, marks.end - std::min(marks.end, most_marks));
  for (uint32_t i = marks.end; i-- > marks.begin;) {
    if (from.is_blank(i)) continue;
    uint32_t before = position;
    while (before > 0 && side.is_blank(before - 1)) before--;
    if (before == 0 || side.is_core(before - 1)) break;
    if (fold(side.text[before - 1]) == fold(from.text[i])) position = before - 1;
  }
  return position;
}

uint32_t take_marks_after(const Side &side, uint32_t position, const Side &from, Range marks) {
  marks.end = std::min(marks.end, marks.begin + most_marks);
  for (uint32_t i = marks.begin; i < marks.end; i++) {
    if (from.is_blank(i)) continue;
    uint32_t next = position;
    while (next < side.size() && side.is_blank(next)) next++;
    if (next == side.size() || side.is_core(next)) break;
    if (fold(side.text[next]) == fold(from.text[i])) position = next + 1;
  }
  return position;
}

}  // namespace klib::programs
