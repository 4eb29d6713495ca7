// The order of codes in a sentence that has been through a translation.
#include "programs/document/sentence_markup.h"

#include <algorithm>
#include <unordered_set>

#include "programs/common/program.h"

namespace klib::programs {
namespace {

struct Repair {
  const SentenceFile &file;
  AnchorFile &anchors;
  Sentence &sentence;
  SentenceMarkup &markup;

  Place place() const { return {file.name(), file.line(), file.number()}; }
  const Anchor &anchor(const Code &code) const { return markup.anchors.at(code.number); }
  bool is_kind(const Code &code, Anchor::Kind kind) const {
    return !code.is_font() && anchor(code).kind == kind;
  }
};

int as_int(int32_t number) { return static_cast<int>(number); }

// Reads the anchor of a code, once for a sentence.
void read_anchor_of(Repair &repair, const Code &code) {
  if (repair.markup.anchors.contains(code.number)) return;
  const int number = as_int(code.number);
  const Figures figures = {{"anchor", code.number}};
  if (!repair.anchors.has(code.number))
    fail(repair.place(), "no-anchor", figures, "there is no anchor %d", number);
  if (repair.anchors.times_read(code.number) > 0)
    report(repair.place(), "anchor-repeated", figures, "anchor %d is in an earlier place, too",
           number);
  Anchor anchor = repair.anchors.read(code.number);
  if ((anchor.kind == Anchor::font) != code.is_font())
    fail(repair.place(), "wrong-anchor", figures, "anchor %d is %s", number,
         code.is_font() ? "no font" : "a font");
  repair.markup.anchors.emplace(code.number, std::move(anchor));
}

void read_anchors(Repair &repair) {
  std::unordered_set<int32_t> seen;
  std::erase_if(repair.sentence.codes, [&](const Code &code) {
    if (!code.is_font() && !seen.insert(code.number).second) {
      report(repair.place(), "anchor-twice", {{"anchor", code.number}},
             "anchor %d is there twice; the second is left out", as_int(code.number));
      return true;
    }
    if (!code.is_font() || code.number > 0) read_anchor_of(repair, code);
    return false;
  });
}

// Leaves out closing tags whose partner is not in the sentence, and notes the others.
void match_closers(Repair &repair) {
  SentenceMarkup &markup = repair.markup;
  std::erase_if(repair.sentence.codes, [&](const Code &code) {
    const bool ends_kept = repair.is_kind(code, Anchor::kept_end);
    if (!ends_kept && !repair.is_kind(code, Anchor::close)) return false;
    const int32_t partner = repair.anchor(code).partner;
    const auto found = markup.anchors.find(partner);
    if (found != markup.anchors.end() &&
        found->second.kind == (ends_kept ? Anchor::kept : Anchor::open) &&
        markup.closers.emplace(partner, code.number).second)
      return false;
    report(repair.place(), "closer-left-out", {{"anchor", code.number}, {"opener", partner}},
           "anchor %d closes anchor %d, which is not there, and is left out", as_int(code.number),
           as_int(partner));
    return true;
  });
  for (const Code &code : repair.sentence.codes)
    if (repair.is_kind(code, Anchor::open) && !markup.closers.contains(code.number))
      report(repair.place(), "not-closed", {{"anchor", code.number}},
             "anchor %d is not closed; it is closed at the end of the sentence",
             as_int(code.number));
}

// A code that moves before the code `index`, and there before the character `at`: closing tags
// first, the innermost of them first, then opening tags, the outermost first.
struct Move {
  size_t at, index;
  bool opens;
  int32_t pair;    // the number of the opening tag
  int32_t number;  // of the code

  bool operator<(const Move &other) const {
    if (at != other.at) return at < other.at;
    if (index != other.index) return index < other.index;
    if (opens != other.opens) return !opens;
    return opens ? pair < other.pair : pair > other.pair;
  }
};

// The first code at or after a character.
size_t code_at(const Sentence &sentence, size_t at) {
  const auto found = std::ranges::lower_bound(sentence.codes, at, {}, &Code::at);
  return static_cast<size_t>(found - sentence.codes.begin());
}

// Before the word of a code, but after the font codes that it begins with.
Move to_begin_of_word(const Sentence &sentence, const Code &code) {
  const size_t blank = code.at == 0 ? std::u32string::npos : sentence.text.rfind(U' ', code.at - 1);
  const size_t at = blank == std::u32string::npos ? 0 : blank + 1;
  size_t index = code_at(sentence, at);
  while (index < sentence.codes.size() && sentence.codes[index].at == at &&
         sentence.codes[index].is_font())
    index++;
  return {at, index, true, 0, 0};
}

Move to_end_of_word(const Sentence &sentence, const Code &code) {
  const size_t at = std::min(sentence.text.find(U' ', code.at), sentence.text.size());
  return {at, code_at(sentence, at + 1), false, 0, 0};
}

// Puts every pair whose closing tag came first around the words of both tags.
void turn_inverted_pairs(Repair &repair) {
  std::vector<Code> &codes = repair.sentence.codes;
  std::unordered_map<int32_t, size_t> closed_at;  // by the number of the opening tag
  std::vector<Move> moves;
  std::vector<bool> moved(codes.size());
  for (size_t i = 0; i < codes.size(); i++) {
    if (repair.is_kind(codes[i], Anchor::close)) closed_at[repair.anchor(codes[i]).partner] = i;
    if (!repair.is_kind(codes[i], Anchor::open)) continue;
    const auto closed = closed_at.find(codes[i].number);
    if (closed == closed_at.end()) continue;
    const int32_t number = codes[i].number;
    note(repair.place(), "pair-inverted", {{"anchor", number}},
         "anchor %d came out after its end; it is put around both words", as_int(number));
    Move begin = to_begin_of_word(repair.sentence, codes[closed->second]);
    Move end = to_end_of_word(repair.sentence, codes[i]);
    begin.pair = end.pair = begin.number = number;
    end.number = codes[closed->second].number;
    moves.insert(moves.end(), {begin, end});
    moved[i] = moved[closed->second] = true;
  }
  if (moves.empty()) return;
  std::sort(moves.begin(), moves.end());
  std::vector<Code> ordered;
  auto move = moves.begin();
  for (size_t i = 0; i <= codes.size(); i++) {
    for (; move != moves.end() && move->index == i; ++move)
      ordered.push_back({move->at, move->number});
    if (i < codes.size() && !moved[i]) ordered.push_back(codes[i]);
  }
  codes = std::move(ordered);
}

// Puts the anchors of this kind into ascending order, in the places that they have together.
void order_by_number(Repair &repair, Anchor::Kind kind) {
  std::vector<Code *> places;
  std::vector<int32_t> numbers;
  for (Code &code : repair.sentence.codes) {
    if (!repair.is_kind(code, kind)) continue;
    places.push_back(&code);
    numbers.push_back(code.number);
  }
  if (std::ranges::is_sorted(numbers)) return;
  std::ranges::sort(numbers);
  note(repair.place(), "anchors-reordered", {{"first", numbers.front()}, {"last", numbers.back()}},
       "the anchors from %d to %d are put back into their order", as_int(numbers.front()),
       as_int(numbers.back()));
  for (size_t i = 0; i < places.size(); i++) places[i]->number = numbers[i];
}

}  // namespace

void repair_markup(const SentenceFile &file, AnchorFile &anchors, Sentence &sentence,
                   SentenceMarkup &markup) {
  markup.anchors.clear();
  markup.closers.clear();
  if (sentence.codes.empty()) return;
  Repair repair{file, anchors, sentence, markup};
  read_anchors(repair);
  match_closers(repair);
  turn_inverted_pairs(repair);
  order_by_number(repair, Anchor::opens_out);
  order_by_number(repair, Anchor::closes_from);
}

}  // namespace klib::programs
