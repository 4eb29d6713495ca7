// The tokenizer follows the states of the standard as far as they decide where a piece ends:
//
//   '<' letter       start tag, to the first '>' outside of quoted attribute values
//   '</' letter      end tag, likewise
//   '<!--'           comment, to '-->' or '--!>'; '<!-->' and '<!--->' are whole comments
//   '<!' '<?' '</'   declaration, instruction or bogus comment, to the first '>'
//   anything else    text, to the next '<' that begins one of these
//
// A piece that the page's end cuts is whole there. Every byte is looked at a fixed number of times.
#include "programs/html/tokenizer.h"

#include <algorithm>

namespace klib::programs {
namespace {

bool is_letter(char c) { return lower_case(c) >= 'a' && lower_case(c) <= 'z'; }

// Whether `page` has `word`, given in lower case, at `position`, in any case.
bool stands_at(std::string_view page, size_t position, std::string_view word) {
  return position <= page.size() && equal_names(page.substr(position, word.size()), word);
}

bool ends_name(char c) { return is_html_white(c) || c == '/' || c == '>'; }

size_t skip_white(std::string_view page, size_t i) {
  while (i < page.size() && is_html_white(page[i])) i++;
  return i;
}

// Reads one attribute of a tag from `i`, which is neither white nor '/' nor '>', and returns the
// position after it.
size_t read_attribute(std::string_view page, size_t i, Attribute &read) {
  const size_t name = i++;  // a '=' in the first place belongs to the name
  while (i < page.size() && !ends_name(page[i]) && page[i] != '=') i++;
  read = {page.substr(name, i - name), {}};
  const size_t equals = skip_white(page, i);
  if (equals == page.size() || page[equals] != '=') return i;
  i = skip_white(page, equals + 1);
  if (i == page.size() || page[i] == '>') return i;
  if (page[i] == '"' || page[i] == '\'') {
    const size_t close = std::min(page.find(page[i], i + 1), page.size());
    read.value = page.substr(i + 1, close - i - 1);
    read.begin = i;
    return read.end = std::min(close + 1, page.size());
  }
  const size_t value = i;
  while (i < page.size() && !is_html_white(page[i]) && page[i] != '>') i++;
  read.value = page.substr(value, i - value);
  read.begin = value;
  return read.end = i;
}

// The position after the tag whose name begins at `i`, or npos when the page ends before its '>'.
size_t end_of_tag(std::string_view page, size_t i) {
  Attribute unused;
  while (i < page.size() && !ends_name(page[i])) i++;
  while (i < page.size()) {
    if (page[i] == '>') return i + 1;
    if (is_html_white(page[i]) || page[i] == '/')
      i++;
    else
      i = read_attribute(page, i, unused);
  }
  return std::string_view::npos;
}

Token tag(std::string_view page, size_t begin, size_t name, Token::Kind kind) {
  const size_t end = end_of_tag(page, name);
  if (end == std::string_view::npos) return {Token::other, begin, page.size(), {}};
  size_t name_end = name;
  while (!ends_name(page[name_end])) name_end++;
  return {kind, begin, end, page.substr(name, name_end - name)};
}

size_t end_of_comment(std::string_view page, size_t i) {
  if (page.substr(i).starts_with(">")) return i + 1;
  if (page.substr(i).starts_with("->")) return i + 2;
  while ((i = page.find("--", i)) != std::string_view::npos) {
    if (page.substr(i).starts_with("-->")) return i + 3;
    if (page.substr(i).starts_with("--!>")) return i + 4;
    i++;
  }
  return page.size();
}

size_t after(std::string_view page, char c, size_t i) {
  const size_t found = page.find(c, i);
  return found == std::string_view::npos ? page.size() : found + 1;
}

bool begins_markup(std::string_view page, size_t i) {
  if (i + 1 >= page.size()) return false;
  const char c = page[i + 1];
  return is_letter(c) || c == '!' || c == '/' || c == '?';
}

// Whether an end tag of `name` begins at `i`.
bool is_end_tag_of(std::string_view page, size_t i, std::string_view name) {
  const size_t behind_name = i + 2 + name.size();
  return page.substr(i).starts_with("</") && stands_at(page, i + 2, name) &&
         behind_name < page.size() && ends_name(page[behind_name]);
}

// Whether a start or end tag of script is at `i`, as far as the content of scripts looks at it.
bool is_script_tag(std::string_view page, size_t i, std::string_view opening) {
  const size_t behind_name = i + opening.size();
  return stands_at(page, i, opening) && behind_name < page.size() && ends_name(page[behind_name]);
}

// A script may hold "<!--", and after it "<script": the next "</script" is then text.
size_t end_of_script(std::string_view page, size_t i) {
  bool in_comment = false, doubly = false;
  for (; i < page.size(); i++) {
    if (page[i] != '<' && page[i] != '-') continue;
    const std::string_view rest = page.substr(i);
    if (in_comment && rest.starts_with("-->"))
      in_comment = doubly = false;
    else if (!in_comment && rest.starts_with("<!--"))
      in_comment = true, i += 1;  // its dashes may also be those of "-->"
    else if (in_comment && !doubly && is_script_tag(page, i, "<script"))
      doubly = true;
    else if (is_script_tag(page, i, "</script")) {
      if (!doubly) return i;
      doubly = false;
    }
  }
  return page.size();
}

}  // namespace

Token next_token(std::string_view page, size_t position) {
  const size_t i = position;
  if (page[i] == '<' && begins_markup(page, i)) {
    const char c = page[i + 1];
    if (is_letter(c)) return tag(page, i, i + 1, Token::start_tag);
    if (c == '/' && i + 2 < page.size() && is_letter(page[i + 2]))
      return tag(page, i, i + 2, Token::end_tag);
    const size_t end =
        page.substr(i).starts_with("<!--") ? end_of_comment(page, i + 4) : after(page, '>', i);
    return {Token::other, i, end, {}};
  }
  size_t end = page.find('<', i + 1);
  while (end != std::string_view::npos && !begins_markup(page, end)) end = page.find('<', end + 1);
  return {Token::text, i, std::min(end, page.size()), {}};
}

size_t end_of_raw_text(std::string_view page, size_t i, std::string_view name) {
  if (equal_names(name, "plaintext")) return page.size();
  if (equal_names(name, "script")) return end_of_script(page, i);
  while ((i = page.find('<', i)) != std::string_view::npos) {
    if (is_end_tag_of(page, i, name)) return i;
    i++;
  }
  return page.size();
}

bool next_attribute(std::string_view tag, size_t &i, Attribute &read) {
  if (i == 0)
    while (++i < tag.size() && !ends_name(tag[i])) continue;
  while (i < tag.size() && (is_html_white(tag[i]) || tag[i] == '/')) i++;
  if (i >= tag.size() || tag[i] == '>') return false;
  i = read_attribute(tag, i, read);
  return true;
}

void read_attributes(std::string_view tag, std::vector<Attribute> &attributes) {
  attributes.clear();
  Attribute read;
  for (size_t i = 0; next_attribute(tag, i, read);) attributes.push_back(read);
}

const Attribute *find_attribute(const std::vector<Attribute> &attributes, std::string_view name) {
  for (const Attribute &one : attributes)
    if (equal_names(one.name, name)) return &one;
  return nullptr;
}

std::string_view attribute(std::string_view tag, std::string_view name) {
  Attribute read;
  for (size_t i = 0; next_attribute(tag, i, read);)
    if (equal_names(read.name, name)) return read.value;
  return {};
}

std::string lower_case(std::string_view text) {
  std::string result(text);
  for (char &c : result) c = lower_case(c);
  return result;
}

}  // namespace klib::programs
