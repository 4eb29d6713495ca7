// One walk along the codes with a stack of what is open.
#include "programs/carry/spans.h"

#include <algorithm>

#include "programs/common/program.h"

namespace klib::programs {
namespace {

constexpr uint32_t not_closed = no_position;

struct Reader {
  const SentenceFile &file;
  const Side &source;
  AnchorKinds *kinds;
  Markup &markup;
  uint32_t selected[font_group_count];  // the span of each group's font

  std::vector<Span> &spans() const { return markup.spans; }
};

uint32_t innermost(const Reader &reader) {
  return reader.markup.open.empty() ? no_span : reader.markup.open.back();
}

uint32_t open_span(Reader &reader, uint32_t at, int32_t number, int group) {
  const auto span = static_cast<uint32_t>(reader.spans().size());
  reader.spans().push_back({{at, not_closed}, number, 0, group, innermost(reader)});
  reader.markup.open.push_back(span);
  return span;
}

// Spans that cross this one are no longer inside it.
void close_span(Reader &reader, uint32_t closed, uint32_t at) {
  std::vector<uint32_t> &open = reader.markup.open;
  Span &span = reader.spans()[closed];
  span.source.end = at;
  const auto place = std::find(open.rbegin(), open.rend(), closed).base() - 1;
  for (auto inner = place + 1; inner != open.end(); ++inner)
    if (reader.spans()[*inner].parent == closed) reader.spans()[*inner].parent = span.parent;
  open.erase(place);
}

void add_point(Reader &reader, const Code &code, Point::Role role) {
  reader.markup.points.push_back(
      {static_cast<uint32_t>(code.at), code.number, role, innermost(reader)});
}

AnchorKinds::Entry kind_of_anchor(Reader &reader, const Code &code) {
  const AnchorKinds::Entry entry = reader.kinds->find(code.number);
  if ((entry.kind == Anchor::font) != code.is_font())
    fail({reader.file.name(), reader.file.line(), reader.file.number()}, "wrong-anchor",
         {{"anchor", code.number}}, "anchor %d is %s", static_cast<int>(code.number),
         code.is_font() ? "no font" : "a font");
  return entry;
}

void take_font(Reader &reader, const Code &code) {
  const auto at = static_cast<uint32_t>(code.at);
  uint32_t &selected = reader.selected[code.group];
  if (code.number != 0 && reader.kinds) kind_of_anchor(reader, code);
  if (selected != no_span && reader.spans()[selected].number == code.number) return;
  if (selected != no_span) close_span(reader, selected, at);
  selected = code.number == 0 ? no_span : open_span(reader, at, code.number, code.group);
}

void take_anchor(Reader &reader, const Code &code) {
  const auto at = static_cast<uint32_t>(code.at);
  const AnchorKinds::Entry entry =
      reader.kinds ? kind_of_anchor(reader, code) : AnchorKinds::Entry{Anchor::single, 0};
  auto &pairs = reader.markup.pairs;
  switch (entry.kind) {
    case Anchor::open:
    case Anchor::kept:
      pairs[code.number] = open_span(reader, at, code.number, -1);
      break;
    case Anchor::close:
    case Anchor::kept_end:
      if (const auto pair = pairs.find(entry.partner); pair != pairs.end()) {
        reader.spans()[pair->second].closer = code.number;
        reader.spans()[pair->second].kept = entry.kind == Anchor::kept_end;
        close_span(reader, pair->second, at);
        pairs.erase(pair);
      } else {
        add_point(reader, code, Point::single);
      }
      break;
    case Anchor::opens_out:
      add_point(reader, code, Point::opens_out);
      break;
    case Anchor::closes_from:
      add_point(reader, code, Point::closes_from);
      break;
    default:
      add_point(reader, code, Point::single);
  }
}

// The points of a span without text stay together, with what is between them.
void join_tags_of_blanks(std::vector<Point> &points) {
  size_t open = 0;
  for (Point &point : points) {
    if (point.blank == Point::ends_blank && open > 0) open--;
    const bool begins = point.blank == Point::begins_blank;
    if (open > 0 && point.blank != Point::ends_blank) point.blank = Point::inside_blank;
    if (begins) open++;
  }
}

// Takes blanks off the edges; a span without text is none, but its anchors are points.
void take_empty_spans_out(Reader &reader) {
  Markup &markup = reader.markup;
  std::vector<uint32_t> renumbered(markup.spans.size());
  std::vector<Point> points;
  uint32_t kept = 0;
  for (uint32_t e = 0; e < markup.spans.size(); e++) {
    Span span = markup.spans[e];
    Range &range = span.source;
    const bool unclosed = range.end == not_closed;
    const uint32_t end = unclosed ? reader.source.size() : range.end, begin = range.begin;
    if (unclosed) range.end = end;
    while (!range.empty() && reader.source.is_blank(range.begin)) range.begin++;
    while (!range.empty() && reader.source.is_blank(range.end - 1)) range.end--;
    if (span.parent != no_span) span.parent = renumbered[span.parent];
    renumbered[e] = span.parent;
    if (!range.empty() && (span.is_font() || !unclosed)) {
      renumbered[e] = kept;
      markup.spans[kept++] = span;
    } else if (span.is_font()) {
      markup.lost_fonts++;
    } else {
      points.push_back({begin, span.number, Point::single, span.parent});
      if (unclosed) continue;
      points.back().blank = Point::begins_blank;
      points.push_back({end, span.closer, Point::single, span.parent});
      points.back().blank = Point::ends_blank;
    }
  }
  markup.spans.resize(kept);
  for (Point &point : markup.points)
    if (point.parent != no_span) point.parent = renumbered[point.parent];
  if (points.empty()) return;
  markup.points.insert(markup.points.end(), points.begin(), points.end());
  std::stable_sort(markup.points.begin(), markup.points.end(), [](const Point &a, const Point &b) {
    return a.source != b.source ? a.source < b.source : a.number < b.number;
  });
  join_tags_of_blanks(markup.points);
}

}  // namespace

void read_markup(const SentenceFile &file, const Sentence &sentence, const Side &source,
                 AnchorKinds *kinds, Markup &markup) {
  markup.spans.clear();
  markup.points.clear();
  markup.pairs.clear();
  markup.open.clear();
  markup.lost_fonts = 0;
  Reader reader{file, source, kinds, markup, {}};
  std::fill(std::begin(reader.selected), std::end(reader.selected), no_span);
  for (const Code &code : sentence.codes)
    if (code.is_font())
      take_font(reader, code);
    else
      take_anchor(reader, code);
  take_empty_spans_out(reader);
}

}  // namespace klib::programs
