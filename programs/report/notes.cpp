// A record is a JSON object on a line of its own, as common/tell.h writes it; what else it may have
// is passed over.
#include "programs/report/notes.h"

#include <algorithm>
#include <charconv>

#include "programs/common/line_reader.h"
#include "programs/common/program.h"
#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

struct Fields {
  std::string severity, kind, file, text;
  int64_t line = 0, sentence = no_sentence;
};

// Reads one object; every function returns false where the text is not JSON.
struct JsonReader {
  std::string_view text;
  size_t at = 0;

  bool take(char c) {
    while (at < text.size() && is_white(text[at])) at++;
    if (at == text.size() || text[at] != c) return false;
    return at++, true;
  }
  bool read_escape(std::string &value);
  bool read_hexadecimal(char32_t &unit);
  bool read_string(std::string &value);
  bool read_number(int64_t &number);
  bool skip_value();
  bool read_members(Fields &fields);
};

bool JsonReader::read_hexadecimal(char32_t &unit) {
  uint32_t value = 0;
  if (text.size() - at < 4) return false;
  const auto [end, error] = std::from_chars(text.data() + at, text.data() + at + 4, value, 16);
  if (error != std::errc() || end != text.data() + at + 4) return false;
  at += 4;
  unit = value;
  return true;
}

bool JsonReader::read_escape(std::string &value) {
  constexpr std::string_view names = "\"\\/bfnrt", characters = "\"\\/\b\f\n\r\t";
  if (at == text.size()) return false;
  const char name = text[at++];
  if (const size_t place = names.find(name); place != names.npos) {
    value += characters[place];
    return true;
  }
  char32_t unit = 0, second = 0;
  if (name != 'u' || !read_hexadecimal(unit)) return false;
  const size_t after = at;
  if (unit >= 0xD800 && unit < 0xDC00 && text.substr(at).starts_with("\\u") &&
      (at += 2, read_hexadecimal(second)) && second >= 0xDC00 && second < 0xE000)
    unit = 0x10000 + ((unit - 0xD800) << 10) + (second - 0xDC00);
  else
    at = after;
  append_utf8(unit >= 0xD800 && unit < 0xE000 ? U'\uFFFD' : unit, value);
  return true;
}

bool JsonReader::read_string(std::string &value) {
  value.clear();
  if (!take('"')) return false;
  while (at < text.size()) {
    const char c = text[at++];
    if (c == '"') return true;
    if (c != '\\')
      value += c;
    else if (!read_escape(value))
      return false;
  }
  return false;
}

bool JsonReader::read_number(int64_t &number) {
  while (at < text.size() && is_white(text[at])) at++;
  const auto [end, error] = std::from_chars(text.data() + at, text.data() + text.size(), number);
  at = static_cast<size_t>(end - text.data());
  return error == std::errc();
}

// To the comma or brace after a value of any kind.
bool JsonReader::skip_value() {
  std::string string;
  for (size_t depth = 0; at < text.size();) {
    const char c = text[at];
    if (c == '"') {
      if (!read_string(string)) return false;
      continue;
    }
    if (depth == 0 && (c == ',' || c == '}')) return true;
    if (c == '{' || c == '[') depth++;
    if ((c == '}' || c == ']') && depth-- == 0) return false;
    at++;
  }
  return false;
}

bool JsonReader::read_members(Fields &fields) {
  if (!take('{')) return false;
  for (bool first = true; !take('}'); first = false) {
    std::string name;
    if ((!first && !take(',')) || !read_string(name) || !take(':')) return false;
    bool good;
    if (name == "severity")
      good = read_string(fields.severity);
    else if (name == "kind")
      good = read_string(fields.kind);
    else if (name == "file")
      good = read_string(fields.file);
    else if (name == "text")
      good = read_string(fields.text);
    else if (name == "line")
      good = read_number(fields.line);
    else if (name == "sentence")
      good = read_number(fields.sentence);
    else
      good = skip_value();
    if (!good) return false;
  }
  return true;
}

}  // namespace

ReportNote make_note(const std::string &kind, int64_t sentence, std::string text) {
  const char *const badge = badge_of(kind, text);
  return {sentence, badge, std::move(text)};
}

std::vector<ReportNote> read_notes(const char *name, std::span<const std::string> names) {
  std::vector<ReportNote> notes;
  for (LineReader lines(name); lines.next();) {
    JsonReader reader{lines.line()};
    Fields fields;
    if (!reader.read_members(fields) || fields.severity.empty())
      fail(name, lines.number(), "is no record: name a file that --report has written");
    if (fields.severity == "data" || fields.kind == "totals") continue;
    if (!names.empty() && std::ranges::find(names, fields.file) == names.end()) continue;
    if (fields.sentence == no_sentence && fields.line > 0)
      fields.text = fields.file + ":" + std::to_string(fields.line) + ": " + fields.text;
    notes.push_back(make_note(fields.kind, fields.sentence, std::move(fields.text)));
  }
  return notes;
}

}  // namespace klib::programs
