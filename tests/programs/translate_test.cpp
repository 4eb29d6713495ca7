// ktranslate: where results go, what engines may do, and what is left when something fails.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "programs/translate/sentences.h"
#include "workplace.h"

namespace klib::test {
namespace {

const char *const small = "<p>One <b>two</b>.</p>\n", *const pair = "<p>Three four. Five.</p>\n";

class Translate : public Workplace {
 protected:
  void SetUp() override {
    Workplace::SetUp();
    std::filesystem::create_directories(directory_ + "/site/sub");
    std::filesystem::create_directories(directory_ + "/tmp");
    write("site/a.html", small);
    write("site/sub/b.html", pair);
    write("site/empty.html", "<hr>\n");
  }
  Outcome translate(const std::string &arguments, const std::string &before = "") const {
    return run("ktranslate", "-LANGUAGE ENGLISH -TARGET-LANGUAGE ENGLISH --quiet " + arguments,
               "export TMPDIR=$PWD/tmp; " + before);
  }
  // All results, "a.html sub/b.html".
  std::string results() const {
    std::string names;
    for (const char *name : {"a.html", "empty.html", "sub/b.html"})
      if (std::filesystem::exists(directory_ + "/out/" + name))
        names.append(names.empty() ? "" : " ").append(name);
    return names;
  }
};

TEST_F(Translate, OnePage) {
  const Outcome outcome = translate("--engine 'sed s/o/0/g' site/a.html out.html");
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(read("out.html"), "<p>One <b>tw0</b>.</p>\n");
  EXPECT_EQ(run("ktranslate", "--copy - - -LANGUAGE ENGLISH", "cat site/a.html | ").output, small);
  EXPECT_EQ(translate("--copy site/a.html out.html", "trap '' CHLD; ").status, 0);
  EXPECT_TRUE(std::filesystem::is_empty(directory_ + "/tmp"));
}

TEST_F(Translate, TheEnginesOwnAlignment) {
  write("engine", "#!/bin/sh\nwhile read -r l; do echo 'zwei eins. ||| 0-1 1-0'; done\n");
  EXPECT_EQ(translate("--engine 'sh engine' site/a.html out.html").errors, "");
  EXPECT_EQ(read("out.html"), "<p><b>zwei</b> eins.</p>\n");
}

TEST_F(Translate, Answers) {
  static const struct {
    const char *answer, *translation, *pairs;
  } rows[] = {
      {"a b ||| 0-0 1-1", "a b", "0-0 1-1"},
      {"a ||| b ||| 0-0", "a ||| b", "0-0"},
      {"a ||| b", "a ||| b", "none"},
      {"a b |||", "a b", ""},
      {"a|||0-0", "a|||0-0", "none"},
      {"||| 0-0", "", "0-0"},
      {"a\r", "a", "none"},
      {"a ||| 0-0\r", "a", "0-0"},
      {"a  ", "a", "none"},
      {"", "", "none"},
      {"a ||| 0-0 x-1", "a ||| 0-0 x-1", "none"},
  };
  for (const auto &[answer, translation, pairs] : rows) {
    std::string_view text, links;
    bool has_links;
    programs::split_answer(answer, text, links, has_links);
    EXPECT_EQ(text, translation) << answer;
    EXPECT_EQ(has_links ? links : "none", pairs) << answer;
  }
}

// Whatever an engine does with the words for atoms, each atom is in the result once, and none of
// the words is.
TEST_F(Translate, AtomsOfSentences) {
  write("p.html", "<p>You have {{ n }} mails in <img src=a>, <b>dear</b> <?php who() ?>.</p>\n");
  static const struct {
    const char *question, *arguments, *asked, *result;
  } rows[] = {
      {"the engine keeps them", "--placeable XQ# --engine 'tee asked | sed s/mails/letters/'",
       "You have XQ1 mails in XQ2, dear XQ3.\n",
       "<p>You have {{ n }} letters in <img src=a>, <b>dear</b> <?php who() ?>.</p>\n"},
      {"the engine loses them", "--placeable XQ# --engine \"tee asked | sed 's/ XQ[0-9]//g'\"",
       "You have XQ1 mails in XQ2, dear XQ3.\n", nullptr},
      {"the engine writes them in another way", "--placeable XQ# --engine 'tee asked | tr XQ xq'",
       "You have XQ1 mails in XQ2, dear XQ3.\n", nullptr},
      {"none for an engine of which nothing is known", "--engine 'tee asked'",
       "You have {{ n }} mails in , dear .\n", nullptr},
  };
  for (const auto &[question, arguments, asked, expected] : rows) {
    EXPECT_EQ(translate(std::string(arguments) + " p.html out.html").errors, "") << question;
    const std::string result = read("out.html");
    EXPECT_EQ(read("asked"), asked) << question;
    EXPECT_EQ(expected ? result : "", expected ? expected : "") << question;
    for (const char *atom : {"{{ n }}", "<img src=a>", "<?php who() ?>"}) {
      const size_t at = result.find(atom);
      EXPECT_NE(at, result.npos) << question << ": " << result;
      EXPECT_EQ(result.find(atom, at + 1), result.npos) << question << ": " << result;
    }
    EXPECT_EQ(result.find("XQ"), result.npos) << question << ": " << result;
    EXPECT_EQ(result.find("xq"), result.npos) << question << ": " << result;
  }
}

TEST_F(Translate, WhatIsOffered) {
  write("p.html",
        "<p>a <code>b</code><pre>c\n d</pre><textarea>e "
        "&lt;</textarea><svg><text>f</text></svg>\xE4\n");
  static const struct {
    const char *options, *result;
  } rows[] = {
      {"--encoding latin1",
       "<p>A <code>b</code><pre>c\n d</pre><textarea>e "
       "&lt;</textarea><svg><text>f</text></svg>\xE4\n"},
      {"--encoding latin1 --translate-code --offer pre",
       "<p>A <code>B</code><pre>C\n D</pre><textarea>e "
       "&lt;</textarea><svg><text>f</text></svg>\xE4\n"},
      {"--encoding latin1 --offer svg,textarea",
       "<p>A <code>b</code><pre>c\n d</pre><textarea>E "
       "&lt;</textarea><svg><text>F</text></svg>\xE4\n"},
  };
  for (const auto &[options, result] : rows) {
    const std::string arguments = std::string(options) + " --engine 'tr a-z A-Z' p.html out.html";
    EXPECT_EQ(translate(arguments).errors, "") << options;
    EXPECT_EQ(read("out.html"), result) << options;
  }
  EXPECT_EQ(translate("--offer pre,code --copy p.html out.html").errors,
            "ktranslate: --offer: 'code' is none of textarea, pre and svg\n");
  EXPECT_EQ(translate("--placeable 'X #' --copy p.html out.html").errors,
            "ktranslate: --placeable: the form must be one word of ASCII, such as XXQ#\n");
  EXPECT_NE(translate("--copy p.html out.html").errors.find("--encoding NAME"), std::string::npos);
}

TEST_F(Translate, LinesOfAFile) {
  write("t.txt", "Eins zwei.\n");
  EXPECT_EQ(translate("--engine none --translation t.txt site/a.html out.html").status, 0);
  EXPECT_EQ(read("out.html"), "<p>Eins <b>zwei</b>.</p>\n");
  const Outcome outcome = translate("--engine none --translation t.txt site/sub/b.html x.html");
  EXPECT_EQ(outcome.errors, "t.txt: has 1 line, but the pages have 2 sentences\n");
  EXPECT_EQ(read("x.html"), "(none)");
}

TEST_F(Translate, FaultsOfEngines) {
  static const struct {
    const char *question, *engine, *message, *results;
  } rows[] = {
      {"good", "cat", "", "a.html empty.html sub/b.html"},
      {"everything at the end", "tac | tac", "", "a.html empty.html sub/b.html"},
      // It reads no further, so that nothing depends on how soon it ends.
      {"stops early", "sed -u 2q",
       "site/sub/b.html: sentence 1: the engine 'sed -u 2q' ended before "
       "its input did\n",
       "a.html empty.html"},
      {"dies", "head -n 1; exit 3",
       "site/sub/b.html: sentence 0: the engine 'head -n 1; exit 3' ended "
       "with status 3\n",
       "a.html empty.html"},
      {"a status at the end", "cat; exit 3",
       "site/sub/b.html: sentence 1: the engine 'cat; exit 3' "
       "ended with status 3\n",
       "a.html empty.html"},
      {"one line too few", "grep -v Five",
       "site/sub/b.html: sentence 1: the engine 'grep -v Five' has "
       "answered 2 lines, but was sent 3\n",
       "empty.html"},
      {"one line too many", "cat; echo x",
       "site/sub/b.html: sentence 1: the engine 'cat; echo x' has "
       "answered more lines than it was sent\n",
       "empty.html"},
      {"hangs", "head -n 1; sleep 100",
       "site/sub/b.html: sentence 0: the engine 'head -n 1; sleep 100' "
       "has not answered for 3 seconds\n",
       "a.html empty.html"},
      {"no UTF-8", "sed 's/Three/\\xFF/'",
       "site/sub/b.html: sentence 0: the engine "
       "'sed 's/Three/\\xFF/'' has answered with a line that is not UTF-8\n",
       "a.html empty.html"},
      {"a NUL", "sed 's/Five/\\x00/'",
       "site/sub/b.html: sentence 1: the engine "
       "'sed 's/Five/\\x00/'' has answered with a line that holds a NUL byte\n",
       "a.html empty.html"},
      {"is not there", "exec /nonexistent 2>&-",
       "site/a.html: sentence 0: the engine "
       "'exec /nonexistent 2>&-' ended with status 127\n",
       "empty.html"},
  };
  for (const auto &[question, engine, message, expected] : rows) {
    std::filesystem::remove_all(directory_ + "/out");
    write("engine", engine);
    // A busy machine may let a good engine wait for seconds.
    const std::string timeout = std::string(question) == "hangs" ? "3" : "60";
    const Outcome outcome =
        translate("--timeout " + timeout +
                  " --out-dir out --engine \"$(cat engine)\" site/a.html site/empty.html "
                  "site/sub/b.html");
    EXPECT_EQ(outcome.errors, message) << question;
    EXPECT_EQ(results(), expected) << question;
    EXPECT_EQ(outcome.status, *message ? 1 : 0) << question;
    EXPECT_TRUE(std::filesystem::is_empty(directory_ + "/tmp")) << question;
  }
}

TEST_F(Translate, OnePageFailsTheOthersStay) {
  write("site/sub/b.html", "<p>\xFF</p>");
  const Outcome outcome =
      translate("--engine cat --out-dir out site/a.html site/sub/b.html site/none.html");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(results(), "a.html");
  EXPECT_NE(outcome.errors.find("site/sub/b.html:1: "), std::string::npos) << outcome.errors;
  EXPECT_NE(outcome.errors.find("site/none.html: cannot be read"), std::string::npos);
}

TEST_F(Translate, NamesThatAreRefused) {
  static const struct {
    const char *arguments, *message;
  } rows[] = {
      {"site/a.html", "takes IN and OUT"},
      {"site/a.html b c", "takes IN and OUT"},
      {"site/a.html site/sub/../a.html", "is the same file as site/a.html"},
      {"--out-dir site site/a.html", "is the same file as site/a.html"},
      {"--out-dir out site/a.html site/sub/../a.html", "has the same result as"},
      {"--html site/a.html site/a.html x", "site/a.html: is the same file as site/a.html"},
      {"--html x site/a.html x", "x: is the same file as x"},
      {"--html site/sub/b.html site/a.html x", "b.html: exists and is no report of sentences"},
      {"--cache x site/a.html x", "x: is the same file as x"},
      {"--cache site/sub/b.html site/a.html x", "b.html: is no cache of translations"},
      {"--lexicon site/sub/b.html site/a.html site/sub/b.html", "is the same file as"},
      {"--report site/sub/b.html site/a.html x", "b.html: exists and is no report for scripts"},
      {"--out-dir out -", "has no name for a result"},
      {"--out-dir out", "no file names"},
  };
  for (const auto &[arguments, message] : rows) {
    const Outcome outcome = translate("--engine cat " + std::string(arguments));
    EXPECT_NE(outcome.errors.find(message), std::string::npos) << arguments << outcome.errors;
    EXPECT_EQ(outcome.status, 1) << arguments;
    EXPECT_EQ(read("site/a.html") + read("site/sub/b.html"), std::string(small) + pair);
    EXPECT_EQ(read("x"), "(none)") << arguments;
  }
  for (const char *options : {"", "--copy --engine cat", "--engine none", "--engine ''",
                              "--engine cat --translation t.txt"})
    EXPECT_EQ(translate(std::string(options) + " site/a.html out.html").status, 1) << options;
}

TEST_F(Translate, FontGroupsThatNobodyDeclares) {
  const Outcome outcome = translate("--copy -LIB-DIRECTORY /nonexistent site/a.html out.html");
  EXPECT_NE(outcome.errors.find("\"weight\" is not declared"), std::string::npos) << outcome.errors;
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(read("out.html"), "(none)");
}

TEST_F(Translate, AnyNames) {
  std::filesystem::create_directories(directory_ + "/site/x y");
  write("site/x y/-p", small);
  write("site/q", small);
  EXPECT_EQ(translate("--engine cat --out-dir out -- site/q 'site/x y/-p'").errors, "");
  EXPECT_EQ(read("out/x y/-p") + read("out/q"), std::string(small) + small);
}

// What was translated is not asked for again, not even after an engine that failed halfway.
TEST_F(Translate, Cache) {
  const std::string pages = " --cache c.db --out-dir out site/a.html site/sub/b.html";
  write("engine",
        "#!/bin/sh\nwhile read -r l; do echo \"$l\" >>asked; case $l in $1) exit 1;; esac;"
        " echo \"$l\" | tr o 0; done\n");
  EXPECT_EQ(translate("--engine \"sh engine '$BAD'\"" + pages, "BAD=Five*; ").status, 1);
  EXPECT_EQ(results(), "a.html");
  EXPECT_EQ(read("asked"), "One two.\nThree four.\nFive.\n");
  write("asked", "");
  EXPECT_EQ(translate("--engine \"sh engine '$BAD'\"" + pages, "BAD=Five*; rm -r out; ").status, 1);
  EXPECT_EQ(read("asked"), "Five.\n");
  EXPECT_EQ(results(), "a.html");
  write("asked", "");
  EXPECT_EQ(translate("--engine 'sh engine no'" + pages).errors, "");
  EXPECT_EQ(read("asked"), "One two.\nThree four.\nFive.\n") << "another engine";
  write("asked", "");
  EXPECT_EQ(translate("--engine 'sh engine no' --jobs 1" + pages).errors, "");
  EXPECT_EQ(read("asked"), "");
  EXPECT_EQ(read("out/sub/b.html"), "<p>Three f0ur. Five.</p>\n");
  for (int i = 0; i < 2; i++)  // answers that are out of step are not kept
    EXPECT_NE(translate("--engine 'cat; echo x'" + pages).errors.find("more lines"),
              std::string::npos);
}

TEST_F(Translate, TheFirstPagesParameterFiles) {
  write("site/KavroParm", "\x96LANGUAGE=RUSSIAN\n");
  write("site/sub/KavroParm", "\x96LANGUAGE=Russisch\n");
  write("site/r.txt", "<p>Привет <b>мир</b>.</p>");
  EXPECT_EQ(run("ktranslate", "--copy --quiet --out-dir out site/r.txt site/sub/b.html").errors,
            "");
  EXPECT_EQ(read("out/r.txt"), "<p>Привет <b>мир</b>.</p>");
  EXPECT_EQ(run("ktranslate", "--copy --quiet --out-dir out site/sub/b.html site/a.html").errors,
            "ktranslate: LANGUAGE in the parameter files: 'Russisch' is not a language\n");
}

TEST_F(Translate, AnInterruptedRunLeavesNothing) {
  const Outcome outcome =
      translate("--engine 'sleep 50' site/a.html out.html", "timeout -s TERM 1 ");
  EXPECT_EQ(outcome.errors, "ktranslate: interrupted: Terminated\n");
  EXPECT_EQ(outcome.status, 124);
  EXPECT_TRUE(std::filesystem::is_empty(directory_ + "/tmp"));
  EXPECT_EQ(read("out.html"), "(none)");
}

}  // namespace
}  // namespace klib::test
