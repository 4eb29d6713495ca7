// Reading through the programs' own splitting of sentences into pieces.
#include "fuzz/sentence_model.h"

#include <algorithm>

#include "fuzz/frame.h"
#include "programs/common/code_page.h"
#include "programs/common/sentence_file.h"
#include "programs/common/utf8.h"

namespace klib::fuzz {

using namespace programs;

namespace {

Sentence read_sentence(const SentenceFile &file, const CodePage &page) {
  Sentence sentence{file.number(), {}, {}};
  std::vector<Piece> pieces;
  split_sentence(file, file.text(), pieces);
  Fonts fonts{};
  bool in_word = false;
  std::string half;  // of a surrogate pair
  for (const Piece &piece : pieces) {
    require(half.empty() || piece.kind == Piece::alien, "surrogate pairs stay together");
    if (piece.kind == Piece::anchor) sentence.anchors.push_back(piece.number);
    if (piece.kind == Piece::font) fonts[static_cast<size_t>(piece.group)] = piece.number;
    if (piece.kind == Piece::blank) in_word = false;
    if (piece.kind != Piece::text && piece.kind != Piece::alien) continue;
    if (!in_word) sentence.words.emplace_back();
    in_word = true;
    const std::string bytes = half + std::string(piece.bytes);
    half.clear();
    for (size_t position = 0; position < bytes.size();) {
      const char32_t c = next_character(page, bytes, position);
      if (c == 0 && bytes.size() == 5) {
        half = bytes;
        continue;
      }
      require(c != 0, "every byte is a character of the language");
      append_utf8(c, sentence.words.back().text);
      sentence.words.back().fonts.push_back(fonts);
    }
  }
  require(half.empty(), "surrogate pairs are whole");
  std::sort(sentence.anchors.begin(), sentence.anchors.end());
  return sentence;
}

}  // namespace

std::vector<Sentence> read_sentences(const char *name, const std::string &language) {
  fresh_library();
  static CodePage page;
  make_code_page(language.c_str(), page);
  std::vector<Sentence> sentences;
  SentenceFile file(name);
  for (SentenceFile::Kind kind; (kind = file.next()) != SentenceFile::end;)
    sentences.push_back(kind == SentenceFile::frame ? read_sentence(file, page)
                                                    : Sentence{-1, {file.number()}, {}});
  return sentences;
}

std::vector<std::string> texts(const std::vector<Word> &words) {
  std::vector<std::string> list;
  for (const Word &word : words) list.push_back(word.text);
  return list;
}

}  // namespace klib::fuzz
