// Splits an HTML page into text and markup by the tokenization rules of the HTML standard, with the
// exact bytes of every piece: the pieces, one after the other, are the page.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace klib::programs {

struct Token {
  // other: comments, declarations, processing instructions, and a tag that the end of the page cuts
  enum Kind { text, start_tag, end_tag, other };
  Kind kind;
  size_t begin, end;      // in the page
  std::string_view name;  // of a tag, as it is spelled
};

// The token at `position`, which must be before the end.
Token next_token(std::string_view page, size_t position);

// The position after the raw text that follows the start tag of `name` (script, style, title ...),
// where its end tag begins, or the end of the page when it has none.
size_t end_of_raw_text(std::string_view page, size_t position, std::string_view name);

struct Attribute {
  std::string_view name, value;  // as they are written, the value without its quotes
  size_t begin = 0, end = 0;     // of the value with its quotes, in the tag; 0: it has none
};

// Reads the next attribute of a start tag and moves `i`, which is 0 at first; false when there is
// no more. The first one of a name counts, for those who look.
bool next_attribute(std::string_view tag, size_t &i, Attribute &read);

// All of them, in place of what `attributes` has.
void read_attributes(std::string_view tag, std::vector<Attribute> &attributes);

// The first one of this name, or null.
const Attribute *find_attribute(const std::vector<Attribute> &attributes, std::string_view name);

// The value of an attribute of a start tag, without its quotes, or an empty text.
std::string_view attribute(std::string_view tag, std::string_view name);

inline bool is_html_white(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f';
}

// ASCII letters.
inline char lower_case(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }
std::string lower_case(std::string_view text);

// ASCII letters in any case.
inline bool equal_names(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return lower_case(a) == lower_case(b); });
}

}  // namespace klib::programs
