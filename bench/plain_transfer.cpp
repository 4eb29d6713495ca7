// One step after the other on words that own their texts and codes; see plain_transfer.h.

#include "bench/plain_transfer.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "klib.h"

namespace klib::bench {

namespace {

struct Code {
  std::string body;
  size_t position;
  int32_t kind;
};

struct Word {
  std::string text;
  std::vector<Code> codes;
  std::vector<std::string> fonts;  // of a source word: in force when it begins
};

std::vector<Word> read_words(const std::string &sentence, int32_t flags) {
  std::vector<Word> words(1);
  init_parser(flags);
  parse_from_string(sentence.c_str());
  for (int32_t kind; (kind = parse(nullptr)) != P_END;) {
    Word &word = words.back();
    char *token = p_root[parser_level].token;
    if (kind == P_WHITE)
      words.emplace_back();
    else if (kind == P_TEXT)
      word.text += token;
    else
      word.codes.push_back({body(token), word.text.size(), kind});
  }
  exit_parser();
  return words;
}

void note_fonts(std::vector<Word> &words) {
  Ksave_font_state();
  for (Word &word : words) {
    if (char **changes = Kfont_changes_since_save(0, 0, 1); changes != nullptr) {
      for (char **font = changes; *font != nullptr; font++) word.fonts.emplace_back(*font);
      Kfree(changes);
    }
    for (Code &code : word.codes)
      if (code.kind == P_FONT) Kselect_font(code.body.data());
  }
  Kcleanup_font_save();
}

void insert(Word &word, Code code) {
  const auto after = std::find_if(word.codes.begin(), word.codes.end(), [&](const Code &other) {
    return other.position > code.position;
  });
  word.codes.insert(after, std::move(code));
}

uint32_t class_of(char c) { return cprops(static_cast<unsigned char>(c)) & 0xE0108000; }

// The nearest place in the text between two bytes like those beside the code.
size_t boundary_near(const std::string &text, size_t position, uint32_t before, uint32_t after,
                     bool alone) {
  const auto fits = [&](size_t at) {
    return at >= 1 && at < text.size() && (class_of(text[at - 1]) & before) != 0 &&
           (class_of(text[at]) & after) != 0;
  };
  for (size_t d = 0; d < position || position + d < text.size(); d++) {
    if (d < position && fits(position - d)) return position - d;
    if (fits(position + d)) return position + d;
  }
  if (!alone) return position;
  return position <= text.size() / 2 ? 0 : text.size();
}

void place(const Word &from, const Code &code, size_t number, std::vector<Word> &targets,
           const int32_t *const *alignment) {
  std::vector<size_t> list;
  for (size_t k = 0; k < targets.size(); k++)
    for (const int32_t *word = alignment[k]; *word != -1; word++)
      if (static_cast<size_t>(*word) == number) list.push_back(k);
  if (list.empty()) {
    if (code.kind == P_FONT) return;
    if (number >= targets.size()) return insert(targets.back(), {code.body, 0, code.kind});
    list.push_back(number);
  }
  size_t length = 0, before = 0;
  for (const size_t k : list) length += targets[k].text.size();
  const size_t all = from.text.empty() ? 0 : length * code.position / from.text.size();
  size_t chosen = 0;
  for (; before + targets[list[chosen]].text.size() < all; chosen++)
    before += targets[list[chosen]].text.size();
  Word &target = targets[list[chosen]];
  size_t position = all - before;
  if (position != 0 && position != target.text.size() && code.position != 0 &&
      code.position != from.text.size()) {
    const uint32_t left = class_of(from.text[code.position - 1]);
    const uint32_t right = class_of(from.text[code.position]);
    if (left != right)
      position = boundary_near(target.text, position, left, right, list.size() == 1);
  }
  insert(target, {code.body, position, code.kind});
}

std::string assemble(Word &word) {
  std::string result;
  size_t copied = 0;
  for (Code &code : word.codes) {
    const bool font = code.kind == P_FONT;
    if (font && Kis_font_selected(code.body.data()) != 0) continue;
    if (font) Kselect_font(code.body.data());
    result += word.text.substr(copied, code.position - copied);
    copied = code.position;
    result += (font ? '\x98' : '\x94') + code.body + (font ? '\x99' : '\x95');
  }
  return result + word.text.substr(copied);
}

}  // namespace

std::string plain_transfer(const std::string &source, const std::string &target,
                           const int32_t *const *alignment) {
  std::vector<Word> words = read_words(source, P_WHITE | P_FONT | P_CODE_1E | P_ANCHOR);
  note_fonts(words);
  std::vector<Word> targets = read_words(target, P_WHITE);
  for (size_t k = 0; k < targets.size(); k++)
    if (const int32_t first = alignment[k][0]; first != -1)
      for (const std::string &font : words[static_cast<size_t>(first)].fonts)
        targets[k].codes.push_back({font, 0, P_FONT});
  for (size_t i = 0; i < words.size(); i++)
    for (const Code &code : words[i].codes) place(words[i], code, i, targets, alignment);
  std::string result;
  for (Word &word : targets) result += (result.empty() ? "" : " ") + assemble(word);
  return result;
}

}  // namespace klib::bench
