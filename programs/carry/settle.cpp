// The transfer writes a code where the source had one; whatever stands between words then follows.
// Here the words are asked instead, and codes written where the answers of neighbours differ.
#include "programs/carry/settle.h"

#include <algorithm>

#include "programs/common/letters.h"

namespace klib::programs {
namespace {

using PieceIterator = std::vector<Piece>::const_iterator;

bool is_second_half(const Piece &piece) {
  return piece.kind == Piece::alien && piece.bytes[1] == 'D' && piece.bytes[2] >= 'C';
}
bool is_first_half(const Piece &piece) {
  return piece.kind == Piece::alien && piece.bytes[1] == 'D' && piece.bytes[2] >= '8' &&
         piece.bytes[2] < 'C';
}

// The fonts of each anchor of the source, found by number.
class AnchorFonts {
 public:
  explicit AnchorFonts(const SourceSentence &sentence) {
    for (const SourceCode &code : sentence.codes)
      if (!sentence.is_font(code)) fonts_.push_back({code.piece.number, &code.fonts});
    std::sort(fonts_.begin(), fonts_.end());
  }
  const Fonts &of(int32_t number) const {
    return *std::lower_bound(fonts_.begin(), fonts_.end(), Entry{number, nullptr})->second;
  }

 private:
  using Entry = std::pair<int32_t, const Fonts *>;
  std::vector<Entry> fonts_;
};

struct Output {
  const AnchorFonts &anchors;
  std::string &text;
  Fonts fonts{};                     // in force
  std::vector<const Piece *> gap{};  // anchors and blanks since the last character
  std::vector<int32_t> selected{};   // fonts that were written
};

void select(Output &output, const Fonts &wanted) {
  if (output.fonts == wanted) return;
  for (size_t group = 0; group < font_group_count; group++) {
    if (output.fonts[group] == wanted[group]) continue;
    append_font(static_cast<int>(group), wanted[group], output.text);
    if (wanted[group] != 0) output.selected.push_back(wanted[group]);
  }
  output.fonts = wanted;
}

// The font of a group for what stands between two characters. An anchor between two fonts is
// inside the one that it had in the source, if any.
int32_t font_between(int32_t before, int32_t behind, int32_t in_source) {
  if (before == behind || before == in_source) return before;
  return behind == in_source ? behind : 0;
}

void close_gap(Output &output, const Fonts &next) {
  constexpr Fonts plain{};
  const bool same = output.fonts == next;
  for (const Piece *piece : output.gap) {
    if (same) {
      output.text += piece->bytes;
      continue;
    }
    const Fonts &in_source =
        piece->kind == Piece::anchor ? output.anchors.of(piece->number) : plain;
    Fonts wanted;
    for (size_t group = 0; group < font_group_count; group++)
      wanted[group] = piece->kind == Piece::blank && output.fonts[group] != next[group]
                          ? 0
                          : font_between(output.fonts[group], next[group], in_source[group]);
    select(output, wanted);
    output.text += piece->bytes;
  }
  output.gap.clear();
  select(output, next);
}

void write_characters(Output &output, std::string_view bytes, const Fonts &fonts) {
  close_gap(output, fonts);
  output.text += bytes;
}

// A word of the translation, its characters numbered from 0.
struct Word {
  PieceIterator begin, end;
  size_t first_letter, letters_end, count;  // its letters are all of it, when it has none
};

Word measure_word(const CodePage &page, PieceIterator begin, PieceIterator end) {
  size_t count = 0, first = SIZE_MAX, letters_end = 0;
  const auto take = [&](bool letter) {
    count++;
    if (!letter) return;
    first = std::min(first, count - 1);
    letters_end = count;
  };
  for (PieceIterator piece = begin; piece != end; ++piece) {
    size_t position = 0;
    if (piece->kind == Piece::text)
      for (const char c : piece->bytes) take(page.letter[static_cast<unsigned char>(c)]);
    else if (is_first_half(*piece))
      take(true);
    else if (piece->kind == Piece::alien && !is_second_half(*piece))
      take(is_letter(next_character(page, piece->bytes, position)));
  }
  if (letters_end == 0) return {begin, end, 0, count, count};
  return {begin, end, first, letters_end, count};
}

// Whether all characters of a word that it translates have the fonts of its letters.
bool gives_one_formatting(const SourceWord &first, const SourceWord &last) {
  return first.uniform && first.before == 0 && (!last.uniform || last.behind == 0);
}

// Follows the fonts through a word.
struct Follower {
  const Word &word;
  const SourceWord &source, &last_source;
  Fonts fonts{};     // as the transfer has placed them
  size_t count = 0;  // characters so far

  bool takes_codes() const { return !source.uniform && count > 0; }

  // The fonts of the next character, and of how many from there on.
  const Fonts &next(size_t &same) {
    same = SIZE_MAX;
    if (!source.uniform) {
      if (count == 0) fonts = word.first_letter == 0 ? source.letter : source.first;
      return fonts;
    }
    const size_t before = std::min(source.before, word.first_letter);
    const size_t behind =
        last_source.uniform ? std::min(last_source.behind, word.count - word.letters_end) : 0;
    if (count >= word.count - behind) return last_source.last;
    same = (count < before ? before : word.count - behind) - count;
    return count < before ? source.first : source.letter;
  }
};

void write_text(Output &output, std::string_view bytes, Follower &follower) {
  while (!bytes.empty()) {
    size_t same;
    const Fonts &fonts = follower.next(same);
    const std::string_view run = bytes.substr(0, same);
    write_characters(output, run, fonts);
    follower.count += run.size();
    bytes.remove_prefix(run.size());
  }
}

// An alien, with its second half, whatever codes have come between.
void write_alien(Output &output, PieceIterator piece, PieceIterator end, const Fonts &fonts) {
  write_characters(output, piece->bytes, fonts);
  if (!is_first_half(*piece)) return;
  const PieceIterator second = std::find_if(piece, end, is_second_half);
  if (second != end) output.text += second->bytes;
}

void write_word(Output &output, const Word &word, const SourceWord &source,
                const SourceWord &last_source) {
  Follower follower{word, source, last_source};
  for (PieceIterator piece = word.begin; piece != word.end; ++piece) {
    if (piece->kind == Piece::anchor) {
      output.gap.push_back(&*piece);
    } else if (piece->kind == Piece::font && follower.takes_codes()) {
      follower.fonts[static_cast<size_t>(piece->group)] = piece->number;
    } else if (piece->kind == Piece::text) {
      write_text(output, piece->bytes, follower);
    } else if (piece->kind == Piece::alien && !is_second_half(*piece)) {
      size_t same;
      write_alien(output, piece, word.end, follower.next(same));
      follower.count++;
    }
  }
}

void write_in_one_formatting(Output &output, PieceIterator begin, PieceIterator end,
                             const Fonts &fonts) {
  for (PieceIterator piece = begin; piece != end; ++piece) {
    if (piece->kind == Piece::anchor)
      output.gap.push_back(&*piece);
    else if (piece->kind == Piece::text)
      write_characters(output, piece->bytes, fonts);
    else if (piece->kind == Piece::alien && !is_second_half(*piece))
      write_alien(output, piece, end, fonts);
  }
}

}  // namespace

int64_t count_lost_fonts(const SourceSentence &sentence, std::vector<int32_t> selected) {
  std::vector<int32_t> wanted;
  for (const SourceCode &code : sentence.codes)
    if (sentence.is_font(code) && code.piece.number != 0) wanted.push_back(code.piece.number);
  std::sort(wanted.begin(), wanted.end());
  wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
  std::sort(selected.begin(), selected.end());
  return std::count_if(wanted.begin(), wanted.end(), [&](int32_t number) {
    return !std::binary_search(selected.begin(), selected.end(), number);
  });
}

int64_t settle_fonts(const CodePage &page, const SourceSentence &sentence,
                     const std::vector<Link> &links, const std::vector<Piece> &pieces,
                     std::string &settled) {
  settled.clear();
  const AnchorFonts anchors(sentence);
  Output output{anchors, settled};
  auto link = links.begin();
  int32_t target = 0;
  for (PieceIterator begin = pieces.begin(); begin != pieces.end(); target++) {
    const PieceIterator end = std::find_if(
        begin, pieces.end(), [](const Piece &piece) { return piece.kind == Piece::blank; });
    const SourceWord *source = nullptr, *last_source = nullptr;
    for (; link != links.end() && link->target == target; ++link) {
      last_source = &sentence.words[static_cast<size_t>(link->source)];
      if (!source) source = last_source;
    }
    if (!source)
      write_in_one_formatting(output, begin, end, {});
    else if (gives_one_formatting(*source, *last_source))
      write_in_one_formatting(output, begin, end, source->letter);
    else
      write_word(output, measure_word(page, begin, end), *source, *last_source);
    if (end != pieces.end()) output.gap.push_back(&*end);
    begin = end == pieces.end() ? end : end + 1;
  }
  close_gap(output, {});
  return count_lost_fonts(sentence, std::move(output.selected));
}

}  // namespace klib::programs
