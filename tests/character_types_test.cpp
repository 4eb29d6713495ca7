// Character types: property words per code page, keyed words, bracket expressions of named types.

#include "pattern/character_types.h"

#include "tests/support.h"

namespace klib::test {

class CharacterTypes : public Library {
 protected:
  // The expressions of all named types, one a line, shown in the notation.
  static std::string expressions(int count) {
    char **texts = Kcharacter_types_regex();
    std::string result;
    for (int i = 0; texts != nullptr && i < count; i++) result += take(texts[i]) + "\n";
    Kfree(texts);
    return result;
  }
};

TEST_F(CharacterTypes, TheLanguageChoosesTheTable) {
  static constexpr struct {
    const char *language;
    uint32_t words[4];  // of 0xC0, 0xA1, 0xE3, 0xFF
  } rows[] = {
      {"FR", {0x80040000, 0x04928000, 0x40040000, 0x40040000}},
      {"RU", {0x80040000, 0x80040000, 0x60040000, 0x40040000}},
      {"GR-EN", {0x40040000, 0x04138000, 0x40040000, 0x40000000}},
      {"ru", {0x80040000, 0x04928000, 0x40040000, 0x40040000}},
      {"RU-EN", {0x80040000, 0x80040000, 0x60040000, 0x40040000}},
      {"R", {0x80040000, 0x04928000, 0x40040000, 0x40040000}},
  };
  for (const auto &row : rows) {
    initCT(row.language);
    EXPECT_EQ(cprops(0xC0), row.words[0]) << row.language;
    EXPECT_EQ(cprops(static_cast<char>(0xA1)), row.words[1]) << row.language;
    EXPECT_EQ(cprops(0x100 + 0xE3), row.words[2]) << row.language;
    EXPECT_EQ(cprops(-1), row.words[3]) << row.language;
    EXPECT_EQ(cprops('A'), 0x80040000u) << row.language;
    EXPECT_EQ(cprops(' '), 0x0C030000u) << row.language;
  }
}

TEST_F(CharacterTypes, NamedTypesAsBracketExpressions) {
  EXPECT_EQ(expressions(11),
            "[A-Z{C0}-{D6}{D8}-{DE}]\n"
            "[a-z{DF}-{F6}{F8}-{FF}]\n"
            "[0-9{9E}{B2}{B3}{B9}{BC}-{BE}]\n"
            "[A-Za-z{C0}-{D6}{D8}-{F6}{F8}-{FF}]\n"
            "[0-9A-Za-z{9E}{B2}{B3}{B9}{BC}-{BE}{C0}-{D6}{D8}-{F6}{F8}-{FF}]\n"
            "[{90}-{9D}]\n"
            "[{09}-{0B}{0D} {A0}]\n"
            "[!,:;{A1}{B8}{BF}]\n"
            "[]!-,.-@[\\^-`{7B}-{7F}{94}-{9F}{A1}-{BF}{D7}{F7}-]\n"
            "[]#-&<->@[\\^_{7B}-~{A2}-{A7}{A9}-{AC}{AE}-{B1}{B5}-{B7}{BA}{BB}]\n"
            "[]#-&*+0-9<->@-\\^_a-~{A2}-{A7}{A9}-{AC}{AE}-{B3}{B5}-{B7}{B9}-{BE}{C0}-{FF}]\n");
  initCT("RU");
  ct_names[0] = "^marker";
  ct_props[0] = character_types::kavro;
  ct_props[1] = 0xFFFFFFFF;  // byte 0 has a type too, but would end the text
  ct_names[2] = "";
  EXPECT_EQ(expressions(2), "[^{90}-{98}{9B}]\n[]{01}-,.-\\^-{FF}-]\n");
  ct_names[0] = "";
  EXPECT_EQ(expressions(0), "");
  EXPECT_EQ(log(), "");
  for (auto &name : ct_names) name = "no end";
  EXPECT_EQ(expressions(12).substr(0, 11), "[{90}-{98}{");
}

TEST_F(CharacterTypes, KeyedWords) {
  static constexpr uint32_t pairs[] = {7, 0x10, 0xFFFFFFFF, 0x20, 7, 0x30, 9};
  EXPECT_EQ(fiprops(7), 0u);
  fc_t = pairs;
  fc_t_len = 7;
  EXPECT_EQ(fiprops(7), 0x10u);
  EXPECT_EQ(fiprops(-1), 0x20u);
  EXPECT_EQ(fiprops(0x30), 0u);
  EXPECT_EQ(fiprops(9), 0u) << "a key without its word";
}

TEST_F(CharacterTypes, ExhaustedMemory) {
  const int64_t before = blocks_in_use();
  for (int n = 1; n <= 12; n++) {
    const FailingAllocation failing(n);
    EXPECT_EQ(Kcharacter_types_regex(), nullptr) << n;
  }
  EXPECT_EQ(blocks_in_use(), before);
}

}  // namespace klib::test
