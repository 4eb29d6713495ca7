// compare_pages PAGE RESULT: whether RESULT is PAGE byte for byte, but for two freedoms in running
// text: a run of white space may be one blank, and a character reference may be the character or
// another reference to it (what must be a reference stays one). Says where they differ otherwise.
//
// The pages must be in an encoding that has ASCII as it is. A page in UTF-8 may have its references
// as characters of UTF-8, another one only as references.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "programs/html_elements.h"
#include "programs/html_references.h"
#include "programs/html_tokenizer.h"
#include "programs/utf8.h"

using namespace klib::programs;

namespace {

struct Place {
  std::string_view text;
  size_t at = 0;

  bool at_end() const { return at == text.size(); }
  bool take(std::string_view expected) {
    if (text.compare(at, expected.size(), expected) != 0) return false;
    at += expected.size();
    return true;
  }
};

size_t end_of_white(std::string_view text, size_t i) {
  while (i < text.size() && is_html_white(text[i])) i++;
  return i;
}

bool same_white(Place &page, size_t end, Place &result) {
  const std::string_view run =
      page.text.substr(page.at, std::min(end, end_of_white(page.text, page.at)) - page.at);
  page.at += run.size();
  return result.take(run) || result.take(" ");
}

// A reference of the page, whose character and end are given, against what the result has.
bool same_reference(Place &page, size_t end, char32_t character, Place &result) {
  const std::string_view reference = page.text.substr(page.at, end - page.at);
  page.at = end;
  if (result.take(reference)) return true;
  size_t result_end = 0;
  if (!result.at_end() && result.text[result.at] == '&' &&
      read_reference(result.text, result.at, result_end) == character) {
    result.at = result_end;
    return true;
  }
  std::string itself;
  append_utf8(character, itself);
  return character != '<' && character != '&' && result.take(itself);
}

bool same_text(Place &page, size_t end, Place &result) {
  while (page.at < end) {
    size_t reference_end = 0;
    const char c = page.text[page.at];
    const char32_t meant = c == '&' ? read_reference(page.text, page.at, reference_end) : 0;
    if (is_html_white(c)) {
      if (!same_white(page, end, result)) return false;
    } else if (meant) {
      if (!same_reference(page, reference_end, meant, result)) return false;
    } else if (!result.take(page.text.substr(page.at++, 1))) {
      return false;
    }
  }
  return true;
}

bool same_bytes(Place &page, size_t end, Place &result) {
  const bool same = result.take(page.text.substr(page.at, end - page.at));
  page.at = end;
  return same;
}

// Where the content that may not change ends behind a start tag.
size_t end_of_kept(std::string_view page, const Token &tag) {
  const Element::Content content = element(tag.name).content;
  if (content == Element::raw) return end_of_raw_text(page, tag.end, tag.name);
  if (!equal_names(tag.name, "pre")) return tag.end;
  const size_t end = lower_case(page).find("</pre", tag.end);
  return std::min(end, page.size());
}

bool same_pages(Place &page, Place &result) {
  while (!page.at_end()) {
    const Token token = next_token(page.text, page.at);
    if (token.kind == Token::text) {
      if (!same_text(page, token.end, result)) return false;
      continue;
    }
    const size_t end = token.kind == Token::start_tag ? end_of_kept(page.text, token) : token.end;
    if (!same_bytes(page, end, result)) return false;
  }
  return result.at_end();
}

std::string read(const char *name) {
  std::ostringstream content;
  content << std::ifstream(name, std::ios::binary).rdbuf();
  return content.str();
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 3) return 2;
  const std::string first = read(argv[1]), second = read(argv[2]);
  Place page{first}, result{second};
  if (same_pages(page, result)) return 0;
  const auto line =
      1 + std::count(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(page.at), '\n');
  printf("%s:%ld: comes back as '%.40s'\n", argv[1], static_cast<long>(line),
         second.c_str() + std::min(result.at, second.size()));
  return 1;
}
