#include "programs/html/attributes.h"

#include <algorithm>

#include "programs/common/languages.h"
#include "programs/common/sentence.h"
#include "programs/common/utf8.h"
#include "programs/html/boundaries.h"
#include "programs/html/text_reader.h"

namespace klib::programs {
namespace {

// Attributes that are texts, and the elements that have them: of all when the list is empty, of all
// but those when it begins with '!'.
constexpr struct {
  std::string_view name, elements;
} texts[] = {
    {"title", "! link style "},
    {"alt", ""},
    {"placeholder", ""},
    {"aria-label", ""},
    {"aria-description", ""},
    {"summary", " table "},
    {"label", " option optgroup track "},
    {"abbr", " th "},
};

constexpr std::string_view looked_at[] = {
    "title", "alt",   "placeholder", "aria-label", "aria-description", "summary", "label",
    "abbr",  "value", "content",     "lang",       "xml:lang",         "dir"};

constexpr std::string_view described[] = {"description",    "keywords",      "og:title",
                                          "og:description", "twitter:title", "twitter:description"};

bool has_any(const std::vector<Attribute> &attributes, std::string_view name, const auto &values) {
  const Attribute *const found = find_attribute(attributes, name);
  return found && std::ranges::any_of(values, [&](std::string_view value) {
           return equal_names(found->value, value);
         });
}

bool is_text(std::string_view element, const std::vector<Attribute> &attributes,
             std::string_view attribute) {
  const std::string name = ' ' + lower_case(element) + ' ';
  for (const auto &row : texts) {
    if (!equal_names(row.name, attribute)) continue;
    if (row.elements.empty()) return true;
    return (row.elements.find(name) != row.elements.npos) != row.elements.starts_with('!');
  }
  if (equal_names(element, "input") && equal_names(attribute, "value")) {
    constexpr std::string_view buttons[] = {"submit", "reset", "button"};
    return has_any(attributes, "type", buttons);
  }
  return equal_names(element, "meta") && equal_names(attribute, "content") &&
         (has_any(attributes, "name", described) || has_any(attributes, "property", described));
}

bool has_letters(std::string_view written) {
  return std::ranges::any_of(read_value(written),
                             [](char32_t c) { return is_letter_or_digit(c & ~bare_flag); });
}

char quote_of(std::string_view written) {
  return written.starts_with('"') || written.starts_with('\'') ? written[0] : '\0';
}

std::string_view without_quotes(std::string_view written) {
  const char quote = quote_of(written);
  if (quote == '\0') return written;
  written.remove_prefix(1);
  if (written.ends_with(quote)) written.remove_suffix(1);
  return written;
}

// The position after white space at `i`, which may be written as a reference.
size_t end_of_white(std::string_view value, size_t i) {
  constexpr std::string_view references[] = {"&#9;",  "&#10;", "&#13;", "&#32;", "&#x9;",
                                             "&#xA;", "&#xa;", "&#xD;", "&#xd;", "&#x20;"};
  while (i < value.size()) {
    if (is_html_white(value[i])) {
      i++;
      continue;
    }
    if (value[i] != '&') break;
    const auto reference = std::ranges::find_if(
        references, [&](std::string_view text) { return value.substr(i).starts_with(text); });
    if (reference == std::end(references)) break;
    i += reference->size();
  }
  return i;
}

bool needs_quotes(char32_t c) {
  return c <= 0x20 || c == '"' || c == '\'' || c == '=' || c == '<' || c == '>' || c == '`';
}

}  // namespace

void find_slots(std::string_view page, const Token &token, const std::vector<Attribute> &attributes,
                const Protection &protection, std::vector<Slot> &slots) {
  if (attributes.empty() || protection.protects(token.name, attributes)) return;
  const std::string_view tag = page.substr(token.begin, token.end - token.begin);
  const auto names_own_language = [&](std::string_view name) {
    const Attribute *const found = find_attribute(attributes, name);
    return found && protection.is_own_language(found->value);
  };
  const bool is_root = equal_names(token.name, "html");
  const bool own_language = names_own_language("lang") || names_own_language("xml:lang");
  if (is_root && own_language && !find_attribute(attributes, "dir")) {
    const size_t at = token.begin + 1 + token.name.size();
    slots.push_back({Slot::direction, at, at});
  }
  std::vector<std::string_view> seen;  // a later attribute of the same name has no meaning
  for (const Attribute &read : attributes) {
    const auto is_same = [&](std::string_view name) { return equal_names(name, read.name); };
    if (std::ranges::none_of(looked_at, is_same) || std::ranges::any_of(seen, is_same)) continue;
    seen.push_back(read.name);
    if (read.begin == 0) continue;
    Slot slot{Slot::text, token.begin + read.begin, token.begin + read.end};
    if (equal_names(read.name, "lang") || equal_names(read.name, "xml:lang")) {
      if (!protection.is_own_language(read.value)) continue;
      slot.kind = Slot::language;
    } else if (equal_names(read.name, "dir")) {
      if (!is_root && !equal_names(token.name, "body") && !own_language) continue;
      slot.kind = Slot::direction;
    } else if (!is_text(token.name, attributes, read.name) ||
               !has_letters(tag.substr(read.begin, read.end - read.begin))) {
      continue;
    }
    slots.push_back(slot);
  }
}

std::u32string read_value(std::string_view written) {
  std::u32string text;
  const std::string_view value = without_quotes(written);
  for (size_t i = 0; i < value.size();) {
    i = end_of_white(value, i);
    const size_t begin = i;
    while (i < value.size() && end_of_white(value, i) == i) i++;
    if (begin == i) break;
    if (!text.empty()) text += U' ';
    read_text(value.substr(begin, i - begin), text);
  }
  return text;
}

void write_value(std::string_view written, std::u32string_view text, std::string &result) {
  char quote = quote_of(written);
  if (quote == '\0' && (text.empty() || std::ranges::any_of(text, needs_quotes))) quote = '"';
  if (quote != '\0') result += quote;
  for (const char32_t flagged : text) {
    const char32_t c = flagged & ~bare_flag;
    if (c == '&')
      result += "&amp;";
    else if (c == '<')
      result += "&lt;";
    else if (c == '"' && quote == '"')
      result += "&quot;";
    else if (c == '\'' && quote == '\'')
      result += "&#39;";
    else
      append_utf8(c, result);
  }
  if (quote != '\0') result += quote;
}

void write_for_language(std::string_view key, std::string_view written, const std::string &from,
                        const std::string &to, std::string &result) {
  std::string value = language_code(to);
  if (key == "dir") {
    const bool before = is_right_to_left(from), after = is_right_to_left(to);
    value = after ? "rtl" : "ltr";
    if (written.empty()) {
      if (before != after && after) result += " dir=\"rtl\"";
      return;
    }
    if (before == after || !equal_names(without_quotes(written), before ? "rtl" : "ltr")) {
      result += written;
      return;
    }
  }
  write_value(written, std::u32string(value.begin(), value.end()), result);
}

}  // namespace klib::programs
