// Spans form a tree in the source. From its leaves to its root, the spans in one span are separated
// and then included in that span; so every pair comes out well nested.
#include "programs/carry/order.h"

#include <algorithm>
#include <tuple>

namespace klib::programs {
namespace {

constexpr size_t looked_back = 16;  // spans from which one is separated

struct Ordering {
  const Side &source, &target;
  Markup &markup;
  std::vector<uint32_t> first_child{}, next_child{}, order{};

  Span &span(uint32_t e) const { return markup.spans[e]; }
};

bool overlap_in_source(const Span &a, const Span &b) {
  return a.source.begin < b.source.end && b.source.begin < a.source.end;
}

// Whether one must not be inside the other: a link in a link, a font in one of its group.
bool exclude_each_other(const Span &a, const Span &b) { return a.group == b.group; }

// The range without blanks at its edges and without marks at the edge that has been cut.
Range trimmed(const Side &side, Range range, bool at_begin) {
  if (at_begin)
    range.begin = std::min(side.next_core[range.begin], range.end);
  else
    range.end = std::max(side.core_end[range.end], range.begin);
  return range;
}

void drop(Span &span) {
  span.dropped = true;
  span.target.end = span.target.begin;
}

// Two spans with the same place, though both have a text of their own.
void share_place(Ordering &ordering, Span &first, Span &second) {
  if (!exclude_each_other(first, second)) return;
  const Side &target = ordering.target;
  const Range range = first.target;
  const uint32_t begin_word = target.word_at[range.begin], end_word = target.word_at[range.end - 1];
  if (begin_word < end_word) {
    const uint32_t cut = target.words[begin_word + (end_word - begin_word + 1) / 2].begin;
    const Range left = trimmed(target, {range.begin, cut}, false);
    const Range right = trimmed(target, {cut, range.end}, true);
    if (!left.empty() && !right.empty()) {
      first.target = left, second.target = right;
      return;
    }
  }
  if (second.is_font()) drop(second);
}

// Separates two neighbours, of which `first` begins earlier, or together and ends later.
void part(Ordering &ordering, Span &first, Span &second) {
  if (first.target.end <= second.target.begin || overlap_in_source(first, second)) return;
  if (first.target == second.target) return share_place(ordering, first, second);
  const Side &target = ordering.target;
  Range left{first.target.begin, second.target.begin}, right{second.target.end, first.target.end};
  if (second.target.end >= first.target.end) right = {first.target.end, first.target.end};
  left = trimmed(target, left, false);
  right = trimmed(target, right, true);
  if (right.end - right.begin > left.end - left.begin)
    first.target = right;
  else if (!left.empty())
    first.target = left;
  else if (second.target.end > first.target.end) {
    const Range rest = trimmed(target, {first.target.end, second.target.end}, true);
    if (!rest.empty()) second.target = rest;
  }
}

// Separates the spans of one parent, of which `first` is the first. Where several share a place,
// the next one must be separated from each of them.
void part_children(Ordering &ordering, uint32_t first) {
  if (first == no_span || ordering.next_child[first] == no_span) return;
  std::vector<uint32_t> &children = ordering.order;
  children.clear();
  for (uint32_t c = first; c != no_span; c = ordering.next_child[c])
    if (!ordering.span(c).dropped) children.push_back(c);
  const auto is_before = [&](uint32_t a, uint32_t b) {
    const Range &one = ordering.span(a).target, &other = ordering.span(b).target;
    if (one.begin != other.begin) return one.begin < other.begin;
    if (one.end != other.end) return one.end > other.end;
    return a < b;
  };
  std::sort(children.begin(), children.end(), is_before);
  for (size_t i = 1; i < children.size(); i++) {
    const size_t earliest = i - std::min(i, looked_back);
    for (size_t k = i; k-- > earliest;) {
      const auto [one, other] = std::minmax(children[k], children[i], is_before);
      part(ordering, ordering.span(one), ordering.span(other));
    }
    std::sort(children.begin() + static_cast<std::ptrdiff_t>(earliest),
              children.begin() + static_cast<std::ptrdiff_t>(i + 1), is_before);
  }
}

void take_in(Span &parent, const Span &child) {
  if (child.dropped) return;
  if (parent.dropped) {
    parent.target = child.target;
    parent.dropped = false;
    return;
  }
  parent.target.begin = std::min(parent.target.begin, child.target.begin);
  parent.target.end = std::max(parent.target.end, child.target.end);
}

// What separating has taken from a span its children lose, too.
void keep_inside(const Span &parent, Span &child) {
  if (child.dropped) return;
  if (parent.dropped) {
    if (child.is_font()) drop(child);
    return;
  }
  const Range range{std::max(child.target.begin, parent.target.begin),
                    std::min(child.target.end, parent.target.end)};
  child.target = range.empty() ? parent.target : range;
}

void settle_spans(Ordering &ordering) {
  std::vector<Span> &spans = ordering.markup.spans;
  const auto count = static_cast<uint32_t>(spans.size());
  std::vector<uint32_t> &first_child = ordering.first_child, &next = ordering.next_child;
  first_child.assign(count + 1, no_span);  // the last one: of the sentence
  next.assign(count, no_span);
  for (uint32_t e = count; e-- > 0;) {
    const bool outermost = spans[e].parent == no_span;
    if (!outermost) take_in(spans[spans[e].parent], spans[e]);
    uint32_t &first = first_child[outermost ? count : spans[e].parent];
    next[e] = first;
    first = e;
  }
  part_children(ordering, first_child[count]);
  for (uint32_t e = 0; e < count; e++) {
    for (uint32_t c = first_child[e]; c != no_span; c = next[c]) keep_inside(spans[e], spans[c]);
    part_children(ordering, first_child[e]);
  }
}

// A font that has its whole place in common with one of its group would not be seen, unless they
// are nested in the source, too.
void drop_hidden_fonts(Ordering &ordering) {
  std::vector<uint32_t> &fonts = ordering.order;
  fonts.clear();
  for (uint32_t e = 0; e < ordering.markup.spans.size(); e++)
    if (ordering.span(e).is_font() && !ordering.span(e).dropped) fonts.push_back(e);
  const auto place_of = [&](uint32_t e) {
    const Span &span = ordering.span(e);
    return std::tuple(span.group, span.target.begin, span.target.end);
  };
  std::ranges::stable_sort(fonts, {}, place_of);
  for (size_t i = 1, seen = 0; i < fonts.size(); i++) {
    if (place_of(fonts[i]) != place_of(fonts[seen]))
      seen = i;
    else if (!overlap_in_source(ordering.span(fonts[seen]), ordering.span(fonts[i])))
      drop(ordering.span(fonts[i]));
  }
}

// Points inside a span stay inside it.
void keep_points_inside(Markup &markup) {
  for (Point &point : markup.points) {
    uint32_t parent = point.parent;
    while (parent != no_span && markup.spans[parent].dropped) parent = markup.spans[parent].parent;
    point.parent = parent;
    if (parent == no_span) continue;
    const Range &range = markup.spans[parent].target;
    point.target = std::clamp(point.target, range.begin, range.end);
  }
}

// An element of blanks has the blank in it that is where it is.
void take_blanks_in(const Side &target, Markup &markup) {
  for (Point &point : markup.points) {
    if (point.blank != Point::ends_blank) continue;
    const uint32_t end =
        point.parent == no_span ? target.size() : markup.spans[point.parent].target.end;
    if (point.target < end && target.is_blank(point.target)) point.target++;
  }
}

// Halves of spans come in the order of the page, and at the edge of an outermost span that
// they would split.
void settle_halves(Ordering &ordering) {
  Markup &markup = ordering.markup;
  std::vector<uint32_t> &outer = ordering.order;
  outer.clear();
  for (uint32_t e = 0; e < markup.spans.size(); e++)
    if (markup.spans[e].parent == no_span && !markup.spans[e].dropped) outer.push_back(e);
  std::sort(outer.begin(), outer.end(), [&](uint32_t a, uint32_t b) {
    return markup.spans[a].target.begin < markup.spans[b].target.begin;
  });
  uint32_t least = 0;
  for (Point &point : markup.points) {
    if (point.role == Point::single || point.parent != no_span) continue;
    point.target = std::max(point.target, least);
    const auto next = std::partition_point(outer.begin(), outer.end(), [&](uint32_t e) {
      return markup.spans[e].target.begin < point.target;
    });
    if (next != outer.begin()) {
      const Span &span = markup.spans[*(next - 1)];
      if (point.target < span.target.end) {
        const bool to_begin = point.source <= span.source.begin && span.target.begin >= least;
        point.target = to_begin ? span.target.begin : span.target.end;
      }
    }
    least = point.target;
  }
}

// Writes codes from the beginning of the text to its end.
struct Writer {
  const Markup &markup;
  std::vector<Code> &codes;
  std::vector<uint32_t> open{};                    // from the outermost to the innermost
  std::vector<int32_t> fonts[font_group_count]{};  // the open ones of each group
  // Points at the edges of the span that they are in, by span: the first, and the next.
  std::vector<uint32_t> at_begin{}, at_end{}, next{};
  bool crossing = false;

  void write_points(uint32_t at, uint32_t point) {
    for (; point != no_span; point = next[point])
      codes.push_back({at, markup.points[point].number});
  }
};

void open_span(Writer &writer, uint32_t e) {
  const Span &span = writer.markup.spans[e];
  const uint32_t at = span.target.begin;
  if (!writer.open.empty())
    writer.crossing |= writer.markup.spans[writer.open.back()].target.end < span.target.end;
  writer.codes.push_back({at, span.number, span.group});
  writer.open.push_back(e);
  if (span.is_font()) writer.fonts[span.group].push_back(span.number);
  writer.write_points(at, writer.at_begin[e]);
}

// Closes a font; the result is the one of its group that is around it, or 0.
int32_t close_font(Writer &writer, const Span &font) {
  std::vector<int32_t> &fonts = writer.fonts[font.group];
  fonts.erase(std::find(fonts.rbegin(), fonts.rend(), font.number).base() - 1);
  return fonts.empty() ? 0 : fonts.back();
}

void close_span(Writer &writer, size_t place) {
  const uint32_t e = writer.open[place];
  const Span &span = writer.markup.spans[e];
  const uint32_t at = span.target.end;
  writer.write_points(at, writer.at_end[e]);
  writer.open.erase(writer.open.begin() + static_cast<std::ptrdiff_t>(place));
  if (span.is_font())
    writer.codes.push_back({at, close_font(writer, span), span.group});
  else
    writer.codes.push_back({at, span.closer});
}

// The place of the open span that ends first, the innermost of those.
size_t first_to_end(const Writer &writer) {
  size_t first = writer.open.size() - 1;
  if (!writer.crossing) return first;
  const auto end_of = [&](size_t place) {
    return writer.markup.spans[writer.open[place]].target.end;
  };
  for (size_t place = first; place-- > 0;)
    if (end_of(place) < end_of(first)) first = place;
  return first;
}

void close_until(Writer &writer, uint32_t at) {
  while (!writer.open.empty()) {
    const size_t place = first_to_end(writer);
    if (writer.markup.spans[writer.open[place]].target.end > at) return;
    close_span(writer, place);
  }
}

// Sorts the points into those at the edges of their span, and the others.
void sort_points(Writer &writer, std::vector<uint32_t> &others) {
  const Markup &markup = writer.markup;
  writer.at_begin.assign(markup.spans.size(), no_span);
  writer.at_end.assign(markup.spans.size(), no_span);
  writer.next.assign(markup.points.size(), no_span);
  for (auto p = static_cast<uint32_t>(markup.points.size()); p-- > 0;) {
    const Point &point = markup.points[p];
    uint32_t *list = nullptr;
    if (point.parent != no_span) {
      const Range &range = markup.spans[point.parent].target;
      if (point.target == range.end)
        list = &writer.at_end[point.parent];
      else if (point.target == range.begin)
        list = &writer.at_begin[point.parent];
    }
    if (!list) {
      others.push_back(p);
      continue;
    }
    writer.next[p] = *list;
    *list = p;
  }
  std::reverse(others.begin(), others.end());
  std::stable_sort(others.begin(), others.end(), [&](uint32_t a, uint32_t b) {
    return markup.points[a].target < markup.points[b].target;
  });
}

// Spans from the outside to the inside.
void sort_spans(const Markup &markup, std::vector<uint32_t> &order) {
  for (uint32_t e = 0; e < markup.spans.size(); e++)
    if (!markup.spans[e].dropped) order.push_back(e);
  std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
    const Range &one = markup.spans[a].target, &other = markup.spans[b].target;
    return one.begin != other.begin ? one.begin < other.begin : one.end > other.end;
  });
}

}  // namespace

void settle_order(const Side &source, const Side &target, Markup &markup) {
  Ordering ordering{source, target, markup};
  settle_spans(ordering);
  drop_hidden_fonts(ordering);
  keep_points_inside(markup);
  settle_halves(ordering);
  take_blanks_in(target, markup);
}

void write_codes(const Markup &markup, std::vector<Code> &codes) {
  codes.clear();
  Writer writer{markup, codes};
  std::vector<uint32_t> points, spans;
  sort_points(writer, points);
  sort_spans(markup, spans);
  auto point = points.begin(), span = spans.begin();
  while (point != points.end() || span != spans.end()) {
    const uint32_t point_at = point != points.end() ? markup.points[*point].target : no_position;
    const uint32_t begin = span != spans.end() ? markup.spans[*span].target.begin : no_position;
    const uint32_t at = std::min(point_at, begin);
    close_until(writer, at);
    if (point_at <= begin)
      codes.push_back({at, markup.points[*point++].number});
    else
      open_span(writer, *span++);
  }
  close_until(writer, no_position);
}

}  // namespace klib::programs
