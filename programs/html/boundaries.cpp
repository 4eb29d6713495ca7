#include "programs/html/boundaries.h"

#include <unicode/ubrk.h>
#include <unicode/uchar.h>

#include <memory>
#include <new>

#include "programs/common/program.h"
#include "programs/system/icu_memory.h"

namespace klib::programs {
namespace {

constexpr char32_t first_uncased = 0x0590;  // Latin, Greek, Cyrillic and Armenian come before it

void check(UErrorCode error) {
  if (error == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
  if (U_FAILURE(error)) fail("ICU", 0, "cannot find sentences: %s", u_errorName(error));
}

// The rules are the same for every language, and reading them takes long.
UBreakIterator *sentence_iterator() {
  static const std::unique_ptr<UBreakIterator, void (*)(UBreakIterator *)> iterator(
      [] {
        UErrorCode error = U_ZERO_ERROR;
        guard_icu_memory();
        UBreakIterator *opened = ubrk_open(UBRK_SENTENCE, "", nullptr, 0, &error);
        check(error);
        return opened;
      }(),
      ubrk_close);
  return iterator.get();
}

// Unicode counts all brackets and quotation marks after a mark among those of its sentence.
bool is_opening(char32_t c) {
  const int8_t category = u_charType(static_cast<UChar32>(c));
  return category == U_START_PUNCTUATION || category == U_INITIAL_PUNCTUATION;
}

}  // namespace

bool is_capital(char32_t c) {
  if (c < 0x80) return c >= 'A' && c <= 'Z';
  const auto code = static_cast<UChar32>(c);
  return u_isUUppercase(code) || u_istitle(code);
}

bool is_letter_or_digit(char32_t c) {
  if (c < 0x80) return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  return u_isalnum(static_cast<UChar32>(c));
}

SentencePart sentence_part(char32_t c) {
  if (c < 0x80) {
    if (c == '.' || c == '!' || c == '?') return SentencePart::mark;
    return is_letter_or_digit(c) && c > '9' ? SentencePart::cased_letter : SentencePart::other;
  }
  switch (u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_SENTENCE_BREAK)) {
    case U_SB_ATERM:
    case U_SB_STERM:
      return SentencePart::mark;
    case U_SB_LOWER:
    case U_SB_UPPER:
      return SentencePart::cased_letter;
    case U_SB_OLETTER:
      return c < first_uncased ? SentencePart::cased_letter : SentencePart::uncased_letter;
    default:
      return SentencePart::other;
  }
}

void find_sentence_ends(std::u32string_view text, std::vector<bool> &ends) {
  std::u16string units;
  std::vector<size_t> character;  // of each unit
  for (size_t i = 0; i < text.size(); i++) {
    const char32_t c = text[i];
    if (c > 0xFFFF) {
      units += static_cast<char16_t>(0xD7C0 + (c >> 10));
      character.push_back(i);
    }
    units += static_cast<char16_t>(c > 0xFFFF ? 0xDC00 + (c & 0x3FF) : c);
    character.push_back(i);
  }
  ends.assign(text.size(), false);
  UErrorCode error = U_ZERO_ERROR;
  UBreakIterator *const iterator = sentence_iterator();
  ubrk_setText(iterator, units.data(), static_cast<int32_t>(units.size()), &error);
  check(error);
  for (int32_t end; (end = ubrk_next(iterator)) != UBRK_DONE;) {
    size_t last = character[static_cast<size_t>(end) - 1];
    while (last > 0 && (text[last] == ' ' || is_opening(text[last]))) last--;
    ends[last] = true;
  }
  ubrk_setText(iterator, nullptr, 0, &error);
}

}  // namespace klib::programs
