// The transfer of format codes into a translation.

#include <numeric>
#include <random>
#include <sstream>
#include <vector>

#include "platform/platform.h"
#include "tests/support.h"

namespace klib::test {
namespace {

class Transfer : public Library {
 protected:
  void SetUp() override {
    Library::SetUp();
    declare_fonts();
  }

  static void declare_fonts() {
    P_init_fonts();
    for (const char *group : {"Roman{FF}Bold{FF}Italic", "Mono{FF}MonoBold"})
      P_set_fonts(0, bytes(group).data());
    P_set_fontgroups(0, bytes("H").data());
    P_set_fontpacket(0, bytes("Heading{FF}Bold{FF}MonoBold").c_str());
  }

  // The lists of an alignment written as "0 1|2|-" ("-" is an empty list, "?" a missing one). Calls
  // CopyFontsString and returns its result, followed by the lists where they have changed.
  std::string copy(const std::string &source, const std::string &target, const std::string &lists) {
    std::vector<std::vector<int32_t>> given;
    std::vector<int32_t *> alignment;
    std::istringstream input(lists);
    for (std::string list; std::getline(input, list, '|');) {
      std::istringstream numbers(list == "-" ? "" : list);
      auto &row = given.emplace_back();
      for (int32_t number; numbers >> number;) row.push_back(number);
      row.push_back(-1);
    }
    for (auto &row : given) alignment.push_back(row.data());
    if (lists == "?") alignment[0] = nullptr;
    alignment.resize(alignment.size() + 12);
    const std::string source_bytes = bytes(source), target_bytes = bytes(target);
    std::string result =
        take(CopyFontsString(source_bytes.c_str(), target_bytes.c_str(), alignment.data()));
    std::string after;
    for (size_t k = 0; alignment[k] != nullptr; ++k) {
      if (k > 0) after += "|";
      const int32_t *list = alignment[k];
      for (size_t i = 0; list[i] != -1; ++i) after += (i > 0 ? " " : "") + std::to_string(list[i]);
      if (list[0] == -1) after += "-";
      if (k >= given.size() || list != given[k].data()) Kfree(alignment[k]);
    }
    return after == lists || lists == "?" ? result : result + "   " + after;
  }

  struct Row {
    const char *source, *target, *alignment, *result;
  };
  void check(std::initializer_list<Row> rows) {
    for (const Row &row : rows)
      EXPECT_EQ(copy(row.source, row.target, row.alignment), row.result)
          << row.source << " to " << row.target << " by " << row.alignment;
  }
};

TEST_F(Transfer, ReadsWordsAndJoinsGroupsOfCodes) {
  check({
      {"ab{94}3{95}cd ef", "wxyz uv", "0|1", "wx{94}3{95}yz uv"},
      {"ab  cd", "  x   y ", "5", "  x   y "},
      {"a{94}1{95} b", "  x {09} y ", "0|1", "x{94}1{95} y"},
      {"x {94}7{95} y", "p q", "0|1", "p{94}7{95} q"},
      {"{94}1{95}{94}2{95} text", "p", "0", "{94}1{95}{94}2{95}p"},
      {" {94}1{95} text", "p q", "0|1", "p {94}1{95}q"},
      {"text {94}1{95} {94}2{95} more", "p q", "0|1", "p{94}1{95}{94}2{95} q"},
      {"{94}1{95} {94}2{95} {94}3{95}x y", "p q", "0|1", "{94}1{95}{94}2{95}{94}3{95}p q"},
      {"{94}1{95} {94}2{95} ", "p", "0", "{94}1{95}{94}2{95}p"},
      {"{1E}{1F} {94}1{95} x", "p q", "0|1", "{94}1{95}p q"},
      {"{1E}New York{1F} is{94}1{95}", "N est", "0|1", "N est{94}1{95}"},
      {"a{1E}b{98}Bold{99} {1E}c{1F}{1F}d{98}Roman{99}", "12345678", "0",
       "{98}Bold{99}12345678{98}Roman{99}"},
      {"{94}a{94}b{95}c{95}x", "p{A0}q", "0|-", "{94}a{94}b{95}c{95}p q"},
      {"x{9D}00E9y{94}1{95}", "p", "0", "p{94}1{95}"},
      {"{94}1{95}x", "", "0", "{94}1{95}x"},
      {"{98}Bold{99}x", " ", "0", ""},
  });
}

TEST_F(Transfer, PlacesCodesByLengthBoundaryAndBrackets) {
  const std::string far = std::string(100, 'x') + "1" + std::string(200, 'y');
  const std::string code = "{94}1{95}", other = "{94}2{95}";
  check({
      {"ab{94}1{95}cd", "xy zw", "0|0", "xy{94}1{95} zw"},
      {"ab{94}1{95},cd", "xyz,w", "0", "xyz{94}1{95},w"},
      {"ab{94}1{95},cd", "a,bc,defg", "0", "a,bc{94}1{95},defg"},
      {"ab{94}1{95},cd", "wxyz", "0", "{94}1{95}wxyz"},
      {"abcd{94}1{95},c", "vwxyz", "0", "vwxyz{94}1{95}"},
      {"ab{94}1{95},cd", "uvwxyz u", "0|0", "uv{94}1{95}wxyz u"},
      {"ab{94}1{95}cd", "x", "0 0 0", "x{94}1{95}"},
      {"ab{94}1{95}cdefg", "<N[12]>", "0", "<N[{94}1{95}12]>"},
      {"a{94}1{95}bcdefg", "<N[12]>", "0", "<{94}1{95}N[12]>"},
      {"a{94}1{95}bcdefg", "<A[12]>", "0", "{94}1{95}<A[12]>"},
      {"abcdef{94}1{95}g", "<N[12]>", "0", "<N[12]>{94}1{95}"},
      {"a b c{94}1{95}d{98}Bold{99} e{98}Roman{99}", "p q r s t", "0|1|-|126|3",
       "p q {94}1{95}r s {98}Bold{99}t{98}Roman{99}"},
      {"a b c{94}1{95}d", "p q", "0|1", "p {94}1{95}q"},
      {"a{94}1{95} b{94}2{95} c", "p q", "1|0 2", "p{94}2{95} q{94}1{95}"},
      {"a{94}1{95} b c{94}2{95} {94}3{95}d", "p", "3 2 1 0", "{94}3{95}p{94}1{95}{94}2{95}"},
  });
  // Boundaries too far away to be met on the way, from several places of one word.
  EXPECT_EQ(copy("aa" + code + "1bbbb" + other + "1" + code + "b", far, "0"),
            far.substr(0, 100) + code + other + "1" + code + far.substr(101));
}

TEST_F(Transfer, WritesFontsThatAreNotInForce) {
  const struct {
    const char *source, *target, *alignment, *result, *log;
  } rows[] = {
      {"{98}Bold{99}a b{98}Roman{99} c", "p q r", "0|1|2", "{98}Bold{99}p q{98}Roman{99} r", ""},
      {"{98}Bold{99}a b{98}Roman{99} c", "p q r", "2|1|0",
       "p {98}Bold{99}q{98}Roman{99} {98}Bold{99}r", ""},
      {"{98}Bold{99}{98}MonoBold{99}a b {98}Roman{99}{98}Mono{99}c", "p q", "126 1|2",
       "{98}Bold{99}{98}MonoBold{99}p {98}Roman{99}{98}Mono{99}q", ""},
      {"{98}H{FF}A{99}a b", "p q", "1|0", "{98}H{FF}A{99}p q", ""},
      {"{98}Heading{99}a b{98}Roman{99}{98}Mono{99}", "p q", "0|1",
       "{98}Heading{99}p q{98}Roman{99}{98}Mono{99}", ""},
      {"{98}Wide{99}a", "p", "0", "p", "Undefined font 'Wide'.\nUndefined font 'Wide'.\n"},
      {"a{98}X{FF}A{99}b", "p q", "-|-|-", "p q",
       "Undefined named font group 'X' for font 'X{FF}A'\nUsing 'H' instead.\n"},
      {"a{98}Bol", "p", "0", "p", "Premature end of file.\nProgram aborted.\n"},
  };
  for (const auto &row : rows) {
    for (const char *font : {"Roman", "Mono"}) Kselect_font(bytes(font).data());
    EXPECT_EQ(copy(row.source, row.target, row.alignment), row.result) << row.source;
    EXPECT_EQ(show(log()), show(bytes(row.log))) << row.source;
  }
}

TEST_F(Transfer, ChecksAndMakesAlignments) {
  const char anchor[] = "a{94}1{95} b", font[] = "a{98}Bold{99} b";
  check({
      {anchor, "p q r", "119", "p{94}1{95} q r   0|1|126"},
      {anchor, "p q r", "?", "p{94}1{95} q r"},
      {anchor, "p q", "0 200|1", "p{94}1{95} q   0 126|1"},
      {anchor, "p q", "0 2|1", "p{94}1{95} q   0 126|1"},
      {anchor, "p q", "119 0|1", "p{94}1{95} q   126 0|1"},
      {anchor, "p q", "200|-5 200|200", "a{94}1{95} b   126|-5 200|200"},
      {anchor, "p q", "0|1|200", "a{94}1{95} b   0|1|126"},
      {font, " p  q", "0", " p  q"},
      {"a{1E}{98}Bold{99}{1F}", "p q", "0", "a{1E}{98}Bold{99}{1F}"},
      {"a b", "p  q", "-5", "p  q"},
  });
  // In a long sentence 126 is a word like any other, but still skipped at the start of a list.
  Kselect_font(bytes("Roman").data());
  std::string source = "{98}Bold{99}a";
  for (int word = 1; word < 128; ++word) source += word == 126 ? " b{94}1{95}" : " b";
  source += "{98}Roman{99}";
  EXPECT_EQ(copy(source, "p q", "126|127 126"), "p {98}Bold{99}q{94}1{95}{98}Roman{99}");
}

// A font of a group of its own at every word: the list of changed fonts grows from word to word.
TEST_F(Transfer, TakesMemoryInProportionToWordsAndCodes) {
  static size_t allocated;
  static void *(*allocate)(size_t);
  std::string source, closing, target, expected;
  for (int i = 0; i < 2000; ++i) {
    const std::string number = std::to_string(i);
    P_set_fonts(0, bytes("plain" + number + "{FF}font" + number).data());
    source += bytes("{98}font" + number + "{99}a ");
    closing += bytes("{98}plain" + number + "{99}");
    target += i > 0 ? " b" : "b";
    expected += bytes(i > 0 ? " {98}font" : "{98}font") + number + bytes("{99}b");
  }
  allocate = platform::calls.allocate;
  platform::calls.allocate = [](size_t size) { return allocated += size, allocate(size); };
  char *result = CopyFontsString((source + closing).c_str(), target.c_str(), nullptr);
  EXPECT_TRUE(result == expected + closing);
  EXPECT_LT(allocated, 3'000'000U);
  Kfree(result);
}

// Fonts, named fonts and packets at random, one code before each word, and the words in another
// order: each word begins with what Kfont_changes_since_save lists at its source word.
TEST_F(Transfer, WritesTheFontsInForceAtEachWord) {
  const std::vector<const char *> names = {"Roman",  "Bold",   "Italic", "Mono",   "MonoBold",
                                           "H{FF}a", "H{FF}b", "X{FF}a", "Heading"};
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::string> codes(2 + random() % 9);
    for (std::string &code : codes) code = bytes(names[random() % names.size()]);
    std::vector<int32_t> order(codes.size());
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), random);

    std::vector<std::vector<std::string>> changed;
    P_cleanup_fonts();
    declare_fonts();
    Ksave_font_state();
    std::string source, target, lists, expected;
    for (std::string &code : codes) {
      char **list = Kfont_changes_since_save(0, 0, 1);
      changed.emplace_back(list, list + (list != nullptr ? a_length(list) : 0));
      Kfree(list);
      Kselect_font(code.data());
      source += "{98}" + show(code) + "{99}a ";
    }
    reset_named_font_groups();
    for (const int32_t word : order) {
      auto fonts = changed[static_cast<size_t>(word)];
      fonts.push_back(codes[static_cast<size_t>(word)]);
      for (std::string &font : fonts) {
        if (Kis_font_selected(font.data()) != 0) continue;
        Kselect_font(font.data());
        expected += "{98}" + show(font) + "{99}";
      }
      expected += "b ";
      target += "b ";
      lists += std::to_string(word) + "|";
    }
    expected.pop_back();
    lists.pop_back();
    P_cleanup_fonts();
    declare_fonts();
    EXPECT_EQ(copy(source, target, lists), expected) << source << " by " << lists;
  }
}

TEST_F(Transfer, LeavesParserLevelsAndEndsTheSave) {
  for (int level = 0; level < 4; ++level) init_parser(P_FONT);
  const std::string text = bytes("{98}Bold{99}a{94}1{95}");
  parse_from_string(text.c_str());
  parse(nullptr);
  Ksave_font_state();
  EXPECT_EQ(take(CopyFontsString(text.c_str(), p_root[4].token, nullptr)), "{98}Bold{99}{94}1{95}");
  EXPECT_EQ(show(p_root[4].token), "{98}Bold{99}");
  EXPECT_EQ(Kfont_changes_since_save(1, 0, 0), nullptr);
  for (int level = 0; level < 4; ++level) exit_parser();
  EXPECT_EQ(log(), "");
}

TEST_F(Transfer, SurvivesEveryFailingAllocation) {
  std::string source = bytes("{98}Bold{99}a{94}1{95}b {98}H{FF}A{99}c {1E}d{94}2{95} e{1F},");
  std::string target;
  for (int i = 0; i < 40; ++i) source += bytes("x{94}1{95} "), target += "yz, ";
  int32_t request[] = {119, -1};
  const int64_t blocks = blocks_in_use();
  for (int n = 1;; ++n) {
    int32_t *alignment[50] = {request};
    FailingAllocation failing(n);
    char *result = CopyFontsString(source.c_str(), target.c_str(), alignment);
    ASSERT_EQ(result == nullptr, failing.happened()) << n;
    EXPECT_EQ(alignment[0] == request, failing.happened()) << n;
    for (int k = 0; result != nullptr && k < 40; ++k) Kfree(alignment[k]);
    Kfree(result);
    reset_named_font_groups();
    EXPECT_EQ(blocks_in_use(), blocks) << n;
    if (!failing.happened()) break;
  }
}

}  // namespace
}  // namespace klib::test
