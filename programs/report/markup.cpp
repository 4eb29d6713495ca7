#include "programs/report/markup.h"

#include <algorithm>

#include "programs/common/printable.h"
#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

constexpr int32_t colours = 8;
constexpr size_t longest_title = 200;  // characters of a tag that are shown

// A bracket: where it is, whether it opens or closes, and which element.
struct Bracket {
  enum Kind { open, close, single } kind;
  int32_t number;
  std::string name, title;
};

// The name of the tag that `raw` begins with, or what it is.
std::string name_of(std::string_view raw) {
  if (raw.starts_with("<!--")) return "comment";
  size_t begin = raw.starts_with("</") ? 2 : raw.starts_with('<') ? 1 : raw.size();
  size_t end = begin;
  while (end < raw.size() && std::string_view(" \t\r\n\f/>").find(raw[end]) == raw.npos) end++;
  std::string name(raw.substr(begin, std::min<size_t>(end - begin, 20)));
  return name.empty() ? "markup" : name;
}

struct Writer {
  const Sentence &sentence;
  AnchorFile *anchors;
  std::string &html;
  int32_t open_fonts[font_group_count] = {};
  bool in_word = false, was_in_word = false;

  Bracket bracket(const Code &code);
  void write(const Bracket &bracket);
  void write_code(const Code &code);
  void close_word();
};

Bracket Writer::bracket(const Code &code) {
  Bracket bracket{Bracket::single, code.number, code.is_font() ? font_groups[code.group] : "#", {}};
  if (code.is_font()) bracket.kind = Bracket::open;
  if (!anchors || !anchors->has(code.number)) return bracket;
  const Anchor anchor = anchors->read(code.number);
  bracket.name = name_of(anchor.raw);
  bracket.title = anchor.raw;
  if (anchor.kind == Anchor::open || anchor.kind == Anchor::opens_out) bracket.kind = Bracket::open;
  if (anchor.kind == Anchor::close || anchor.kind == Anchor::closes_from)
    bracket.kind = Bracket::close;
  if (anchor.kind == Anchor::close) bracket.number = anchor.partner;
  return bracket;
}

void Writer::close_word() {
  if (in_word) html += "</w>";
  was_in_word = in_word || was_in_word;
  in_word = false;
}

void Writer::write(const Bracket &bracket) {
  close_word();
  html.append("<b class=k").append(std::to_string(bracket.number % colours));
  if (!bracket.title.empty()) {
    size_t end = 0;
    for (size_t i = 0; i < longest_title && end < bracket.title.size(); i++)
      if (next_utf8(bracket.title, end) == invalid_utf8) end++;
    html += " title=\"";
    append_escaped(std::string_view(bracket.title).substr(0, end), html);
    html += '"';
  }
  html += '>';
  if (bracket.kind != Bracket::close) html += "⟨";
  append_escaped(bracket.name, html);
  if (bracket.kind != Bracket::open) html += "⟩";
  html += "</b>";
}

// A font ends where another one of its group is selected.
void Writer::write_code(const Code &code) {
  if (code.is_font() && open_fonts[code.group] != 0) {
    Bracket end = bracket({code.at, open_fonts[code.group], code.group});
    end.kind = Bracket::close;
    write(end);
  }
  if (code.is_font()) open_fonts[code.group] = code.number;
  if (!code.is_font() || code.number != 0) write(bracket(code));
}

// The text of a sentence with blanks between its tokens, read along with the sentence.
struct TokenEdges {
  std::string_view tokens;
  size_t position = 0;

  // Whether a token begins with this character, the next one that is no blank. Where the texts
  // differ, there are no more tokens.
  bool is_edge(char32_t c) {
    const size_t begin = std::min(tokens.find_first_not_of(' ', position), tokens.size());
    const bool is_parted = begin > position;
    position = begin;
    if (position < tokens.size() && next_utf8(tokens, position) == c) return is_parted;
    position = tokens.size();
    return false;
  }
};

}  // namespace

void append_escaped(std::string_view utf8, std::string &html) {
  for (size_t position = 0; position < utf8.size();) {
    const size_t begin = position;
    const char32_t c = next_utf8(utf8, position);
    if (c == invalid_utf8) {
      html += "\xEF\xBF\xBD";
      position++;
    } else if (c == '<') {
      html += "&lt;";
    } else if (c == '>') {
      html += "&gt;";
    } else if (c == '&') {
      html += "&amp;";
    } else if (c == '"') {
      html += "&quot;";
    } else if (c == '\'') {
      html += "&#39;";
    } else if (c == '\n' || c == '\t' || is_printable(c)) {
      html += utf8.substr(begin, position - begin);
    } else {
      char number[16];
      snprintf(number, sizeof number, "{U+%04X}", static_cast<unsigned>(c));
      html += number;
    }
  }
}

int64_t append_sentence_html(const Sentence &sentence, AnchorFile *anchors, std::string_view tokens,
                             std::string &html) {
  Writer writer{sentence, anchors, html, {}, false, false};
  TokenEdges edges{tokens};
  int64_t words = 0;
  size_t code = 0;
  const std::vector<Code> &codes = sentence.codes;
  for (size_t i = 0; i <= sentence.text.size(); i++) {
    for (; code < codes.size() && codes[code].at <= i; code++) writer.write_code(codes[code]);
    if (i == sentence.text.size()) break;
    const char32_t c = sentence.text[i] & ~bare_flag;
    if (c == ' ') {
      writer.close_word();
      writer.was_in_word = false;
      html += ' ';
      continue;
    }
    if (edges.is_edge(c)) {
      writer.close_word();
      writer.was_in_word = false;
    }
    if (!writer.in_word) {
      html += writer.was_in_word ? "<w c>" : "<w>";
      words += writer.was_in_word ? 0 : 1;
      writer.in_word = true;
    }
    std::string text;
    append_utf8(c, text);
    append_escaped(text, html);
  }
  writer.close_word();
  for (int group = 0; group < font_group_count; group++)
    if (writer.open_fonts[group] != 0) writer.write_code({sentence.text.size(), 0, group});
  return words;
}

}  // namespace klib::programs
