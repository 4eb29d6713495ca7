// What is known of characters, of the ends of sentences and of languages, against what ICU says.
#include "programs/html/boundaries.h"

#include <gtest/gtest.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "programs/common/languages.h"

namespace klib::test {
namespace {

using programs::SentencePart;

constexpr char32_t code_points = UCHAR_MAX_VALUE + 1;

int break_by_icu(char32_t c) {
  return u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_SENTENCE_BREAK);
}

SentencePart part_by_icu(char32_t c) {
  switch (break_by_icu(c)) {
    case U_SB_ATERM:
    case U_SB_STERM:
      return SentencePart::mark;
    case U_SB_LOWER:
    case U_SB_UPPER:
      return SentencePart::cased_letter;
    case U_SB_OLETTER:  // the scripts before Hebrew have capitals
      return c < 0x590 ? SentencePart::cased_letter : SentencePart::uncased_letter;
    default:
      return SentencePart::other;
  }
}

TEST(Boundaries, EveryCharacterIsWhatItIsForIcu) {
  for (char32_t c = 0; c < code_points; c++) {
    const auto code = static_cast<UChar32>(c);
    ASSERT_EQ(programs::is_capital(c), u_isUUppercase(code) || u_istitle(code)) << std::hex << code;
    ASSERT_EQ(programs::is_letter_or_digit(c), u_isalnum(code) != 0) << std::hex << code;
    ASSERT_EQ(programs::sentence_part(c), part_by_icu(c)) << std::hex << code;
  }
  for (const uint32_t c : {0x110000U, 0x11002EU, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_FALSE(programs::is_capital(c) || programs::is_letter_or_digit(c));
    EXPECT_EQ(programs::sentence_part(c), SentencePart::other);
  }
}

bool moves_on(char32_t c) {
  const int8_t category = u_charType(static_cast<UChar32>(c));
  return c == ' ' || category == U_START_PUNCTUATION || category == U_INITIAL_PUNCTUATION;
}

// The ends by ICU's iterator, moved back over blanks and opening brackets.
class IcuSentences {
 public:
  IcuSentences() : iterator_(ubrk_open(UBRK_SENTENCE, "", nullptr, 0, &error_), ubrk_close) {}

  std::vector<bool> ends_of(const std::u32string &text) {
    std::u16string units;
    std::vector<size_t> character;  // of each unit
    for (size_t i = 0; i < text.size(); i++) {
      const auto code = static_cast<UChar32>(text[i]);
      if (code > 0xFFFF) units += static_cast<char16_t>(U16_LEAD(code));
      units += static_cast<char16_t>(code > 0xFFFF ? U16_TRAIL(code) : code);
      character.resize(units.size(), i);
    }
    ubrk_setText(iterator_.get(), units.data(), static_cast<int32_t>(units.size()), &error_);
    EXPECT_TRUE(U_SUCCESS(error_));
    std::vector<bool> ends(text.size());
    for (int32_t end; (end = ubrk_next(iterator_.get())) != UBRK_DONE;) {
      size_t last = character[static_cast<size_t>(end) - 1];
      while (last > 0 && moves_on(text[last])) last--;
      ends[last] = true;
    }
    return ends;
  }

 private:
  UErrorCode error_ = U_ZERO_ERROR;
  std::unique_ptr<UBreakIterator, void (*)(UBreakIterator *)> iterator_;
};

std::string shown(const std::u32string &text, const std::vector<bool> &ends) {
  std::string line;
  for (size_t i = 0; i < text.size(); i++) {
    char code[16];
    snprintf(code, sizeof code, "%X%s ", static_cast<unsigned>(text[i]), ends[i] ? " |" : "");
    line += code;
  }
  return line;
}

// Texts in which each kind of character is as frequent as any other, a full stop more so.
class Texts {
 public:
  Texts() {
    for (char32_t c = 0; c < code_points; c++) kinds_[break_by_icu(c)] += c;
  }

  size_t below(size_t limit) { return random_() % limit; }

  std::u32string text(size_t size) {
    std::u32string result;
    while (result.size() < size) {
      auto kind = kinds_.begin();
      std::advance(kind, below(kinds_.size()));
      const char32_t c = below(6) == 0 ? U'.' : kind->second[below(kind->second.size())];
      const bool is_pair = U16_IS_TRAIL(c) && !result.empty() && U16_IS_LEAD(result.back());
      if (!is_pair) result += c;
    }
    return result;
  }

 private:
  std::map<int, std::u32string> kinds_;
  std::mt19937 random_{1};
};

TEST(Boundaries, SentencesEndWhereTheyEndForIcu) {
  IcuSentences icu;
  Texts texts;
  std::vector<bool> ends;
  const auto check = [&](const std::u32string &text) {
    programs::find_sentence_ends(text, ends);
    const std::vector<bool> expected = icu.ends_of(text);
    ASSERT_EQ(ends, expected) << shown(text, ends) << "\n" << shown(text, expected);
  };
  for (int i = 0; i < 50000 && !HasFatalFailure(); i++) check(texts.text(texts.below(16)));
  // Long ones take time in proportion, even if a small letter is looked for at every full stop.
  check(texts.text(200000));
  std::u32string stops;
  while (stops.size() < 500000) stops += U". 1 ";
  check(stops);
}

TEST(Boundaries, LanguagesAreWrittenInTheDirectionThatIcuKnows) {
  std::vector<std::string> codes;
  for (char one = 'a'; one <= 'z'; one++)
    for (char two = 'a'; two <= 'z'; two++) {
      codes.push_back({one, two});
      for (char three = 'a'; three <= 'z'; three++) codes.push_back({one, two, three});
    }
  size_t known = 0;
  for (const std::string &code : codes) {
    const std::string name = programs::language_name(code);
    if (name.empty()) continue;
    known++;
    EXPECT_EQ(programs::is_right_to_left(name),
              uloc_isRightToLeft(programs::language_code(name).c_str()) != 0)
        << code;
  }
  EXPECT_GT(known, 500U);
}

}  // namespace
}  // namespace klib::test
