// The transfer: any source, translation, alignment and fonts.
//
// With a valid alignment and a translation without code bytes, no anchor is lost or doubled, and
// the words of the translation come out as they went in.

#include <algorithm>
#include <memory>

#include "fuzz/frame.h"
#include "klib.h"
#include "parameters/parameters.h"

using namespace klib::fuzz;

namespace {

// The bodies of the anchors of a text, sorted.
std::vector<std::string> anchors_of(const std::string &text) {
  std::vector<std::string> anchors;
  init_parser(P_ANCHOR | P_FONT);
  parse_from_string(text.c_str());
  for (int32_t kind; (kind = parse(nullptr)) != P_END;)
    if (kind == P_ANCHOR) anchors.emplace_back(p_root[parser_level].token);
  exit_parser();
  std::sort(anchors.begin(), anchors.end());
  return anchors;
}

// Whether no code of the text is cut off by its end.
bool ends_every_code(const std::string &text) {
  bool ends = true;
  init_parser(P_ANCHOR | P_FONT);
  parse_from_string(text.c_str());
  for (int32_t kind; (kind = parse(nullptr)) != P_END;) {
    const std::string token = p_root[parser_level].token;
    const bool anchor = kind == P_ANCHOR;
    if (kind != P_TEXT)
      ends = ends && std::count(token.begin(), token.end(), anchor ? '\x94' : '\x98') ==
                         std::count(token.begin(), token.end(), anchor ? '\x95' : '\x99');
  }
  exit_parser();
  return ends;
}

// The text without codes, white space brought to single blanks.
std::string words_of(const std::string &text) {
  std::string words;
  init_parser(P_ANCHOR | P_FONT | P_WHITE);
  parse_from_string(text.c_str());
  for (int32_t kind; (kind = parse(nullptr)) != P_END;) {
    if (kind == P_WHITE)
      words += ' ';
    else if (kind == P_TEXT)
      words += p_root[parser_level].token;
  }
  exit_parser();
  const size_t end = words.find_last_not_of(' ');
  words.resize(end == std::string::npos ? 0 : end + 1);
  return words;
}

bool has_any(const std::string &text, const char *bytes) {
  return text.find_first_of(bytes) != std::string::npos;
}

int32_t count_words(const std::string &text) {
  const std::string words = words_of(text);
  return static_cast<int32_t>(std::count(words.begin(), words.end(), ' ')) + 1;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  fresh_library();
  using klib::parameters::Number;
  kparm[klib::parameters::combined(Number::single_font_group) - 1] = input.below(8) == 0;
  declare_fonts(input);
  const std::string source = input.text(), target = input.text();

  std::vector<std::vector<int32_t>> lists;
  const bool matching = input.below(2) != 0;
  const int32_t list_count = matching ? count_words(target) : static_cast<int32_t>(input.below(9));
  for (int32_t k = 0; k < list_count; ++k) {
    std::vector<int32_t> list;
    for (uint32_t n = input.below(4); n > 0; --n)
      list.push_back(matching ? static_cast<int32_t>(input.byte()) : input.number());
    list.push_back(-1);
    lists.push_back(std::move(list));
  }
  std::vector<int32_t *> alignment;
  for (auto &list : lists) alignment.push_back(list.data());
  const size_t room = target.size() + 2;
  alignment.resize(std::max(alignment.size() + 1, room), nullptr);
  const std::vector<int32_t *> own = alignment;

  char *result = CopyFontsString(source.c_str(), target.c_str(), alignment.data());
  require(result != nullptr, "a transfer has a result");
  const std::string text = result;
  Kfree(result);
  for (size_t k = 0; k < alignment.size(); ++k)
    if (alignment[k] != nullptr && std::find(own.begin(), own.end(), alignment[k]) == own.end())
      Kfree(alignment[k]);

  static const char code_bytes[] = "\x1D\x1E\x1F\x90\x91\x94\x95\x96\x97\x98\x99\x9B\x9C\x9D";
  const bool plain_target =
      !words_of(target).empty() && !has_any(target, code_bytes) && words_of(target)[0] != ' ';
  const bool balanced = !has_any(source, "\x1E\x1F") && ends_every_code(source);
  if (matching && plain_target && balanced && count_words(target) == list_count) {
    require(anchors_of(text) == anchors_of(source), "no anchor is lost or doubled");
    require(words_of(text) == words_of(target), "the words of the translation stay as they are");
  }
  P_cleanup_fonts();
  return 0;
}
