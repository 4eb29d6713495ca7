// The library's transfer, given a source that suits it:
//  - Fonts come along where they change inside a word: what a word has throughout it gets when the
//    fonts are settled.
//  - Font codes between two words stand behind the earlier one. So the transfer counts them among
//    what is in force when the later one begins, for each word of the translation that it has.
//  - With fonts, a helper word comes first, which no word of the translation has as its source. It
//    makes every group plain: plain becomes a font like others, and words behind bold ones get it.
//  - Helper words also take the numbers 119 and 126, which mean something else in an alignment.
#include "programs/carry/transfer.h"

#include <algorithm>
#include <memory>
#include <tuple>

namespace klib::programs {
namespace {

constexpr int32_t default_request = 119, unaligned_marker = 126;
constexpr const char *helper_word = "x";

using Owned = std::unique_ptr<char, decltype(&Kfree)>;

Owned checked(char *text) {
  if (!text) throw std::bad_alloc();
  return Owned(text, Kfree);
}

// The aligned words behind each word, or -1.
std::vector<int32_t> next_aligned_words(const SourceSentence &sentence) {
  std::vector<int32_t> next(sentence.words.size(), -1);
  for (size_t w = next.size() - 1; w-- > 0;)
    next[w] = sentence.words[w + 1].aligned ? static_cast<int32_t>(w + 1) : next[w + 1];
  return next;
}

// Places one anchor of a word that is not aligned. `open` counts the anchors of its stretch of such
// words that went to the next aligned word and may be opening tags; `closes_later` says whether a
// closing tag may follow in the stretch.
void move_anchor(const SourceSentence &sentence, int32_t previous, int32_t next, bool closes_later,
                 int64_t &open, SourceCode &code) {
  const bool in_front = code.position == 0 && sentence.length(code.word) > 0;
  const bool closes = !in_front && open > 0;
  if (in_front) open++;
  if (closes) open--;
  bool to_beginning = in_front && (next >= 0 || closes_later);
  if (in_front || closes) {
    code.word = next >= 0 ? next : previous;
  } else {
    code.word = previous >= 0 ? previous : next;
    to_beginning = previous < 0;
  }
  code.position = to_beginning ? 0 : sentence.length(code.word);
}

// The number of the last anchor that may be a closing tag: in or behind its word.
size_t last_closing_code(const SourceSentence &sentence) {
  size_t last = 0;
  for (size_t i = 0; i < sentence.codes.size(); i++)
    if (!sentence.is_font(sentence.codes[i]) && sentence.codes[i].position > 0) last = i;
  return last;
}

void append_plain_fonts(const SourceSentence &sentence, std::string &text) {
  bool used[font_group_count] = {};
  for (const SourceCode &code : sentence.codes)
    if (sentence.is_font(code)) used[code.piece.group] = true;
  for (int group = 0; group < font_group_count; group++)
    if (used[group]) append_font(group, 0, text);
}

// Writes the new source word by word.
struct Writer {
  const SourceSentence &sentence;
  Transfer &transfer;
  bool with_fonts;
  int32_t written = 0;  // words
  size_t code = 0;      // the next one of the sentence

  const SourceCode *code_of(size_t word) const {
    if (code == sentence.codes.size()) return nullptr;
    const SourceCode &next = sentence.codes[code];
    return static_cast<size_t>(next.word) == word ? &next : nullptr;
  }
  bool has_codes_near(size_t word) const {
    return code < sentence.codes.size() &&
           static_cast<size_t>(sentence.codes[code].word) <= word + 1;
  }
};

void begin_word(Writer &writer) {
  if (writer.written++ > 0) writer.transfer.source += ' ';
}

void write_helper(Writer &writer) {
  begin_word(writer);
  writer.transfer.source += helper_word;
}

// Appends the codes at the position in the word, of one kind.
void append_codes(const Writer &writer, size_t word, size_t position, Piece::Kind kind) {
  const std::vector<SourceCode> &codes = writer.sentence.codes;
  if (kind == Piece::font && !writer.with_fonts) return;
  for (size_t i = writer.code; i < codes.size(); i++) {
    if (static_cast<size_t>(codes[i].word) != word || codes[i].position != position) return;
    if (codes[i].piece.kind == kind) writer.transfer.source += codes[i].piece.bytes;
  }
}

void skip_codes(Writer &writer, size_t word, size_t position) {
  for (const SourceCode *code; (code = writer.code_of(word)) && code->position == position;)
    writer.code++;
}

// The fonts in front of the next word stand behind this one.
void write_word(Writer &writer, size_t w) {
  std::string &source = writer.transfer.source;
  while (writer.written == default_request || writer.written == unaligned_marker)
    write_helper(writer);
  writer.transfer.new_numbers.push_back(writer.written);
  begin_word(writer);
  const SourceWord &word = writer.sentence.words[w];
  const size_t length = word.end - word.begin;
  if (!writer.has_codes_near(w)) {
    source.append(writer.sentence.text, word.begin, length);
    return;
  }
  append_codes(writer, w, 0, Piece::anchor);
  if (length > 0) skip_codes(writer, w, 0);
  size_t position = 0;
  for (const SourceCode *code; (code = writer.code_of(w)) && code->position < length;) {
    source.append(writer.sentence.text, word.begin + position, code->position - position);
    position = code->position;
    if (writer.with_fonts || code->piece.kind == Piece::anchor) source += code->piece.bytes;
    writer.code++;
  }
  source.append(writer.sentence.text, word.begin + position, length - position);
  if (length > 0) append_codes(writer, w, length, Piece::anchor);
  append_codes(writer, w, length, Piece::font);
  skip_codes(writer, w, length);
  append_codes(writer, w + 1, 0, Piece::font);
}

void write_source(const SourceSentence &sentence, bool with_fonts, Transfer &transfer) {
  transfer.source.clear();
  transfer.new_numbers.clear();
  Writer writer{sentence, transfer, with_fonts};
  if (with_fonts) {
    write_helper(writer);
    append_plain_fonts(sentence, transfer.source);
    append_codes(writer, 0, 0, Piece::font);
  }
  for (size_t w = 0; w < sentence.words.size(); w++) write_word(writer, w);
}

void write_alignment(const std::vector<Link> &links, int32_t target_words, Transfer &transfer) {
  transfer.numbers.clear();
  size_t link = 0;
  for (int32_t target = 0; target < target_words; target++) {
    for (; link < links.size() && links[link].target == target; link++)
      transfer.numbers.push_back(transfer.new_numbers[static_cast<size_t>(links[link].source)]);
    transfer.numbers.push_back(-1);
  }
  transfer.lists.clear();
  int32_t *number = transfer.numbers.data();
  for (int32_t target = 0; target < target_words; target++) {
    transfer.lists.push_back(number);
    while (*number++ != -1) continue;
  }
  transfer.lists.push_back(nullptr);
}

}  // namespace

int64_t move_anchors(SourceSentence &sentence, const std::vector<Link> &links) {
  for (const Link &link : links) sentence.words[static_cast<size_t>(link.source)].aligned = true;
  const std::vector<int32_t> next = next_aligned_words(sentence);
  const size_t last_closing = last_closing_code(sentence);
  int64_t moved = 0, open = 0;
  int32_t previous = -1, word = 0;
  for (size_t i = 0; i < sentence.codes.size(); i++) {
    SourceCode &code = sentence.codes[i];
    for (; word <= code.word; word++)
      if (sentence.words[static_cast<size_t>(word)].aligned) previous = word, open = 0;
    const size_t w = static_cast<size_t>(code.word);
    if (sentence.is_font(code) || sentence.words[w].aligned) continue;
    moved++;
    if (previous >= 0 || next[w] >= 0)
      move_anchor(sentence, previous, next[w], i < last_closing, open, code);
  }
  if (moved > 0)
    std::stable_sort(sentence.codes.begin(), sentence.codes.end(),
                     [](const auto &a, const auto &b) {
                       return std::tie(a.word, a.position) < std::tie(b.word, b.position);
                     });
  return moved;
}

void transfer_codes(const SourceSentence &sentence, const std::vector<Link> &links,
                    std::string &translation, int32_t target_words, Transfer &transfer,
                    std::string &result) {
  const bool with_fonts =
      std::any_of(sentence.words.begin(), sentence.words.end(),
                  [](const auto &word) { return word.aligned && !word.uniform; });
  if (!with_fonts && !sentence.has_anchors) {
    result = translation;
    return;
  }
  write_source(sentence, with_fonts, transfer);
  write_alignment(links, target_words, transfer);
  char *bare_source = WithoutAlienCharacters(transfer.source.data());
  Owned source =
      bare_source == transfer.source.data() ? Owned(nullptr, Kfree) : checked(bare_source);
  char *bare_target = WithoutAlienCharacters(translation.data());
  Owned target = bare_target == translation.data() ? Owned(nullptr, Kfree) : checked(bare_target);
  // What an earlier sentence has left in a named group would count as what this one begins with,
  // and would not be carried to its words.
  reset_named_font_groups();
  char *carried = CopyFontsString(bare_source, bare_target, transfer.lists.data());
  const Owned whole =
      checked(CopyAlienCharacters(translation.c_str(), checked(carried).release(), 0));
  result = whole.get();
}

}  // namespace klib::programs
