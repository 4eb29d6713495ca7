// A picture between two words has a blank on either side, but the words of the translation have one
// between them. The points of one place share it: what is missing is added before the first of
// them, after the last, and between two that are apart in the source.
#include "programs/carry/blanks.h"

#include <algorithm>
#include <unordered_map>

namespace klib::programs {
namespace {

struct Blanks {
  const Side &source;
  std::u32string_view text;
  std::unordered_map<int32_t, const Point *> points;  // those that are whole, by their numbers
  bool at_edges = false;                              // of the text: blanks separate its words

  const Point *point_of(const Code &code) const {
    if (code.is_font()) return nullptr;
    const auto point = points.find(code.number);
    return point == points.end() ? nullptr : point->second;
  }
  bool is_before(const Point &point) const {
    return point.source > 0 && source.text[point.source - 1] == ' ';
  }
  bool is_after(const Point &point) const {
    return point.source < source.size() && source.text[point.source] == ' ';
  }
};

bool parts_words_by_blanks(std::u32string_view text) {
  return text.find(U' ') != text.npos ||
         std::ranges::none_of(text, [](char32_t c) { return kind_of(c) == CharKind::unspaced; });
}

// A blank to add before character `at` of the text, and before code `code`.
struct Addition {
  size_t at, code;
};

// Looks at the codes at one place, from `begin` to before `end`.
void add_at_place(const Blanks &blanks, const std::vector<Code> &codes, size_t begin, size_t end,
                  std::vector<Addition> &additions) {
  const std::u32string_view text = blanks.text;
  const size_t at = codes[begin].at;
  const bool begins = at == 0, ends = at == text.size();
  const bool has_before = !begins && text[at - 1] == ' ', has_after = !ends && text[at] == ' ';
  const bool is_edge = (begins || ends) && blanks.at_edges;
  if (!has_before && !has_after && !is_edge) return;
  const Point *last = nullptr;
  size_t after_last = 0;
  for (size_t i = begin; i < end; i++) {
    const Point *const point = blanks.point_of(codes[i]);
    if (!point) continue;
    const bool is_missing =
        last ? last->source != point->source && blanks.is_after(*last) : !begins && !has_before;
    if (is_missing && blanks.is_before(*point)) additions.push_back({at, i});
    last = point;
    after_last = i + 1;
  }
  if (last && !ends && !has_after && blanks.is_after(*last)) additions.push_back({at, after_last});
}

}  // namespace

void put_blanks_around(const Side &source, const std::vector<Point> &points, std::u32string &text,
                       std::vector<Code> &codes) {
  Blanks blanks{source, text, {}, parts_words_by_blanks(text)};
  for (const Point &point : points)
    if (point.role == Point::single) blanks.points.emplace(point.number, &point);
  std::vector<Addition> additions;
  for (size_t begin = 0, end = 0; begin < codes.size(); begin = end) {
    while (end < codes.size() && codes[end].at == codes[begin].at) end++;
    add_at_place(blanks, codes, begin, end, additions);
  }
  if (additions.empty()) return;
  std::u32string wider;
  size_t copied = 0, added = 0;
  for (size_t i = 0; i <= codes.size(); i++) {
    for (; added < additions.size() && additions[added].code == i; added++) {
      wider.append(text, copied, additions[added].at - copied) += U' ';
      copied = additions[added].at;
    }
    if (i < codes.size()) codes[i].at += added;
  }
  text = wider.append(text, copied);
}

}  // namespace klib::programs
