// The source side of a transfer, brought to the code page of the target, so that both sides have
// one byte or one alien for each character.
#include "programs/carry_source.h"

#include <algorithm>

namespace klib::programs {
namespace {

// Characters beyond ASCII that are no letters, in ascending order.
constexpr struct {
  char32_t first, last;
} marks[] = {
    {0x0080, 0x00A9}, {0x00AB, 0x00B4}, {0x00B6, 0x00B9}, {0x00BB, 0x00BF}, {0x00D7, 0x00D7},
    {0x00F7, 0x00F7}, {0x037E, 0x037E}, {0x0387, 0x0387}, {0x0589, 0x058A}, {0x05BE, 0x05BE},
    {0x060C, 0x060C}, {0x061B, 0x061F}, {0x06D4, 0x06D4}, {0x0964, 0x0965}, {0x2000, 0x206F},
    {0x20A0, 0x20CF}, {0x2190, 0x2BFF}, {0x2E00, 0x2E7F}, {0x3000, 0x303F}, {0xFE10, 0xFE6F},
    {0xFF01, 0xFF0F}, {0xFF1A, 0xFF20}, {0xFF3B, 0xFF40}, {0xFF5B, 0xFF65},
};
static_assert(std::ranges::is_sorted(marks, {}, [](const auto &run) { return run.first; }));

// What is being read: the sentence so far, and where in it the reader stands.
struct Reader {
  const SentenceFile &file;
  const CodePage &from, &to;
  SourceSentence &sentence;
  Fonts fonts{};             // in force
  bool inside_word = false;  // text has been read since the last blank
  bool seen_letter = false;  // in the current word
  bool differs = false;      // the word has changed its fonts since its first letter
  size_t waiting = 0;        // the first code since the last blank
  size_t count = 0;          // characters of the current word
  size_t run = 0;            // the first of those since the fonts have changed
  size_t marks = 0;          // since the last letter
};

void begin_word(Reader &reader) {
  SourceSentence &sentence = reader.sentence;
  const size_t begin = sentence.text.size();
  sentence.words.push_back({begin, begin, reader.fonts, reader.fonts, reader.fonts});
  for (size_t i = reader.waiting; i < sentence.codes.size(); i++) {
    sentence.codes[i].word = static_cast<int32_t>(sentence.words.size() - 1);
    sentence.codes[i].position = 0;
  }
  reader.inside_word = true;
  reader.seen_letter = reader.differs = false;
  reader.count = reader.run = reader.marks = 0;
}

void end_word(Reader &reader) {
  reader.inside_word = false;
  if (!reader.sentence.words.empty()) reader.waiting = reader.sentence.codes.size();
}

[[noreturn]] void fail_at(const Reader &reader, std::string_view bytes) {
  const SentenceFile &file = reader.file;
  std::string shown;
  constexpr const char *digits = "0123456789ABCDEF";
  for (const char c : bytes.substr(0, 5))
    shown += {'{', digits[c >> 4 & 0xF], digits[c & 0xF], '}'};
  fail(file.name(), file.line(), "sentence %d: %s is no character of its language",
       static_cast<int>(file.number()), shown.c_str());
}

// The next character goes from the bytes to the text of the sentence.
char32_t take_character(Reader &reader, std::string_view bytes, size_t &position) {
  const size_t begin = position;
  const char32_t single = reader.from.character[static_cast<unsigned char>(bytes[position])];
  if (single != 0 && reader.to.byte[single] != 0) {
    position++;
    reader.sentence.text += static_cast<char>(reader.to.byte[single]);
    return single;
  }
  const char32_t c = next_character(reader.from, bytes, position);
  if (c == 0) fail_at(reader, bytes.substr(begin, position - begin));
  append_character(reader.to, c, reader.sentence.text);
  return c;
}

// Takes one character into the current word. A word without letters is taken as if its first
// character were one.
void note_character(Reader &reader, bool letter, SourceWord &word) {
  if (letter && !reader.seen_letter) {
    reader.seen_letter = word.uniform = true;
    reader.differs = false;
    word.letter = reader.fonts;
    word.before = reader.run > 0 && reader.run == reader.count ? all_marks : reader.run;
    reader.marks = word.behind = 0;
  } else if (!reader.differs && reader.run > 0 && reader.fonts != word.letter) {
    reader.differs = true;
    word.behind = reader.marks == 0 ? all_marks : 0;
  }
  reader.count++;
  reader.marks = letter ? 0 : reader.marks + 1;
  if (!reader.differs) return;
  if (word.behind != all_marks) word.behind++;
  if (letter || !reader.seen_letter) word.uniform = false;
}

// Takes text without codes inside.
void take_text(Reader &reader, std::string_view bytes) {
  if (!reader.inside_word) begin_word(reader);
  SourceWord &word = reader.sentence.words.back();
  if (reader.fonts != word.last) reader.run = reader.count;
  word.last = reader.fonts;
  for (size_t position = 0; position < bytes.size();)
    note_character(reader, is_letter(take_character(reader, bytes, position)), word);
  word.end = reader.sentence.text.size();
}

void take_code(Reader &reader, const Piece &piece) {
  SourceSentence &sentence = reader.sentence;
  if (piece.kind == Piece::font) reader.fonts[static_cast<size_t>(piece.group)] = piece.number;
  const int32_t word = std::max(static_cast<int32_t>(sentence.words.size()) - 1, 0);
  const size_t position = sentence.words.empty() ? 0 : sentence.length(word);
  sentence.codes.push_back({piece, word, position, reader.fonts});
}

bool is_alien_of(const Piece &piece, char first, char last) {
  return piece.kind == Piece::alien && piece.bytes.size() == 5 && piece.bytes[1] == 'D' &&
         piece.bytes[2] >= first && piece.bytes[2] <= last;
}

}  // namespace

bool is_letter(char32_t c) {
  if (c < 0x80) return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  const auto run = std::ranges::lower_bound(marks, c, {}, [](const auto &r) { return r.last; });
  return run == std::end(marks) || c < run->first;
}

void read_source(const SentenceFile &file, const CodePage &from, const CodePage &to,
                 std::vector<Piece> &pieces, SourceSentence &sentence) {
  sentence.text.clear();
  sentence.words.clear();
  sentence.codes.clear();
  split_sentence(file, file.text(), pieces);
  Reader reader{file, from, to, sentence};
  for (size_t i = 0; i < pieces.size(); i++) {
    const Piece &piece = pieces[i];
    if (piece.kind == Piece::blank)
      end_word(reader);
    else if (piece.kind == Piece::anchor || piece.kind == Piece::font)
      take_code(reader, piece);
    else if (is_alien_of(piece, '8', 'B') && i + 1 < pieces.size() &&
             is_alien_of(pieces[i + 1], 'C', 'F'))
      take_text(reader, std::string_view(piece.bytes.data(), 2 * piece.bytes.size())), i++;
    else
      take_text(reader, piece.bytes);
  }
  if (sentence.words.empty()) sentence.words.push_back({0, 0, {}, {}, {}});
}

}  // namespace klib::programs
