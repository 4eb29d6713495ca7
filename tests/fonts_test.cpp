// Font definitions, the fonts in force, packets, and saves of the selection.

#include "format/fonts.h"
#include "tests/support.h"

namespace klib::test {

namespace {

std::string number(int n) { return std::to_string(n); }

class Fonts : public Library {
 protected:
  void SetUp() override {
    Library::SetUp();
    number_of("LOGGING") = 0;  // an abort leaves the log open
    start();
  }

  static void start() {
    P_init_fonts();
    define_all();
  }

  static void define_all() {
    define("F Roman{FF}Bold{FF}Italic");
    define("F Mono{FF}MonoBold");
    define("G H{FF}I");
    define("P Heading{FF}Bold{FF}MonoBold");
    define("P Outer{FF}Heading{FF}Roman{FF}Heading");
    define("P Twice{FF}Heading{FF}Outer");
    define("P Loop{FF}Gone{FF}Pool{FF}Loop");
    define("P Pool{FF}Loop{FF}Italic");
    define("P Empty");
  }

  // "F", "G" or "P" and a value of the parameter "FONT", "FONTGROUPS" or "FONT-PACKET".
  static int32_t define(std::string_view line) {
    std::string value = bytes(line.substr(2));
    if (line[0] == 'F') return P_set_fonts(0, value.data());
    if (line[0] == 'G') return P_set_fontgroups(0, value.data());
    return P_set_fontpacket(0, value.c_str());
  }

  static std::string join(char **list) {
    if (list == nullptr) return "null ";
    std::string result = "[";
    for (char **text = list; *text != nullptr; ++text)
      result.append(text != list ? " " : "").append(show(*text));
    return result + "] ";
  }
  static std::string take(char **list) {
    const std::string result = join(list);
    Kfree(list);
    return result;
  }

  // Steps separated by blanks: +name selects, ?name asks, =NNN lists changes (all, old,
  // skip_default), s saves, r restores, c ends the save, n resets the named groups, 0 and 1 set
  // "SINGLE-FONT-GROUP". The answers come back in order.
  static std::string run(std::string_view script) {
    std::string answers;
    while (!script.empty()) {
      const std::string step(script.substr(0, script.find(' ')));
      script.remove_prefix(std::min(step.size() + 1, script.size()));
      const std::string before = bytes(step.substr(1));
      std::string name = before;
      const char kind = step[0];
      if (kind == '+') Kselect_font(name.data());
      if (kind == '?') answers += number(Kis_font_selected(name.data()));
      if (kind == '=')
        answers += take(Kfont_changes_since_save(name[0] == '1', name[1] == '1', name[2] == '1'));
      if (kind == 's') Ksave_font_state();
      if (kind == 'r') Krestore_font_state();
      if (kind == 'c') Kcleanup_font_save();
      if (kind == 'n') reset_named_font_groups();
      if (kind == '0' || kind == '1') number_of("SINGLE-FONT-GROUP") = kind - '0';
      EXPECT_EQ(name, before) << "the caller's text";
    }
    return answers;
  }
};

TEST_F(Fonts, AreDefinedLineByLine) {
  static constexpr struct {
    const char *line, *font, *place, *group, *number;
    int32_t result;
  } rows[] = {
      {"F Bold{FF}Wide", "Bold", "0 0,1", "H", "0", -7},
      {"F A{FF}B{FF}A", "A", "0 3,0", "H", "0", -6},
      {"F a{FF}{FF}b", "", "0 4,1", "", "-1", 0},
      {"F {FF}x", "x", "0 5,1", "h", "-1", -7},
      {"G J{FF}I{FF}K", "Courier", "-1 0,0", "J", "2", -8},
      {"G L{FF}", "MonoBold", "0 1,1", "K", "-1", 0},
      {"G ", "Mono ", "-1 0,0", "", "4", -8},
      {"P Heading", "Heading", "-1 0,0", "I", "1", 0},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(define(row.line), row.result) << row.line;
    int32_t group = 7, place = 7;
    const int32_t found = Kget_font_group_and_number(row.font, &group, &place);
    EXPECT_EQ(number(found) + " " + number(group) + "," + number(place), row.place) << row.line;
    EXPECT_EQ(number(find_named_font_group(row.group)), row.number) << row.line;
  }
  for (int i = 0; i < 10'000; ++i) define("F f" + number(i) + "{FF}g" + number(i));
  EXPECT_EQ(run("?f0 ?g9999 +g9999 ?g9999 ?f9999 ?f9998"), "10101");
  EXPECT_EQ(log(), "");
}

#define GONE "Undefined font 'Gone'.\n"
#define LOOP "Recursive font loop in font packet. Sorry\nProgram aborted.\n"

TEST_F(Fonts, AreSelectedAndAsked) {
  static constexpr struct {
    const char *script, *answers, *log;
  } rows[] = {
      {"?Roman ?Mono ?Bold ?Heading ?Empty +Bold ?Bold ?Roman ?Mono ?Empty", "110001011", ""},
      {"+Heading ?Heading ?Bold ?MonoBold ?Empty +Italic ?Heading", "11100", ""},
      {"+Bold +MonoBold ?Heading +Heading +Outer ?Heading ?Outer", "101", ""},
      {"+Gone ?Gone +Heading +Gone ?Heading ?Gone", "110", GONE GONE GONE GONE},
      {"+H{FF}a ?H{FF}a ?H{FF}b ?I{FF}a +H{FF}b{FF}c ?H{FF}a ?H{FF}b{FF}c n ?H{FF}b{FF}c", "100010",
       ""},
      {"+X{FF}a ?X{FF}a ?H{FF}a", "10",
       "Undefined named font group 'X' for font 'X{FF}a'\nUsing 'H' instead.\n"
       "Undefined named font group 'X'\nUsing 'H' instead.\n"},
      {"1 +Bold ?Bold ?Roman +X{FF}a ?X{FF}a ?Bold 0 ?Bold ?Roman", "101001", ""},
      // Packets in packets
      {"+Outer ?Outer ?Bold ?MonoBold +Bold ?Outer", "1110", LOOP},
      {"+Heading +Bold ?Twice", "0", LOOP LOOP},
      {"+Loop ?Italic +Pool ?Italic +Roman ?Loop ?Pool", "1100",
       GONE GONE GONE LOOP LOOP LOOP GONE LOOP},
  };
  for (const auto &row : rows) {
    start();
    EXPECT_EQ(run(row.script), row.answers) << row.script;
    EXPECT_EQ(log(), bytes(row.log)) << row.script;
  }
}

TEST_F(Fonts, AreSavedListedAndPutBack) {
  static constexpr struct {
    const char *script, *answers;
  } rows[] = {
      {"s +Italic +MonoBold =000 =010 =011 =001 r ?Roman ?Mono",
       "[Italic MonoBold] [Roman Mono] null [Italic MonoBold] 11"},
      {"s +Bold +Roman =000 =100 =101 +Italic +Gone =100 c ?Italic",
       "null [Roman] null [Italic] 1"},
      {"+H{FF}a s n =100 ?H{FF}a +H{FF}a =000 =100 +H{FF}b =000 =010 r ?H{FF}a",
       "null 0null [H{FF}a] [H{FF}b] [H{FF}a] 1"},
      {"s +I{FF}b +H{FF}a =010 =000 c =000 ?H{FF}a", "null [H{FF}a I{FF}b] null 1"},
      {"+H{FF}a s n r n s +H{FF}b r ?H{FF}b", "0"},
      {"+Heading s +Bold +Outer =000 =010 =100 r ?Heading ?Outer",
       "[Outer] [Heading] [Bold MonoBold Outer] 10"},
      {"s +Bold s =000 +Italic =000 r ?Bold r c =100", "null [Italic] 1null "},
      {"=111 r c ?Roman", "null 1"},
      {"+Heading s +Bold r ?Empty ?Heading", "01"},  // the last selection is a packet's again
  };
  for (const auto &row : rows) {
    start();
    EXPECT_EQ(run(row.script), row.answers) << row.script;
  }
  // Groups declared while a save is in force, or after it was put back
  for (const std::string step : {"s", "r"}) {
    run(step);
    for (int i = 0; i < 100; ++i) {
      define("F x" + number(i) + step + "{FF}y" + number(i) + step);
      define("G N" + number(i) + step);
    }
    run("+Bold +y99" + step + " +N99" + step + "{FF}f");
  }
  EXPECT_EQ(run("?y99s ?y99r ?N99s{FF}f ?N99r{FF}f ?Bold =000"), "01011null ");
}

TEST_F(Fonts, OfATextAreListed) {
  static constexpr struct {
    const char *text, *fonts, *new_fonts, *old_fonts, *all_fonts;
  } rows[] = {
      {"a{98}Bold{99}b{98}Roman{99}", "[Bold Roman] ", "null ", "null ", "[Roman] "},
      {"{98}H{FF}a{99}{98}Heading{99}{98}{98}Bold{99}{99}", "[H{FF}a Heading {98}Bold{99}] ",
       "[Bold MonoBold H{FF}a Heading] ", "[Roman Mono] ", "[Bold MonoBold H{FF}a Heading] "},
      {"{98}Mono{99}{98}I{FF}b", "[Mono I{FF}] ", "[I{FF}] ", "null ", "[Mono I{FF}] "},
      {"text", "[] ", "null ", "null ", "null "},
  };
  for (const auto &row : rows) {
    const std::string text = bytes(row.text);
    char **fonts = Kfonts_in_string(text.c_str());
    EXPECT_EQ(join(fonts), row.fonts) << row.text;
    memory::TextList(fonts).reset();
    EXPECT_EQ(take(Kfont_changes(text.c_str(), 0, 0)), row.new_fonts) << row.text;
    EXPECT_EQ(take(Kfont_changes(text.c_str(), 0, 1)), row.old_fonts) << row.text;
    EXPECT_EQ(take(Kfont_changes(text.c_str(), 1, 0)), row.all_fonts) << row.text;
    EXPECT_EQ(run("?Roman ?Mono ?Heading ?H{FF}a"), "1100") << row.text;
  }
  const std::string first = bytes("{98}H{FF}a{99}"), second = bytes("{98}H{FF}b{99}");
  char **older = Kfont_changes(first.c_str(), 1, 0), **newer = Kfont_changes(second.c_str(), 1, 0);
  for (int i = 0; i < 3; ++i) {
    Kselect_font(older[0]);
    EXPECT_EQ(take(older) + join(newer), i == 1 ? "[H{FF}b] [H{FF}a] " : "[H{FF}a] [H{FF}b] ");
    older = newer;
    newer = Kfont_changes(i == 1 ? second.c_str() : first.c_str(), 1, 0);
  }
  Kfree(older);
  Kfree(newer);
  // Only texts that are not in force any more are copies.
  run("+H{FF}b");
  const std::string all = bytes("{98}Bold{99}{98}H{FF}a{99}{98}Heading{99}");
  char **now = Kfont_changes(all.c_str(), 1, 0), **then = Kfont_changes(all.c_str(), 1, 1);
  for (int i = 0; i < 3; ++i) Kfree(Kfont_changes(first.c_str(), 1, 0));
  const fonts::State &state = fonts::state;
  EXPECT_EQ(join(then), "[Roman Mono H{FF}b] ");
  EXPECT_EQ(now[0], state.tables.font_groups[0][1]);
  EXPECT_EQ(now[3], state.tables.font_packets[0][0]);
  EXPECT_EQ(then[0], state.tables.font_groups[0][0]);
  EXPECT_EQ(then[2], state.selection.named_group_fonts[0]);
  Kfree(now);
  Kfree(then);
  // Names that selecting releases
  run("1 +Bold");
  Kselect_font(single_font);
  EXPECT_EQ(run("?Bold 0 s +I{FF}a"), "1");
  char **list = Kfont_changes_since_save(0, 0, 0);
  Kselect_font(list[0]);
  Kfree(list);
  EXPECT_EQ(run("?I{FF}a"), "1");
}

TEST_F(Fonts, ComeAndGoWithTheirTables) {
  reset_all();
  const int64_t blocks = blocks_in_use();
  for (int i = 0; i < 3; ++i) {
    EXPECT_STREQ(single_font, i == 0 ? "?" : nullptr);
    EXPECT_EQ(run("?Roman +Roman ?H{FF}a +H{FF}a s n r"), "00");
    Ksourcecode_defaults_for_parms("");
    EXPECT_EQ(run("1 ?? +? ?? ?Bold +Bold 0"), i == 0 ? "110" : "010");
    Kdestroy_kparm();
    if (i < 2) define_all();
    run("s +H{FF}a +Heading");
    define_all();
    if (i == 1) P_cleanup_fonts();
    P_init_fonts();
  }
  P_cleanup_fonts();
  P_cleanup_fonts();
  EXPECT_EQ(blocks_in_use(), blocks);
}

TEST_F(Fonts, OfHostilePacketsAreSelectedAndAskedAtOnce) {
  define("P deep50000{FF}Bold");
  for (int i = 0; i < 50'000; ++i) define("P deep" + number(i) + "{FF}deep" + number(i + 1));
  define("P double60{FF}Bold{FF}Gone{FF}Italic");
  for (int i = 0; i < 60; ++i) {
    const std::string next = "{FF}double" + number(i + 1);
    define("P double" + number(i) + next + "{FF}Roman" + next);
  }
  std::string all;
  for (int i = 0; i < 100; ++i) all += "{FF}all" + number(i);
  for (int i = 0; i < 100; ++i) define("P all" + number(i) + all + "{FF}Italic{FF}MonoBold");
  Kstop_logging_file();
  EXPECT_EQ(run("+deep0 ?Bold +Bold ?deep0 +double0 ?Italic +Roman ?double0"), "1110");
  EXPECT_EQ(run("+all0 ?Italic ?MonoBold ?all0 +Italic ?all0"), "1110");
}

TEST_F(Fonts, OfATextAreNotListedWithoutMemory) {
  for (bool failed = true; int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}) {
    if (!failed) break;
    FailingAllocation failing(n);
    char **fonts = Kfonts_in_string(
        "\x98"
        "Bold\x99");
    failed = failing.happened();
    EXPECT_EQ(fonts == nullptr, failed) << n;
    if (fonts != nullptr) memory::TextList(fonts).reset();
    EXPECT_TRUE(!failed || n < 12);
  }
}

TEST_F(Fonts, SurviveExhaustedMemory) {
  bool failed = true;
  for (int n = 1; failed; ++n) {
    reset_all();
    const int64_t blocks = blocks_in_use();
    {
      FailingAllocation failing(n);
      start();
      run("+H{FF}a s +I{FF}b +H{FF}b +X{FF}c ?X{FF}c +Heading =100 r +H{FF}c");
      Kfree(Kfont_changes("\x98H\xFF\x99", 1, 0));
      failed = failing.happened();
    }
    EXPECT_EQ(define("F old{FF}new"), 0);
    EXPECT_EQ(run("+new ?new ?old"), "10") << n;
    P_cleanup_fonts();
    EXPECT_EQ(blocks_in_use(), blocks) << n;
  }
}

}  // namespace

}  // namespace klib::test
