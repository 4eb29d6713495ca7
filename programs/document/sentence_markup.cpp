// The order of anchors in a sentence that has been through a translation.
#include "programs/document/sentence_markup.h"

#include <algorithm>

#include "programs/common/program.h"

namespace klib::programs {
namespace {

struct Reading {
  const SentenceFile &file;
  AnchorFile &anchors;
  SentenceMarkup &markup;
};

int as_int(int32_t number) { return static_cast<int>(number); }

// The anchor of a code, read from the file when the sentence meets it for the first time.
const Anchor &read_once(Reading &reading, const Piece &piece) {
  const SentenceFile &file = reading.file;
  const auto found = reading.markup.anchors.find(piece.number);
  if (found != reading.markup.anchors.end()) return found->second;
  if (!reading.anchors.has(piece.number))
    fail(file.name(), file.line(), "sentence %d: there is no anchor %d", as_int(file.number()),
         as_int(piece.number));
  if (reading.anchors.times_read(piece.number) > 0)
    report(file.name(), file.line(), "sentence %d: anchor %d stands in an earlier place, too",
           as_int(file.number()), as_int(piece.number));
  Anchor anchor = reading.anchors.read(piece.number);
  if ((anchor.kind == Anchor::font) != (piece.kind == Piece::font))
    fail(file.name(), file.line(), "sentence %d: anchor %d is %s", as_int(file.number()),
         as_int(piece.number), piece.kind == Piece::font ? "no font" : "a font");
  return reading.markup.anchors.emplace(piece.number, std::move(anchor)).first->second;
}

void read_parts(Reading &reading, const std::vector<Piece> &pieces) {
  const SentenceFile &file = reading.file;
  std::unordered_map<int32_t, bool> seen;
  for (const Piece &piece : pieces) {
    Part part{piece};
    if (piece.kind == Piece::anchor && !seen.emplace(piece.number, true).second) {
      report(file.name(), file.line(),
             "sentence %d: anchor %d stands there twice; the second is left out",
             as_int(file.number()), as_int(piece.number));
      continue;
    }
    if (piece.kind == Piece::anchor || (piece.kind == Piece::font && piece.number > 0))
      part.anchor = &read_once(reading, piece);
    reading.markup.parts.push_back(part);
  }
}

bool is_kind(const Part &part, Anchor::Kind kind) {
  return part.piece.kind == Piece::anchor && part.anchor->kind == kind;
}

// Leaves out closing tags whose partner is not in the sentence, and notes the others.
void match_closers(Reading &reading) {
  const SentenceFile &file = reading.file;
  SentenceMarkup &markup = reading.markup;
  std::erase_if(markup.parts, [&](const Part &part) {
    if (!is_kind(part, Anchor::close)) return false;
    const int32_t partner = part.anchor->partner;
    const auto found = markup.anchors.find(partner);
    if (found != markup.anchors.end() && found->second.kind == Anchor::open &&
        markup.closers.emplace(partner, part.piece.number).second)
      return false;
    report(file.name(), file.line(),
           "sentence %d: anchor %d closes anchor %d, which is not there, and is left out",
           as_int(file.number()), as_int(part.piece.number), as_int(partner));
    return true;
  });
  for (const Part &part : markup.parts)
    if (is_kind(part, Anchor::open) && !markup.closers.contains(part.piece.number))
      report(file.name(), file.line(),
             "sentence %d: anchor %d is not closed; it is closed at the end of the sentence",
             as_int(file.number()), as_int(part.piece.number));
}

// A part that moves before the part at `place`: closing tags first, the innermost of them first,
// then opening tags, the outermost first.
struct Move {
  size_t place;
  bool opens;
  int32_t number;  // of the opening tag
  Part part;

  bool operator<(const Move &other) const {
    if (place != other.place) return place < other.place;
    if (opens != other.opens) return !opens;
    return opens ? number < other.number : number > other.number;
  }
};

// Where the word of each part begins (behind its first font codes) and ends.
struct Words {
  std::vector<size_t> begin, end;

  explicit Words(const std::vector<Part> &parts) : begin(parts.size()), end(parts.size()) {
    for (size_t i = 0, first = 0; i <= parts.size(); i++) {
      if (i < parts.size() && parts[i].piece.kind != Piece::blank) continue;
      size_t start = first;
      while (start < i && parts[start].piece.kind == Piece::font) start++;
      std::fill(begin.begin() + static_cast<std::ptrdiff_t>(first),
                begin.begin() + static_cast<std::ptrdiff_t>(i), start);
      std::fill(end.begin() + static_cast<std::ptrdiff_t>(first),
                end.begin() + static_cast<std::ptrdiff_t>(i), i);
      first = i + 1;
    }
  }
};

// Puts every pair whose closing tag came first around the words of both tags.
void turn_inverted_pairs(Reading &reading) {
  std::vector<Part> &parts = reading.markup.parts;
  std::unordered_map<int32_t, size_t> closed_at;    // by the number of the opening tag
  std::vector<std::pair<size_t, size_t>> inverted;  // places of opening and closing tag
  for (size_t i = 0; i < parts.size(); i++) {
    if (is_kind(parts[i], Anchor::close)) closed_at[parts[i].anchor->partner] = i;
    if (!is_kind(parts[i], Anchor::open)) continue;
    const auto closed = closed_at.find(parts[i].piece.number);
    if (closed != closed_at.end()) inverted.emplace_back(i, closed->second);
  }
  if (inverted.empty()) return;
  const Words words(parts);
  std::vector<Move> moves;
  std::vector<bool> moved(parts.size());
  for (const auto &[open, close] : inverted) {
    const int32_t number = parts[open].piece.number;
    note(reading.file.name(), reading.file.line(),
         "sentence %d: anchor %d came out behind its end; it is put around both words",
         as_int(reading.file.number()), as_int(number));
    moves.push_back({words.begin[close], true, number, parts[open]});
    moves.push_back({words.end[open], false, number, parts[close]});
    moved[open] = moved[close] = true;
  }
  std::sort(moves.begin(), moves.end());
  std::vector<Part> ordered;
  auto move = moves.begin();
  for (size_t i = 0; i <= parts.size(); i++) {
    for (; move != moves.end() && move->place == i; ++move) ordered.push_back(move->part);
    if (i < parts.size() && !moved[i]) ordered.push_back(parts[i]);
  }
  parts = std::move(ordered);
}

// Gives the places that the anchors of this kind have to the same anchors in ascending order.
void order_by_number(Reading &reading, Anchor::Kind kind) {
  std::vector<Part *> places;
  for (Part &part : reading.markup.parts)
    if (is_kind(part, kind)) places.push_back(&part);
  const auto before = [](const Part &one, const Part &other) {
    return one.piece.number < other.piece.number;
  };
  std::vector<Part> ordered;
  ordered.reserve(places.size());
  for (const Part *part : places) ordered.push_back(*part);
  if (std::is_sorted(ordered.begin(), ordered.end(), before)) return;
  std::sort(ordered.begin(), ordered.end(), before);
  note(reading.file.name(), reading.file.line(),
       "sentence %d: the anchors from %d to %d are put back into their order",
       as_int(reading.file.number()), as_int(ordered.front().piece.number),
       as_int(ordered.back().piece.number));
  for (size_t i = 0; i < places.size(); i++) *places[i] = ordered[i];
}

}  // namespace

void read_markup(const SentenceFile &file, const std::vector<Piece> &pieces, AnchorFile &anchors,
                 SentenceMarkup &markup) {
  markup.anchors.clear();
  markup.closers.clear();
  markup.parts.clear();
  Reading reading{file, anchors, markup};
  read_parts(reading, pieces);
  match_closers(reading);
  turn_inverted_pairs(reading);
  order_by_number(reading, Anchor::opens_out);
  order_by_number(reading, Anchor::closes_from);
}

}  // namespace klib::programs
