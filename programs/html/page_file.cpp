// Pages and their encodings. A page declares its encoding in its first 1024 bytes, by a meta
// element, or else by an XML declaration.
#include "programs/html/page_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "programs/common/input_file.h"
#include "programs/common/program.h"
#include "programs/common/utf8.h"
#include "programs/html/conversion.h"
#include "programs/html/tokenizer.h"

namespace klib::programs {
namespace {

constexpr size_t declared_within = 1024;

int64_t line_of(std::string_view text, size_t position) {
  return 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n');
}

std::string read_file(const char *name) {
  const InputFile file = open_input(name);
  std::string bytes;
  char part[1 << 16];
  size_t count;
  while ((count = fread(part, 1, sizeof part, file.get())) > 0) {
    bytes.append(part, count);
    if (bytes.size() > INT32_MAX) fail(name, 0, "is too large: 2 GiB is the limit");
  }
  if (ferror(file.get())) fail_reading(name);
  return bytes;
}

// What a meta element declares, or an empty text.
std::string_view declared_by(std::string_view tag) {
  const std::string_view charset = attribute(tag, "charset");
  if (!charset.empty() || !equal_names(attribute(tag, "http-equiv"), "content-type"))
    return charset;
  const std::string_view content = attribute(tag, "content");
  size_t i = lower_case(content).find("charset");
  if (i == std::string_view::npos) return {};
  i = std::min(content.find_first_not_of(" \t\r\n\f=\"'", i + 7), content.size());
  return content.substr(i, content.find_first_of(" \t\r\n\f;\"'", i) - i);
}

// What an XML declaration at the beginning of the page declares, or an empty text.
std::string_view declared_by_xml(std::string_view head) {
  constexpr std::string_view word = "encoding";
  if (!head.starts_with("<?xml")) return {};
  head = head.substr(0, head.find('>'));
  const size_t found = head.find(word);
  if (found == std::string_view::npos) return {};
  size_t i = std::min(head.find_first_not_of(" \t\r\n\f", found + word.size()), head.size());
  if (i == head.size() || head[i] != '=') return {};
  i = std::min(head.find_first_not_of(" \t\r\n\f", i + 1), head.size());
  if (i == head.size() || (head[i] != '"' && head[i] != '\'')) return {};
  const size_t end = head.find(head[i], i + 1);
  return end == std::string_view::npos ? std::string_view() : head.substr(i + 1, end - i - 1);
}

// The label that the page declares, and in `line` where; an empty text when there is none.
std::string_view declared_label(std::string_view page, int64_t &line) {
  const std::string_view head = page.substr(0, declared_within);
  for (size_t i = 0; i < head.size();) {
    const Token token = next_token(head, i);
    i = token.end;
    if (token.kind != Token::start_tag) continue;
    if (equal_names(token.name, "script") || equal_names(token.name, "style"))
      i = end_of_raw_text(head, i, token.name);
    if (!equal_names(token.name, "meta")) continue;
    const std::string_view label = declared_by(head.substr(token.begin, token.end - token.begin));
    line = line_of(head, token.begin);
    if (!label.empty()) return label;
  }
  line = 1;
  return declared_by_xml(head);
}

const Encoding &known_encoding(const char *name, int64_t line, std::string_view label) {
  const Encoding *encoding = encoding_of_label(label);
  if (!encoding) fail(name, line, "unknown encoding '%s'", readable(label).c_str());
  if (encoding->kind == Encoding::refused)
    fail(name, line, "the encoding '%s' is not safe to read, in a browser either: convert the page",
         readable(label).c_str());
  return *encoding;
}

// The encoding of a page, and in `assumed` whether nothing says so.
const Encoding &choose(const char *name, std::string_view bytes, const std::string &undeclared,
                       bool &assumed) {
  assumed = false;
  if (bytes.starts_with("\xEF\xBB\xBF")) return *encoding_of_name("UTF-8");
  if (bytes.starts_with("\xFF\xFE")) return *encoding_of_name("UTF-16LE");
  if (bytes.starts_with("\xFE\xFF")) return *encoding_of_name("UTF-16BE");
  int64_t line = 0;
  if (const std::string_view label = declared_label(bytes, line); !label.empty()) {
    const Encoding &declared = known_encoding(name, line, label);
    // A page in which the declaration can be read is not UTF-16.
    return declared.name.starts_with("UTF-16") ? *encoding_of_name("UTF-8") : declared;
  }
  if (!undeclared.empty()) return known_encoding(name, 0, undeclared);
  assumed = true;
  const bool ascii = ascii_length(bytes) == bytes.size();
  return ascii ? ascii_encoding() : *encoding_of_name("UTF-8");
}

// Whether the page can be brought to UTF-8 and back; otherwise `fault` says why not and where.
bool convert(const std::string &bytes, const Encoding &encoding, Document &page, std::string &fault,
             int64_t &line) {
  page.encoding = encoding.name;
  if (!decode(encoding, bytes, page.text)) {
    fault = "is not valid " + page.encoding;
    line = line_of(page.text, page.text.size());
    return false;
  }
  if (encoding.kind == Encoding::utf8) return true;  // the bytes are the text
  std::string back;
  PageEncoder encoder(encoding.name);
  encoder.append(page.text, back);
  encoder.finish(back);
  if (back == bytes) return true;
  fault = "would not come back from UTF-8 as it is in " + page.encoding + ": convert it first";
  const auto differs = std::mismatch(bytes.begin(), bytes.end(), back.begin(), back.end()).first;
  line = line_of(bytes, static_cast<size_t>(differs - bytes.begin()));
  return false;
}

}  // namespace

Document read_page(const char *given_name, const std::string &undeclared) {
  const std::string bytes = read_file(given_name);
  const char *name = input_name(given_name);
  Document page;
  std::string fault;
  int64_t line = 0;
  bool assumed = false;
  const Encoding &encoding = choose(name, bytes, undeclared, assumed);
  bool good = convert(bytes, encoding, page, fault, line);
  if (const Encoding *other = next_encoding(encoding); !good && other) {
    std::string unused;
    int64_t no_line;
    good = convert(bytes, *other, page, unused, no_line);
  }
  if (!good && assumed)
    fault += ", which was assumed: the page does not say what it is, but --encoding NAME can";
  if (!good) fail(name, line, "%s", fault.c_str());
  const size_t nul = page.text.find('\0');
  if (nul != std::string::npos) fail(name, line_of(page.text, nul), "holds a NUL character");
  return page;
}

}  // namespace klib::programs
