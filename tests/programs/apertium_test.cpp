// Apertium's stream format; and Apertium itself, where it is installed.
#include "programs/engine/apertium.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "programs/engine/apertium_text.h"

namespace klib::programs {
namespace {

std::string shown(const std::vector<std::vector<int32_t>> &groups) {
  std::string text;
  for (const auto &group : groups) {
    text += text.empty() ? "" : " ";
    for (size_t i = 0; i < group.size(); i++) text += (i ? "+" : "") + std::to_string(group[i]);
    if (group.empty()) text += "-";
  }
  return text;
}

std::string shown(const std::vector<std::pair<int32_t, int32_t>> &pairs) {
  std::string text;
  for (const auto &[i, j] : pairs)
    text += (text.empty() ? "" : " ") + std::to_string(i) + "-" + std::to_string(j);
  return text;
}

TEST(ApertiumText, Blocks) {
  EXPECT_EQ(apertium_block("a/b [c] ~x \\^$@<>{}"),
            "a\\/b \\[c\\] [~]x \\\\\\^\\$\\@\\<\\>\\{\\}.[][\n]");
}

TEST(ApertiumText, Units) {
  static const struct {
    const char *question, *sentence, *analysis, *units;
  } rows[] = {
      {"word by word", "a big house", "^a/a<det>$ ^big/big<adj>$ ^house/house<n>$^./.<sent>$[][\n]",
       "0 1 2"},
      {"one unit, three words", "in spite of him",
       "^in spite of/in spite of<pr>$ ^him/x$^./.<sent>$[][\n]", "0+1+2 3"},
      {"two units, one word", "(now).", "^(/(<lpar>$^now/now<adv>$^)/)<r>$^./.<s>$^./.<s>$[][\n]",
       "0 0 0 0"},
      {"a blank that is not in the sentence", "Debian's own",
       "^Debian/*Debian$ ^'s/'s<gen>$ ^own/own<adj>$^./.<sent>$[][\n]", "0 0 1"},
      {"no unit", "a — b", "^a/a$ — ^b/b$^./.<sent>$[][\n]", "0 2"},
      {"escaped", "a/b [1]", "^a/a$\\/^b/b$ \\[^1/1<num>$\\]^./.<sent>$[][\n]", "0 0 1"},
      {"escapes in the analysis", "a$", "^a\\$/a\\$<n>$^./.<sent>$[][\n]", "0"},
      {"a blank that is carried along", "~a", "[~]^a/a$^./.<sent>$[][\n]", "0"},
      {"the added full stop in a unit", "etc", "^etc./etc.<adv>$[][\n]", "0"},
      {"another sentence", "a b", "^a/a$ ^c/c$^./.<sent>$[][\n]", "(unknown)"},
      {"cut off", "a b", "^a/a$ ^b", "(unknown)"},
      {"empty", "a", "", "(unknown)"},
  };
  for (const auto &[question, sentence, analysis, expected] : rows) {
    std::string marked;
    UnitWords units;
    const bool known = mark_units(analysis, sentence, marked, units);
    EXPECT_EQ(known ? shown(units) : "(unknown)", expected) << question;
  }
  std::string marked;
  UnitWords units;
  mark_units("^a/a$ — ^b/b$^./.<s>$[][\n]", "a — b", marked, units);
  EXPECT_EQ(marked, "[[t:w:0]]^a/a$[[/]] — [[t:w:1]]^b/b$[[/]]^./.<s>$[][\n]");
}

TEST(ApertiumText, Answers) {
  static const struct {
    const char *question, *block, *text, *units;
  } rows[] = {
      {"moved", "[[t:w:1]]casa[[/]] [[t:w:0]]grande[[/]].[][\n]", "casa grande", "1 0"},
      {"two units in a word", "[[t:w:0; t:w:2]]del[[/]].[][\n]", "del", "0+2"},
      {"words without unit", "a [[t:w:0]]b[[/]] —.[][\n]", "a b —", "- 0 -"},
      {"one unit, two words", "[[t:w:0]]de la[[/]]!.[][\n]", "de la!", "0 0"},
      {"escaped", "a\\[1\\] [~]b.[][\n]", "a[1] ~b", "- -"},
      {"no full stop left", "hola[][\n]", "hola", "-"},
      {"the sentence's own full stop", "hola..[][\n]", "hola.", "-"},
      {"no end", "hola", "(lost)", ""},
      {"no mark's end", "[[t:w:0 hola.[][\n]", "(lost)", ""},
      {"empty", "", "(lost)", ""},
      {"nothing left", ".[][\n]", "", ""},
  };
  for (const auto &[question, block, text, units] : rows) {
    ApertiumAnswer answer;
    const bool whole = read_answer(block, answer);
    EXPECT_EQ(whole ? answer.text : "(lost)", text) << question;
    EXPECT_EQ(whole ? shown(answer.units) : "", units) << question;
  }
}

TEST(ApertiumText, Pairs) {
  static const struct {
    const char *question, *sentence;
    UnitWords units;
    const char *block, *plain, *pairs;
  } rows[] = {
      {"as marked",
       "a big house",
       {{0}, {1}, {2}},
       "[[t:w:0]]una[[/]] [[t:w:2]]casa[[/]] [[t:w:1]]grande[[/]].[][\n]",
       "una casa grande",
       "0-0 1-2 2-1"},
      {"a unit of three words",
       "in spite of him",
       {{0, 1, 2}, {3}},
       "[[t:w:0]]a pesar de[[/]] [[t:w:1]]él[[/]].[][\n]",
       "a pesar de él",
       "0-0 0-1 0-2 1-0 1-1 1-2 2-0 2-1 2-2 3-3"},
      {"another word when marked",
       "a b c",
       {{0}, {1}, {2}},
       "[[t:w:0]]A[[/]] [[t:w:1]]X[[/]] [[t:w:2]]C[[/]].[][\n]",
       "A B C",
       "0-0 2-2"},
      {"fewer words when marked",
       "a b c",
       {{0}, {1}, {2}},
       "[[t:w:0]]A[[/]] [[t:w:2]]C[[/]].[][\n]",
       "A Y Z C",
       "0-0 2-3"},
      {"words that no unit knows",
       "a — b – —",
       {{0}, {2}},
       "— [[t:w:1]]B[[/]] — – [[t:w:0]]A[[/]].[][\n]",
       "— B — – A",
       "0-4 1-0 2-1 3-3 4-2"},
      {"a unit that is none", "a", {{0}}, "[[t:w:7]]A[[/]] [[t:w:-1]]B[[/]].[][\n]", "A B", ""},
  };
  for (const auto &[question, sentence, units, block, plain, pairs] : rows) {
    ApertiumAnswer answer;
    ASSERT_TRUE(read_answer(block, answer)) << question;
    EXPECT_EQ(shown(apertium_pairs(sentence, units, answer, plain)), pairs) << question;
  }
}

TEST(ApertiumText, Languages) {
  std::string source, target;
  apertium_languages("eng-cat_valencia", source, target);
  EXPECT_EQ(source + " " + target, "en ca");
  apertium_languages("xyz", source, target);
  EXPECT_EQ(source + " " + target, "xyz ");
}

TEST(Apertium, UnknownModes) {
  for (const char *mode : {"", "eng-xyz", "../eng-spa", "eng-spa; touch x", "-z"}) {
    Apertium engine;
    std::string problem;
    EXPECT_FALSE(open_apertium(mode, false, engine, problem)) << mode;
    EXPECT_NE(problem.find("apertium -l"), problem.npos) << mode;
  }
}

// Translates with a mode if it is installed.
class ApertiumMode : public ::testing::Test {
 protected:
  bool open(const char *mode, bool marks_unknown = false) {
    std::string problem;
    return open_apertium(mode, marks_unknown, engine_, problem);
  }
  std::string translate_lines(const std::vector<std::string> &sentences) {
    std::vector<ApertiumTranslation> translations;
    const StreamEnd end = translate_batch(engine_, sentences, translations);
    std::string lines;
    for (const ApertiumTranslation &t : translations)
      lines += t.text + (t.is_lost ? " (lost)" : t.is_aligned ? " ||| " + t.pairs : "") + "\n";
    return end.kind == StreamEnd::good ? lines : lines + end.reason;
  }
  Apertium engine_;
};

TEST_F(ApertiumMode, EnglishToSpanish) {
  if (!open("eng-spa")) GTEST_SKIP() << "apertium-eng-spa is not installed";
  EXPECT_EQ(translate_lines({"The big house is red.", "In spite of the rain", "a/b [x] ^$ \\ qwzx",
                             "The computer's screen"}),
            "La casa grande es roja. ||| 0-0 1-2 2-1 3-3 4-4\n"
            "A pesar de la lluvia ||| 0-0 0-1 0-2 1-0 1-1 1-2 2-0 2-1 2-2 3-3 4-4\n"
            "Un/b [x] ^$ \\ qwzx ||| 0-0 1-1 2-2 3-3 4-4\n"
            "La pantalla del ordenador ||| 0-2 1-3 2-0 2-1\n");
  ASSERT_TRUE(open("eng-spa", true));
  EXPECT_EQ(translate_lines({"the qwzx"}), "El *qwzx ||| 0-0 1-1\n");
}

// A mode whose commands are scripts.
class ScriptedMode : public ApertiumMode {
 protected:
  void SetUp() override {
    std::string name = testing::TempDir() + "apertium_test.XXXXXX";
    directory_ = mkdtemp(name.data());
    std::filesystem::create_directories(directory_ + "/modes");
    setenv("APERTIUM_DATADIR", directory_.c_str(), 1);
  }
  void TearDown() override {
    unsetenv("APERTIUM_DATADIR");
    std::filesystem::remove_all(directory_);
  }
  // The analyser makes one unit of each word; the translation then goes through `script`, of awk.
  bool make(const std::string &script) {
    write("analyse",
          "sub(/\\.\\[\\]\\[\\n\\]$/, \"\"); n = split($0, w, \" \"); s = \"\";"
          "for (i = 1; i <= n; i++) s = s (i > 1 ? \" \" : \"\") \"^\" w[i] \"/x$\";"
          "print s \"^./.$[][\\n]\"");
    write("change",
          "$0 = gensub(/\\^([^\\/]*)\\/[^$]*\\$/, \"\\\\1\", \"g\"); " + script + "; print");
    std::ofstream(directory_ + "/modes/test.mode")
        << directory_ << "/analyse | " << directory_ << "/change\n";
    engine_ = Apertium{};
    return open("test");
  }
  void write(const std::string &name, const std::string &script) {
    const std::string path = directory_ + "/" + name;
    std::ofstream(path) << "#!/bin/sh\nexec gawk 'BEGIN { RS = ORS = \"\\0\" } { " << script
                        << "; fflush() }'\n";
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  }
  std::string directory_;
};

TEST_F(ScriptedMode, LosesBlanksOrSentences) {
  if (!make("1")) GTEST_SKIP() << "apertium is not installed";
  static const struct {
    const char *question, *script, *lines;
  } rows[] = {
      {"keeps everything", "1", "a b ||| 0-0 1-1\nc ||| 0-0\n"},
      {"loses blanks", "gsub(/\\[\\[[^]]*\\]\\]/, \"\")", "a b\nc\n"},
      {"blanks change words", "gsub(/t:w:0\\]\\]./, \"&x\")", "a b\nc\n"},
      {"loses a sentence", "if (/c/) exit 1", "a b\nc (lost)\n"},
      {"stray ends", "if (/c/) { printf \"\\0\\0\\0\"; exit 1 }", "a b\nc (lost)\n"},
      {"ends too often", "print \"\"", "a b (lost)\nc (lost)\n"},
  };
  for (const auto &[question, script, lines] : rows) {
    ASSERT_TRUE(make(script)) << question;
    EXPECT_EQ(translate_lines({"a b", "c"}), lines) << question;
  }
}

}  // namespace
}  // namespace klib::programs
