// Whether a page has come back as it was.
#pragma once

#include <string_view>

namespace klib::test {

// How far a page has been read.
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

// Whether the result is the page byte for byte, apart from two differences allowed in running text:
// a run of white space may be one blank, and a character reference may be the character, in UTF-8,
// or another reference to it (what must be a reference stays one). Both places end up after the
// part that is the same.
bool same_pages(Place &page, Place &result);

}  // namespace klib::test
