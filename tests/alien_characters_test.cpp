#include "tests/support.h"

namespace klib::test {

using AlienCharacters = Library;

TEST_F(AlienCharacters, AreReducedToMarkers) {
  static const std::pair<const char *, const char *> rows[] = {{"{9D}00E9x", "{9D}x"},
                                                               {"a{9D}00E9{9D}0152", "a{9D}{9D}"},
                                                               {"a{9D}0", "a{9D}"},
                                                               {"a{9D}", "a{9D}"},
                                                               {"{9D}{9D}123b{9D}", "{9D}b{9D}"}};
  for (const auto &[notation, reduced] : rows) {
    std::string text = bytes(notation);
    EXPECT_EQ(take(WithoutAlienCharacters(text.data())), reduced);
    EXPECT_EQ(show(text), notation);
  }
  std::string plain = "plain";
  EXPECT_EQ(WithoutAlienCharacters(plain.data()), plain.data());
}

TEST_F(AlienCharacters, ComeBackInOrder) {
  current_sentence_number = 7;
  static const struct {
    const char *source, *translation;
    int32_t without_fonts;
    const char *result, *log;
  } rows[] = {
      {"{9D}00E9t{9D}0152", "a{9D}b{9D}", 0, "a{9D}00E9b{9D}0152", ""},
      {"{9D}00E9t{9D}0152", "a{9D}b", 0, "a{9D}00E9b",
       "Sentence 7: Read 1 alien characters. Expected 2 alien characters.\n"},
      {"{9D}00E9t{9D}0152", "ab", 0, "ab",
       "Sentence 7: Read 0 alien characters. Expected 2 alien characters.\n"},
      {"{9D}00E9", "{9D}{9D}", 0, "{9D}00E9{9D}",
       "Sentence 7: Read 2 alien characters. Expected 1 alien characters.\n"},
      {"{98}{9D}1234{99}{9D}00E9", "{9D}", 1, "{9D}00E9", ""},
      {"{98}{9D}1234{99}{9D}00E9", "{9D}", 0, "{9D}1234",
       "Sentence 7: Read 1 alien characters. Expected 2 alien characters.\n"},
      {"{9D}00{9D}E9", "{9D}a{9D}b", 0, "{9D}00{9D}E9Ea{9D}b", ""},  // the digits hold a marker
  };
  for (const auto &row : rows) {
    char *translation = string_copy(bytes(row.translation).c_str());
    EXPECT_EQ(take(CopyAlienCharacters(bytes(row.source).c_str(), translation, row.without_fonts)),
              row.result);
    EXPECT_EQ(log(), row.log) << row.source;
  }
  char *translation = string_copy("a\x9D");
  for (const char *source : {"none", "{98}{9D}1234{99}", "{98}{9D}1234"})
    EXPECT_EQ(CopyAlienCharacters(bytes(source).c_str(), translation, 1), translation);
  Kfree(translation);
}

TEST_F(AlienCharacters, FailuresReleaseTheTranslation) {
  const int64_t before = blocks_in_use();
  std::string text = bytes("{9D}00E9");
  bool failed = true;
  for (int n = 1; failed; ++n) {
    char *translation = string_copy("\x9D");
    FailingAllocation failing(n);
    char *reduced = WithoutAlienCharacters(text.data());
    char *result = CopyAlienCharacters(text.c_str(), translation, 1);
    failed = failing.happened();
    EXPECT_EQ(reduced == nullptr || result == nullptr, failed) << n;
    Kfree(reduced);
    Kfree(result);
    EXPECT_EQ(blocks_in_use(), before) << n;
  }
}

}  // namespace klib::test
