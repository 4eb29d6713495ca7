// Character types: property words per code page, keyed words, bracket expressions of named types.

#include "text/character_types.h"

#include <tuple>

#include "tests/support.h"

namespace klib::test {

class CharacterTypes : public Library {};

TEST_F(CharacterTypes, TheLanguageChoosesTheTable) {
  static constexpr std::tuple<const char *, uint32_t, uint32_t, uint32_t> rows[] = {
      // language, words of 0xA1, 0xE3, 0xFF
      {"RU-EN", 0x80040000, 0x60040000, 0x40040000},
      {"GR", 0x04138000, 0x40040000, 0x40000000},
      {"ru", 0x04928000, 0x40040000, 0x40040000}};
  for (const auto &row : rows) {
    const char *const language = std::get<0>(row);
    initCT(language);
    EXPECT_EQ(std::tuple(language, cprops(-0x5F), cprops(0x1E3), cprops(-1)), row);
  }
}

TEST_F(CharacterTypes, NamedTypesAsBracketExpressions) {
  const auto expressions = [](int count) {
    char **texts = Kcharacter_types_regex();
    std::string result;
    for (int i = 0; i < count; ++i) result += take(texts[i]) + " ";
    Kfree(texts);
    return result;
  };
  EXPECT_EQ(expressions(11).substr(0, 70),
            "[A-Z{C0}-{D6}{D8}-{DE}] [a-z{DF}-{F6}{F8}-{FF}] [0-9{9E}{B2}{B3}{B9}{B");
  initCT("RU");
  ct_names[0] = "^marker";
  ct_props[0] = character_types::kavro;
  ct_props[1] = 0xFFFFFFFF;  // byte 0 has a type too, but would end the text
  ct_props[2] = character_types::special;
  ct_names[3] = "";
  EXPECT_EQ(expressions(3),
            "[^{90}-{98}{9B}] []{01}-,.-\\^-{FF}-] "
            "[]#-&<->@[\\^_{7B}-~{A4}{A6}{A7}{AB}{AC}{B0}-{B2}{B6}{B7}{BB}] ");
  for (auto &name : ct_names) name = "no end";
  EXPECT_EQ(expressions(12).substr(0, 11), "[{90}-{98}{");
  const FailingAllocation failing(7);
  EXPECT_EQ(Kcharacter_types_regex(), nullptr);
}

TEST_F(CharacterTypes, KeyedWords) {
  static constexpr uint32_t pairs[] = {7, 0x10, 0xFFFFFFFF, 0x20, 7, 0x30, 9, 0x40};
  EXPECT_EQ(fiprops(7), 0u);
  fc_t = pairs;
  fc_t_len = 7;
  for (const auto &[key, word] : {std::pair(7, 0x10u), {-1, 0x20u}, {0x30, 0u}, {9, 0u}})
    EXPECT_EQ(fiprops(key), word) << key;
  fc_t_len = 8;
  EXPECT_EQ(fiprops(9), 0x40U) << "the last pair";
}

}  // namespace klib::test
