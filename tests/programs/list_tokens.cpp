// list_tokens FILE...: the tokens of pages in UTF-8 as kextract reads them, outside of svg and
// math, to be compared with another reader's. For each page its name, then a line per token: the
// kind (S start tag, E end tag, O other), where it begins and ends, the name, and the attributes,
// each with where its value ends.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "programs/html/elements.h"
#include "programs/html/tokenizer.h"

using namespace klib::programs;

namespace {

void print_attributes(std::string_view tag, size_t begin) {
  std::vector<std::string> seen;
  Attribute read;
  for (size_t i = 0; next_attribute(tag, i, read);) {
    const std::string name = lower_case(read.name);
    if (std::ranges::find(seen, name) != seen.end()) continue;
    seen.push_back(name);
    printf(" %s=%zu", name.c_str(), read.begin == 0 ? 0 : begin + read.end);
  }
}

// Where the end tag of an svg or math begins, all of that name inside it being closed.
size_t end_of_drawing(std::string_view page, const Token &start) {
  size_t depth = page[start.end - 2] == '/' ? 0 : 1, i = start.end;
  while (depth > 0 && i < page.size()) {
    const Token token = next_token(page, i);
    if (!token.name.empty() && equal_names(token.name, start.name)) {
      if (token.kind == Token::end_tag) depth--;
      if (token.kind == Token::start_tag && page[token.end - 2] != '/') depth++;
    }
    if (depth > 0) i = token.end;
  }
  return i;
}

void print_tokens(const std::string &page) {
  for (size_t i = 0; i < page.size();) {
    const Token token = next_token(page, i);
    i = token.end;
    if (token.kind == Token::text) continue;
    const std::string name = lower_case(token.name);
    const std::string_view raw =
        std::string_view(page).substr(token.begin, token.end - token.begin);
    printf("%c %zu %zu %s", "TSEO"[token.kind], token.begin, token.end, name.c_str());
    if (token.kind == Token::start_tag) print_attributes(raw, token.begin);
    putchar('\n');
    const Element::Content content = element(name).content;
    if (token.kind == Token::start_tag && (content == Element::raw || content == Element::caption))
      i = end_of_raw_text(page, i, name);
    if (token.kind == Token::start_tag && content == Element::nested)
      i = end_of_drawing(page, token);
  }
}

}  // namespace

int main(int argc, char **argv) {
  for (int i = 1; i < argc; i++) {
    std::ostringstream content;
    content << std::ifstream(argv[i], std::ios::binary).rdbuf();
    printf("P %s\n", argv[i]);
    print_tokens(content.str());
  }
}
