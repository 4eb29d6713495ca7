// The report: what it contains, and that hostile text remains text.
#include "programs/report/report.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

#include "programs/report/markup.h"
#include "workplace.h"

namespace klib::test {
namespace {

using namespace klib::programs;

TEST(ReportText, IsNothingButText) {
  static const struct {
    const char *text, *html;
  } rows[] = {
      {"<script>alert(1)</script>", "&lt;script&gt;alert(1)&lt;/script&gt;"},
      {"\" onload='x'", "&quot; onload=&#39;x&#39;"},
      {"&lt;", "&amp;lt;"},
      {"a\tb\nc", "a\tb\nc"},
      {"\x1B[2J\x7F", "{U+001B}[2J{U+007F}"},
      {"\u202Eevil", "{U+202E}evil"},
      {"Stra\u00DFe \U0001F526", "Stra\u00DFe \U0001F526"},
      {"a\xFF\xC3", "a\uFFFD\uFFFD"},
  };
  for (const auto &[text, html] : rows) {
    std::string escaped;
    append_escaped(text, escaped);
    EXPECT_EQ(escaped, html);
  }
}

TEST(ReportText, Badges) {
  static const struct {
    const char *kind, *text, *badge;
  } rows[] = {
      {"note", "1 font dropped", "font dropped"},
      {"note", "2 anchors placed by a fallback", "fallback"},
      {"note", "no translation, 1 font dropped", "untranslated"},
      {"error", "pair '1-9': the translation has only 3 words", "bad pair"},
      {"reopened", "the element of anchor 3 is closed and opened again", "split"},
      {"pair-inverted", "anchors 1 and 2 have changed places", "repair"},
      {"engine", "the engine 'x' ended with status 1", "note"},
  };
  for (const auto &[kind, text, badge] : rows) EXPECT_STREQ(badge_of(kind, text), badge) << text;
}

// What sha256sum says of the script, in base64.
TEST(ReportText, ThePolicyNamesTheScript) {
  const std::string name = testing::TempDir() + "report_script." + std::to_string(getpid());
  const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(name.c_str(), "wb"), fclose);
  const std::string script = report_script();
  fwrite(script.data(), 1, script.size(), file.get());
  fflush(file.get());
  const std::unique_ptr<FILE, int (*)(FILE *)> pipe(
      popen(("sha256sum <" + name +
             " | cut -c1-64 | tr a-f A-F | basenc -d --base16 -i 2>&1 | base64")
                .c_str(),
            "r"),
      pclose);
  char hash[100] = {};
  ASSERT_NE(fgets(hash, sizeof hash, pipe.get()), nullptr);
  remove(name.c_str());
  if (std::string(hash).find("basenc") == 0) GTEST_SKIP() << hash;
  EXPECT_EQ(hash, report_script_hash() + "\n");
}

class Report : public Workplace {};

TEST_F(Report, OfARun) {
  write("page.html",
        "<p>One <a href='\"&gt;'>big <b>house</b></a>, in<i>visible</i>&lt;script&gt;.</p>\n"
        "<p>Two.</p><script>alert('page')</script>\n");
  write("engine", "#!/bin/sh\nread -r a; echo \"$a ||| 0-0 1-1 2-2 3-3 7-7\"; read -r a; echo\n");
  const Outcome outcome = run("ktranslate",
                              "--engine 'sh engine' --html report.html -LANGUAGE ENGLISH "
                              "-TARGET-LANGUAGE ENGLISH page.html out.html");
  EXPECT_EQ(outcome.status, 1) << "a pair is bad";
  const std::string report = read("report.html");
  for (const char *part : {
           "script-src 'sha256-",
           "<title>page.html</title>",
           "<strong>2</strong> sentences</span>",
           "<strong>2</strong> sentences with notes</span>",
           "<li id=p1s0 data-p=\"0-0 1-1 2-2 3-3 7-7\" class=n>",
           "<em data-b=\"bad pair\"",
           "<em data-b=\"untranslated\"",
           ">⟨b</b><w>house</w><b class=k",
           "<w>in</w><b class=k",
           "<w c>visible</w>",
           "&lt;script&gt;.",
           "srcdoc=\"&lt;p>One",
       })
    EXPECT_NE(report.find(part), std::string::npos) << part;
  EXPECT_EQ(report.find("<script>"), report.rfind("<script>")) << "one script, the report's own";
}

TEST_F(Report, OfSentenceFiles) {
  write("page.html", "<p>One <b>two</b>.</p>");
  ASSERT_EQ(run("kextract", "-LANGUAGE ENGLISH job.kti page.html").status, 0);
  write("t", "Eins zwei.\n");
  write("a", "0-0 1-1 <script>\n");
  run("kcarry", "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN job.kti t a out.kti");
  const Outcome outcome = run("kshow",
                              "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN --html report.html "
                              "--result out.kti --alignment a job.kti");
  EXPECT_EQ(outcome.errors, "");
  const std::string report = read("report.html");
  for (const char *part : {"<li id=p1s0 data-p=\"0-0 1-1\">", "⟨b</b><w>two</w>", "<w>zwei</w>"})
    EXPECT_NE(report.find(part), std::string::npos) << part << report;
  EXPECT_EQ(run("kshow", "--html r2.html none.kti").status, 1);
  EXPECT_EQ(read("r2.html"), "(none)");
}

TEST_F(Report, CountsTokensWhereTheAlignmentDoes) {
  write("page.html", "<meta charset=utf-8><p>\u53E4\u3044<b>\u5BB6</b>\u3002</p>");
  write("t", "An old house.\n");
  write("a", "0-1 1-2 2-3\n");
  write("s.tok", "\u53E4\u3044 \u5BB6 \u3002\n");
  write("t.tok", "An old house .\n");
  ASSERT_EQ(run("kextract", "-LANGUAGE JAPANESE job.kti page.html").status, 0);
  ASSERT_EQ(run("kcarry",
                "-TARGET-LANGUAGE ENGLISH --source-tokens s.tok --target-tokens t.tok job.kti t a "
                "out.kti")
                .status,
            0);
  const Outcome outcome = run("kshow",
                              "-TARGET-LANGUAGE ENGLISH --html report.html --source-tokens s.tok "
                              "--target-tokens t.tok --alignment a --result out.kti job.kti");
  EXPECT_EQ(outcome.errors, "");
  const std::string report = read("report.html");
  for (const char *part : {"<w>\u53E4\u3044</w><b", "<w>\u5BB6</w>", "<w>\u3002</w>",
                           "<w>house</w>", "<w>.</w>", "data-p=\"0-1 1-2 2-3\""})
    EXPECT_NE(report.find(part), std::string::npos) << part << report;
}

TEST_F(Report, ShowsTheNotesOfAnotherRun) {
  write("page.html", "<p>One <b>two</b> three.</p><p>Four</p>");
  write("t", "Eins drei.\n\n");
  write("a", "0-0 2-1 7-7\n\n");
  ASSERT_EQ(run("kextract", "-LANGUAGE ENGLISH job.kti page.html").status, 0);
  run("kcarry", "-TARGET-LANGUAGE GERMAN --report notes.jsonl job.kti t a out.kti");
  const std::string arguments = "-LANGUAGE ENGLISH --html report.html --notes notes.jsonl ";
  EXPECT_EQ(run("kshow", arguments + "job.kti").errors, "");
  std::string report = read("report.html");
  for (const char *part :
       {"<em data-b=\"font dropped\" title=\"1 font dropped\">", "a:1: pair &#39;7-7&#39;",
        "<em data-b=\"untranslated\" title=\"no translation\">",
        "<strong>2</strong> sentences with notes"})
    EXPECT_NE(report.find(part), std::string::npos) << part << read("notes.jsonl");
  static const struct {
    const char *question, *notes, *message;
  } rows[] = {
      {"escapes and what else a record may have",
       R"({"x":[{"a":"}"},1],"severity" : "note","text":"\u00e9\ud83d\ude00\n<","sentence":0,"y":null})",
       ""},
      {"no JSON", "job.kti:3: sentence 0: 1 font dropped", "notes.jsonl:1: is no record"},
      {"cut off", R"({"severity":"note","text":"1 fo)", "notes.jsonl:1: is no record"},
      {"nothing to show", "", ""},
  };
  for (const auto &row : rows) {
    write("notes.jsonl", row.notes);
    run("kshow", "--html report.html job.kti");
    EXPECT_TRUE(run("kshow", arguments + "job.kti").errors.starts_with(row.message))
        << row.question;
    EXPECT_EQ(read("report.html").find("\xC3\xA9\xF0\x9F\x98\x80\n&lt;") != std::string::npos,
              std::string_view(row.notes).starts_with(R"({"x")"))
        << row.question;
  }
}

}  // namespace
}  // namespace klib::test
