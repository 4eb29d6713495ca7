// Reading through the programs' own structure of a sentence.
#include "fuzz/sentence_model.h"

#include <algorithm>

#include "fuzz/frame.h"
#include "programs/common/code_page.h"
#include "programs/common/sentence.h"
#include "programs/common/sentence_file.h"
#include "programs/common/utf8.h"

namespace klib::fuzz {

using namespace programs;

namespace {

Sentence read_model(const SentenceFile &file, const CodePage &page) {
  Sentence sentence{file.number(), {}, {}};
  programs::Sentence read;
  read_sentence(file, page, read);
  Fonts fonts{};
  bool in_word = false;
  auto code = read.codes.begin();
  for (size_t i = 0; i <= read.text.size(); i++) {
    for (; code != read.codes.end() && code->at == i; ++code)
      if (code->is_font())
        fonts[static_cast<size_t>(code->group)] = code->number;
      else
        sentence.anchors.push_back(code->number);
    if (i == read.text.size()) break;
    const bool starts_word = read.text[i] != ' ' && !in_word;
    in_word = read.text[i] != ' ';
    if (!in_word) continue;
    if (starts_word) sentence.words.emplace_back();
    append_utf8(read.text[i] & ~bare_flag, sentence.words.back().text);
    sentence.words.back().fonts.push_back(fonts);
  }
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
    sentences.push_back(kind == SentenceFile::frame ? read_model(file, page)
                                                    : Sentence{-1, {file.number()}, {}});
  return sentences;
}

std::vector<std::string> texts(const std::vector<Word> &words) {
  std::vector<std::string> list;
  for (const Word &word : words) list.push_back(word.text);
  return list;
}

}  // namespace klib::fuzz
