// A page through kextract, kcarry with any translation and alignment, and kmerge.
//
// Every anchor of a sentence is carried once, the visible text becomes the translation, each font
// comes out in one piece with text in it or not at all, markup that was well nested in the page is
// so in the result, without repairs of pairs that came out turned around, and the result has the
// translation as its text.

#include <algorithm>
#include <map>
#include <sstream>

#include "fuzz/page_jobs.h"
#include "fuzz/sentence_model.h"
#include "programs/common/utf8.h"
#include "programs/html/boundaries.h"
#include "programs/html/elements.h"
#include "programs/html/page_file.h"
#include "programs/html/tokenizer.h"

using namespace klib::fuzz;
using namespace klib::programs;

namespace {

// Makes a line of UTF-8 of any bytes.
std::string valid_line(const std::string &bytes) {
  std::string line;
  for (size_t i = 0; i < bytes.size();) {
    char32_t c = next_utf8(bytes, i);
    if (c == invalid_utf8) c = 0x100u + static_cast<unsigned char>(bytes[i++]);
    if (c != 0xFEFF) append_utf8(c, line);
  }
  return line;
}

// Takes a line of the alignment from the input; some pairs name words that are not there.
std::string align(Input &input, size_t source_words, size_t target_words) {
  std::string line;
  for (uint32_t pairs = input.below(16); pairs > 0; pairs--) {
    const size_t i = input.byte() % (source_words + 1);
    const size_t j = input.byte() % (target_words + 1);
    line += std::to_string(i) + "-" + std::to_string(j) + " ";
  }
  return line;
}

// How often each font begins in the sentence.
std::map<int32_t, int> pieces_of_fonts(const Sentence &sentence) {
  std::map<int32_t, int> pieces;
  Fonts before{};
  for (const Word &word : sentence.words)
    for (const Fonts &fonts : word.fonts) {
      for (size_t group = 0; group < fonts.size(); group++)
        if (fonts[group] != 0 && fonts[group] != before[group]) pieces[fonts[group]]++;
      before = fonts;
    }
  return pieces;
}

void check_fonts(const Sentence &source, const Sentence &result) {
  const std::map<int32_t, int> had = pieces_of_fonts(source);
  for (const auto &[font, pieces] : pieces_of_fonts(result)) {
    require(had.contains(font), "no font is new");
    require(pieces == 1, "a font comes out in one piece");
  }
}

// Whether every tag of an element with content has its partner, and no two elements cross.
bool is_well_nested(const std::string &page) {
  std::vector<std::string> open;
  for (size_t i = 0; i < page.size();) {
    const Token token = next_token(page, i);
    i = token.end;
    const Element::Content content = element(token.name).content;
    if (token.name.empty() || content == Element::empty || content == Element::separator) continue;
    if (token.kind == Token::start_tag) {
      open.push_back(lower_case(token.name));
      if (content == Element::raw || content == Element::caption)
        i = end_of_raw_text(page, i, token.name);
    } else {
      if (open.empty() || open.back() != lower_case(token.name)) return false;
      open.pop_back();
    }
  }
  return open.empty();
}

// Whether the page may have text that comes back whatever the translation has.
bool may_keep_text(const std::string &page) {
  const std::string lower = lower_case(page);
  return lower.find("translate") != lower.npos || lower.find("lang") != lower.npos;
}

// The letters and digits of a text, one after the other. Marks at the edge of a sentence may stay
// out of it.
std::string letters(const std::string &text) {
  std::string characters;
  for (size_t i = 0; i < text.size();) {
    const size_t begin = i;
    if (is_letter_or_digit(next_utf8(text, i))) characters += text.substr(begin, i - begin);
  }
  return characters;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  const std::string language = any_language(input), target_language = any_language(input);
  const std::string width = std::to_string(input.byte());
  const bool in_order = input.below(8) == 0;
  clear_scratch();
  scratch_file("page.html", input.text());
  if (!run(kextract,
           {"-LANGUAGE", language, "-KTI-WIDTH", width, "--translate-code", "job.kti", "page.html"})
           .good)
    return 0;
  const std::vector<Sentence> source = read_sentences("job.kti", language);

  std::istringstream lines(input.text()), source_lines(read_scratch("job.txt"));
  std::string translation, alignment;
  std::vector<std::vector<std::string>> targets;  // the words of the translations
  for (const Sentence &sentence : source) {
    std::vector<std::string> &target = targets.emplace_back();
    if (sentence.number < 0) continue;
    std::string line, words;
    std::getline(source_lines, line);
    for (const Word &word : sentence.words) words += (words.empty() ? "" : " ") + word.text;
    require(words == line, "the text for the translation has the words of the sentence");
    line.clear();
    std::getline(lines, line);
    line = valid_line(line);
    translation += line + "\n";
    target = words_of(line);
    if (!in_order) alignment += align(input, sentence.words.size(), target.size()) + "\n";
  }
  scratch_file("job.tra", translation);
  scratch_file("job.ali", alignment);
  std::vector<std::string> arguments = {"-LANGUAGE",  language, "-TARGET-LANGUAGE", target_language,
                                        "-KTI-WIDTH", width,    "job.kti",          "job.tra"};
  arguments.push_back(in_order ? "--align=identity" : "job.ali");
  arguments.push_back("out.kti");
  const Outcome carried = run(kcarry, arguments);
  require(carried.good || carried.messages.find(": pair '") != std::string::npos,
          "only bad pairs make the status 1");

  const Document page = read_page("page.html", "");
  const bool keeps = may_keep_text(page.text);
  const std::vector<Sentence> result = read_sentences("out.kti", target_language);
  require(result.size() == source.size(), "the frames and what is between them stay");
  for (size_t k = 0; k < source.size(); k++) {
    require(result[k].number == source[k].number, "frames keep their order");
    require(result[k].anchors == source[k].anchors, "every anchor is carried once");
    require(keeps || texts(result[k].words) == targets[k], "the text is the translation");
    check_fonts(source[k], result[k]);
  }

  const Outcome merged =
      run(kmerge, {"-LANGUAGE", target_language, "out.kti", "job.anc", "result.html"});
  require(merged.good, "what was carried is merged");
  if (is_well_nested(page.text)) {
    require(is_well_nested(to_utf8(read_scratch("result.html"), page.encoding)),
            "markup stays well nested");
    require(merged.messages.find(" around both words") == std::string::npos,
            "no pair comes out turned around");
  }
  if (page.encoding == "UTF-8" && !keeps) {
    require(
        run(kextract, {"-LANGUAGE", target_language, "--translate-code", "new.kti", "result.html"})
            .good,
        "the new page is taken");
    require(letters(read_scratch("new.txt")) == letters(translation),
            "the new page has the words of the translation");
  }
  return 0;
}
