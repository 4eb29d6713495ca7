// String routines and case mapping.

#include <algorithm>

#include "tests/support.h"
#include "text/character_types.h"

namespace klib::test {

class StringRoutines : public Library {};

TEST_F(StringRoutines, SearchAndReplace) {
  // clang-format off
  static constexpr const char *rows[][4] = {  // text, searched, replaced by, result
      {"aab", "ab", "", "a"}, {"aaab", "aab", "x", "aaab"}, {"a cat", "cat", "tiger", "a tiger"},
      {"a cat, a cat", "cat", "dog", "a dog, a cat"}, {"abab{FF}", "b{FF}", "{80}", "aba{80}"},
      {"", "", "x", "x"},     {"", "a", "x", ""},           {"ababc", "abc", "", "ab"}};
  // clang-format on
  for (const auto &[text, old_text, new_text, result] : rows) {
    char *const copy = string_copy(bytes(text).c_str());
    EXPECT_EQ(take(replace(copy, bytes(old_text).c_str(), bytes(new_text).c_str())), result);
  }
  char *const text = string_copy("a");
  EXPECT_EQ(search("a", text), 0);
  const FailingAllocation failing(1);
  EXPECT_EQ(replace(text, "a", "longer"), text);
  EXPECT_EQ(take(replace(text, "a", "b")), "b") << "in place";
}

TEST_F(StringRoutines, PartsOfAText) {
  std::string parts;
  for (const auto &[from, to] : {std::pair(1u, 3u), {2, 99}, {5, 9}, {2, 2}, {3, 1}})
    parts += take(substring("hello", from, to)) + " ";
  EXPECT_EQ(parts, "el llo (null) (null) (null) ");
  int32_t count = -1;
  int32_t *positions = positions_of("a\xFF\xFF,\xFF", -1, &count);
  EXPECT_EQ(count * 1000 + positions[0] * 100 + positions[1] * 10 + positions[2], 3124);
  Kfree(positions);
  EXPECT_EQ(positions_of("abc", 0, &count), nullptr);
  EXPECT_EQ(std::to_string(count) + log(), "0Internal error. Allocating 0 bytes of memory.\n");
  EXPECT_EQ(ustrcmp("ab", "abc") + 1000 * ustrcmp("\xE0", "A"), -99 + 159000);
  char text[16] = "ab";
  rightshift(text, 2);
  rightshift(text, -1);
  EXPECT_STREQ(text, "abab");
  for (int i = 0; i < 3; ++i) leftshift(text);
  EXPECT_STREQ(text, "b");
  std::string blanks = bytes(" a b\tc  defgh ij{A0}klmnop ");
  remove_if(blanks.data(), character_types::white);
  EXPECT_STREQ(blanks.c_str(), "abcdefghijklmnop");
}

TEST_F(StringRoutines, UpperCase) {
  static constexpr const char *rows[][4] = {
      // character types, upper case, text, result
      {"FR", "FR", "aZ{DF}{E0}{F7}{FF}{83}", "AZ{DF}{C0}{F7}{DF}{83}"},
      {"FR", "FR", "@azAZ[`{7B}stuvwx{E0}yz{7F}", "@AZAZ[`{7B}STUVWX{C0}YZ{7F}"},
      {"RU", "RUS", "a{E0}{83}{AA}{BF}{F7}{B5}", "A{C0}{81}{AA}{AF}{D7}{B5}"},
      {"FR", "RU", "a{E0}{83}{F7}", "A{C0}{83}{F7}"},
      {"GR", "GR-EN", "{C0}{DC}{E0}{F2}{F3}{FF}", "{DA}{B6}{DB}{D3}{D3}{DF}"},
  };
  static uint32_t own_types[256];
  for (const auto &[types, upcase, before, after] : rows) {
    initUpcase(upcase);
    for (const bool own : {false, true}) {
      initCT(types);
      if (own) c_t = std::copy(c_t, c_t + 256, own_types) - 256;
      std::string text = bytes(before);
      uppercase_string(text.data());
      EXPECT_EQ(show(text), after) << types << upcase;
    }
  }
  own_types[0x62] = 0;
  char text[] = "abc\xE0";
  uppercase_string(text);
  EXPECT_EQ(show(text), "AbC{DB}") << "a program's own types count as they are";
  s_uppercase(text);
  EXPECT_EQ(show(text), "ABC{DB}");
  EXPECT_EQ(upcaseRu(0x100 + 0xB4) * 1000 + upcaseGr(0xFE), 0xA5 * 1000 + 0xBF);
  EXPECT_EQ(islowerRu(0xC0) + islowerGr(0x41) * 10 + islowerRu(-32) * 100, 100);
}

}  // namespace klib::test
