// String routines and case mapping.

#include <algorithm>

#include "containers/bytes.h"
#include "pattern/character_types.h"
#include "tests/support.h"

namespace klib::test {

class StringRoutines : public Library {};

TEST_F(StringRoutines, Shifts) {
  char text[16] = "abc";
  rightshift(text, 2);
  EXPECT_STREQ(text, "ababc");
  rightshift(text, -1);
  for (const char *left : {"babc", "abc", "bc", "c", "", ""}) {
    leftshift(text);
    EXPECT_STREQ(text, left);
  }
}

TEST_F(StringRoutines, SearchAndReplace) {
  static constexpr struct {
    const char *text, *pattern, *with;
    int32_t index;
    const char *result;
  } rows[] = {
      // clang-format off
      {"aab", "ab", "", 1, "a"},               {"aaab", "aab", "x", -1, "aaab"},
      {"a cat, a cat", "cat", "dog", 2, "a dog, a cat"}, {"a cat", "cat", "tiger", 2, "a tiger"},
      {"a cats", "cat", "ox", 2, "a oxs"},     {"", "", "x", 0, "x"},
      {"", "a", "x", -1, ""},                  {"abab{FF}", "b{FF}", "{80}", 3, "aba{80}"},
      {"abcabd", "abd", "", 3, "abc"},         {"ababc", "abc", "", 2, "ab"},
      {"abac", "abad", "", -1, "abac"},        {"xaax", "aax!", "", -1, "xaax"},
      // clang-format on
  };
  for (const auto &row : rows) {
    char *const text = string_copy(bytes(row.text).c_str());
    const std::string pattern = bytes(row.pattern), with = bytes(row.with);
    EXPECT_EQ(search(pattern.c_str(), text), row.index) << row.text;
    char *const result = replace(text, pattern.c_str(), with.c_str());
    EXPECT_EQ(result == text, row.index < 0 || with.size() <= pattern.size()) << row.text;
    EXPECT_EQ(take(result), row.result) << row.text;
  }
  const FailingAllocation failing(2);
  char *const text = string_copy("a");
  EXPECT_EQ(replace(text, "a", "longer"), text);
  EXPECT_EQ(take(text) + (failing.happened() ? "!" : "?"), "a!");
}

TEST_F(StringRoutines, PartsOfAText) {
  static constexpr struct {
    uint32_t from, to;
    const char *part;
  } rows[] = {
      {1, 3, "el"},     {2, 99, "llo"},   {0, UINT32_MAX, "hello"},          {5, 9, "(null)"},
      {2, 2, "(null)"}, {3, 1, "(null)"}, {UINT32_MAX, UINT32_MAX, "(null)"}};
  for (const auto &row : rows) EXPECT_EQ(take(substring("hello", row.from, row.to)), row.part);
  int32_t count = -1;
  int32_t *positions = positions_of("a\xFF\xFF,\xFF", -1, &count);
  ASSERT_EQ(count, 3);
  EXPECT_EQ(positions[0] * 100 + positions[1] * 10 + positions[2], 124);
  Kfree(positions);
  EXPECT_EQ(positions_of("abc", 0, &count), nullptr);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(log(), "Internal error. Allocating 0 bytes of memory.\n");
  EXPECT_EQ(ustrcmp("abc", "abd"), -1);
  EXPECT_EQ(ustrcmp("ab", "abc"), -99);
  EXPECT_EQ(ustrcmp("\xE0", "A"), 159);
  EXPECT_EQ(ustrcmp("", "") + ustrcmp("\xFF", ""), 255);
}

TEST_F(StringRoutines, RemoveByType) {
  for (const char *text : {"", " ", " a b\tc  defgh ij{A0}klmnop", "no-blanks-at-all"}) {
    std::string left, whole = bytes(text);
    for (const char c : whole)
      if (c != ' ' && c != '\t' && c != '\xA0') left += c;
    remove_if(whole.data(), character_types::white);
    EXPECT_EQ(whole.c_str(), left) << text;
  }
}

TEST_F(StringRoutines, UpperCase) {
  static constexpr struct {
    const char *types, *upcase, *text, *result;
  } rows[] = {
      {"FR", "FR", "aZ{DF}{E0}{F7}{FF}{83}", "AZ{DF}{C0}{F7}{DF}{83}"},
      {"RU", "RUS", "a{E0}{83}{AA}{BF}{F7}{B5}", "A{C0}{81}{AA}{AF}{D7}{B5}"},
      {"FR", "RU", "a{E0}{83}{F7}", "A{C0}{83}{F7}"},
      {"GR", "GR-EN", "{C0}{DC}{E0}{F2}{F3}{FF}", "{DA}{B6}{DB}{D3}{D3}{DF}"},
      {"GR", "ru", "z{E0}{DC}", "Z{C0}{DC}"},
  };
  static uint32_t own_types[256] = {};
  for (const auto &row : rows) {
    initUpcase(row.upcase);
    for (const bool own : {false, true}) {
      initCT(row.types);
      if (own) c_t = std::copy(c_t, c_t + 256, own_types) - 256;
      std::string text = bytes(row.text);
      uppercase_string(text.data());
      EXPECT_EQ(show(text), row.result) << row.types << row.upcase;
    }
  }
  own_types[u8('b')] = 0;
  char text[] = "abc\xE0";
  uppercase_string(text);
  EXPECT_EQ(show(text), "AbC{C0}") << "a program's own types count as they are";
  s_uppercase(text);
  EXPECT_EQ(show(text), "ABC{C0}");
  EXPECT_EQ(upcaseRu(0x100 + 0xB4) * 1000 + upcaseGr(0xFE), 0xA5 * 1000 + 0xBF);
  EXPECT_EQ(islowerRu(0xC0) + islowerGr(0x41), 0);
  EXPECT_EQ(islowerRu(static_cast<char>(0xE0)) + islowerGr(0xC0), 2);
}

}  // namespace klib::test
