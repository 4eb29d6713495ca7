// Tokens of a line, its own and those of other tokenisers.
#include "programs/align/tokens.h"

#include "programs/align/characters.h"
#include "programs/common/line_reader.h"
#include "programs/common/utf8.h"

namespace klib::programs::align {
namespace {

struct Escape {
  std::string_view name;
  char character;
};
constexpr Escape escapes[] = {
    {"&apos;", '\''}, {"&quot;", '"'}, {"&amp;", '&'}, {"&lt;", '<'},
    {"&gt;", '>'},    {"&#124;", '|'}, {"&#91;", '['}, {"&#93;", ']'},
};

constexpr std::string_view goes_on = "@@", begins = "\xE2\x96\x81";  // U+2581

// The text with escapes as their characters.
std::string without_escapes(std::string_view token) {
  std::string text;
  while (!token.empty()) {
    const Escape *found = nullptr;
    for (const Escape &escape : escapes)
      if (token.starts_with(escape.name)) found = &escape;
    text += found ? found->character : token[0];
    token.remove_prefix(found ? found->name.size() : 1);
  }
  return text;
}

// The text without the marks of parts of words.
std::string_view without_marks(std::string_view token) {
  while (token.starts_with(begins)) token.remove_prefix(begins.size());
  if (token.ends_with(goes_on)) token.remove_suffix(goes_on.size());
  // A hyphen that was inside a word: @-@.
  if (token.size() >= 3 && token.starts_with('@') && token.ends_with('@'))
    token = token.substr(1, token.size() - 2);
  return token;
}

void skip_white(std::string_view line, size_t &position) {
  while (position < line.size() && is_white(line[position])) position++;
}

// Whether the text is in the line from the position, which then moves past it.
bool find_text(std::string_view line, std::string_view text, size_t &position) {
  size_t here = position;
  for (size_t next = 0; next < text.size();) {
    if (here == line.size()) return false;
    const char32_t wanted = next_character(text, next);
    const char32_t found = next_character(line, here);
    if (wanted != found && folded(wanted) != folded(found)) return false;
  }
  position = here;
  return true;
}

// Finds a token as it is written, without escapes, and without marks, whichever comes first.
bool find_token(std::string_view line, std::string_view token, size_t &position) {
  if (find_text(line, token, position) || find_text(line, without_escapes(token), position))
    return true;
  const std::string_view bare = without_marks(token);
  return find_text(line, bare, position) || find_text(line, without_escapes(bare), position);
}

}  // namespace

void divide_into_tokens(std::string_view line, std::vector<Unit> &units,
                        std::vector<Token> &tokens) {
  tokens.clear();
  size_t position = 0;
  for (size_t first = 0, end; first < units.size(); first = end) {
    const int32_t word = units[first].word;
    bool divided = false;
    for (end = first; end < units.size() && units[end].word == word; end++)
      divided = divided || units[end].without_blanks;
    const std::string_view text = next_word(line, position);
    const auto begin = static_cast<size_t>(text.data() - line.data());
    tokens.push_back({begin, begin + text.size()});
    for (size_t i = first; i < end; i++) {
      if (divided && i > first) {
        const auto edge = static_cast<size_t>(units[i].begin);
        tokens.back().end = edge;
        tokens.push_back({edge, begin + text.size()});
      }
      units[i].word = static_cast<int32_t>(tokens.size()) - 1;
    }
  }
}

std::string token_line(std::string_view line, const std::vector<Token> &tokens) {
  std::string text;
  for (const Token &token : tokens) {
    if (!text.empty()) text += ' ';
    text += line.substr(token.begin, token.end - token.begin);
  }
  return text += '\n';
}

bool find_tokens(std::string_view line, std::string_view tokenised, std::vector<Token> &tokens) {
  tokens.clear();
  size_t position = 0, next = 0;
  for (std::string_view token; !(token = next_word(tokenised, next)).empty();) {
    skip_white(line, position);
    const size_t begin = position;
    if (!find_token(line, token, position)) return false;
    tokens.push_back({begin, position});
  }
  skip_white(line, position);
  return position == line.size();
}

}  // namespace klib::programs::align
