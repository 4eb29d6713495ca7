// The source side of a transfer, brought to the code page of the target, so that both sides have
// one byte or one alien for each character.
#include "programs/carry/source.h"

#include <algorithm>

#include "programs/common/letters.h"

namespace klib::programs {
namespace {

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

// The bytes at the beginning that are single characters in both code pages, all of them letters or
// none, go to the text of the sentence. The result is their number.
size_t take_run(Reader &reader, std::string_view bytes, bool letters) {
  const CodePage &from = reader.from, &to = reader.to;
  std::string &text = reader.sentence.text;
  const size_t begin = text.size();
  text.append(bytes);
  char *const out = text.data() + begin;
  size_t length = 0;
  for (; length < bytes.size(); length++) {
    const auto byte = static_cast<unsigned char>(out[length]);
    const unsigned char converted = to.byte[from.character[byte]];
    if (converted == 0 || from.letter[byte] != letters) break;
    out[length] = static_cast<char>(converted);
  }
  text.resize(begin + length);
  return length;
}

// The next character goes from the bytes to the text of the sentence.
char32_t take_character(Reader &reader, std::string_view bytes, size_t &position) {
  const size_t begin = position;
  const char32_t c = next_character(reader.from, bytes, position);
  if (c == 0) fail_at(reader, bytes.substr(begin, position - begin));
  append_character(reader.to, c, reader.sentence.text);
  return c;
}

// Takes characters into the current word, all of them letters or none. A word without letters is
// taken as if its first character were one.
void note_characters(Reader &reader, bool letter, size_t count, SourceWord &word) {
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
  reader.count += count;
  reader.marks = letter ? 0 : reader.marks + count;
  if (!reader.differs) return;
  if (word.behind != all_marks) word.behind += count;
  if (letter || !reader.seen_letter) word.uniform = false;
}

// Takes text without codes inside.
void take_text(Reader &reader, std::string_view bytes) {
  if (!reader.inside_word) begin_word(reader);
  SourceWord &word = reader.sentence.words.back();
  if (reader.fonts != word.last) reader.run = reader.count;
  word.last = reader.fonts;
  for (size_t position = 0; position < bytes.size();) {
    const bool letters = reader.from.letter[static_cast<unsigned char>(bytes[position])];
    if (const size_t run = take_run(reader, bytes.substr(position), letters); run > 0) {
      note_characters(reader, letters, run, word);
      position += run;
    } else {
      note_characters(reader, is_letter(take_character(reader, bytes, position)), 1, word);
    }
  }
  word.end = reader.sentence.text.size();
}

void take_code(Reader &reader, const Piece &piece) {
  SourceSentence &sentence = reader.sentence;
  if (piece.kind == Piece::font) reader.fonts[static_cast<size_t>(piece.group)] = piece.number;
  const int32_t word = std::max(static_cast<int32_t>(sentence.words.size()) - 1, 0);
  const size_t position = sentence.words.empty() ? 0 : sentence.length(word);
  sentence.codes.push_back({piece, word, position, reader.fonts});
  (piece.kind == Piece::font ? sentence.has_fonts : sentence.has_anchors) = true;
}

bool is_alien_of(const Piece &piece, char first, char last) {
  return piece.kind == Piece::alien && piece.bytes.size() == 5 && piece.bytes[1] == 'D' &&
         piece.bytes[2] >= first && piece.bytes[2] <= last;
}

}  // namespace

void read_source(const SentenceFile &file, const CodePage &from, const CodePage &to,
                 std::vector<Piece> &pieces, SourceSentence &sentence) {
  sentence.text.clear();
  sentence.words.clear();
  sentence.codes.clear();
  sentence.has_fonts = sentence.has_anchors = false;
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
