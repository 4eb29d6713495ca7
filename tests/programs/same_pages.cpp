// The comparison of a page with its result. What is running text is decided as kextract does.
#include "tests/programs/same_pages.h"

#include <algorithm>
#include <string>

#include "programs/common/utf8.h"
#include "programs/html/paragraph.h"
#include "programs/html/references.h"
#include "programs/html/tokenizer.h"

using namespace klib::programs;

namespace klib::test {
namespace {

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

}  // namespace

bool same_pages(Place &page, Place &result) {
  Protection protection("", true);
  std::vector<Slot> slots;
  ParagraphReader paragraphs(page.text, 0, protection, slots);
  std::vector<Item> items;
  while (paragraphs.next(items)) {
    for (const Item &item : items) {
      if (!same_bytes(page, item.begin, result)) return false;
      if (!item.is_markup() && !same_text(page, item.end, result)) return false;
    }
  }
  return same_bytes(page, page.text.size(), result) && result.at_end();
}

}  // namespace klib::test
