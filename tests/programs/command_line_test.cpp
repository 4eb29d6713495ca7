// The command line that all programs share, what they tell people and what they tell scripts.
#include <fstream>
#include <sstream>

#include "klib.h"
#include "workplace.h"

namespace klib::test {
namespace {

class CommandLine : public Workplace {};

TEST_F(CommandLine, WhatIsReadAndWhatIsRefused) {
  static const struct {
    const char *arguments;
    int status;
    const char *message;
  } rows[] = {
      {"--help", 0, ""},
      {"-LANGUAGE -h -h", 0, ""},
      {"a.kti --report=r.json b.anc c -LANGUAGE fr --help", 0, ""},
      {"", 1, "kmerge: no file names\n"},
      {"-- --help", 1, "kmerge: 1 file name, but each job takes 3\n"},
      {"a.kti b.anc", 1, "kmerge: 2 file names, but each job takes 3\n"},
      {"-NOSUCH 1 a.kti b.anc c", 1, "kmerge: unknown parameter: -NOSUCH\n"},
      {"-LANGUAGE=ENGLISH a.kti b.anc c", 1, "kmerge: unknown parameter: -LANGUAGE=ENGLISH\n"},
      {"-LANGUAGE", 1, "kmerge: a value is missing after -LANGUAGE\n"},
      {"--no\33such", 1, "kmerge: unknown option: --no{U+001B}such\n"},
      {"--report", 1, "kmerge: a value is missing after --report\n"},
      {"--quiet=1", 1, "kmerge: --quiet takes no value\n"},
      {"-KTI-START abc", 1, "kmerge: -KTI-START: 'abc' is not a whole number\n"},
      {"-KTI-START -1", 1, "kmerge: -KTI-START: '-1' is less than 0, the least that works\n"},
      {"-KTI-STEP 0", 1, "kmerge: -KTI-STEP: '0' is less than 1, the least that works\n"},
      {"-KTI-WIDTH 4294967296", 1, "kmerge: -KTI-WIDTH: '4294967296' has more than 32 bits\n"},
      {"-LOG-PATHNAME a", 1,
       "kmerge: -LOG-PATHNAME: 'a' is not a name for a log: it must end in a dot and a "
       "three-character type\n"},
      {"a b.anc c", 1, "kmerge: the name must end in a dot and a three-character type: a\n"},
      {"a.kti '' c", 1, "kmerge: a file name is empty\n"},
      {"a.kti b.anc c", 1, "a.kti: cannot be read: No such file or directory\n"},
      {"-- -a.kti b.anc c", 1, "-a.kti: cannot be read: No such file or directory\n"},
      {"'\33[2J\xE2\x80\xAE\x9B.kti' b.anc c", 1,
       "{U+001B}[2J{U+202E}{9B}.kti: cannot be read: No such file or directory\n"},
  };
  for (const auto &row : rows) {
    const Outcome outcome = run("kmerge", row.arguments);
    EXPECT_EQ(outcome.errors.substr(0, outcome.errors.find("Try ")), row.message) << row.arguments;
    EXPECT_EQ(outcome.status, row.status) << row.arguments;
    EXPECT_EQ(outcome.output.starts_with("Usage: kmerge "), row.status == 0) << row.arguments;
  }
}

TEST_F(CommandLine, NamesOfLanguages) {
  write("page.html", "<p>\xD1\x8F");  // a Russian letter, which only the Russian code page has
  static const struct {
    const char *given;
    bool known, russian;
  } rows[] = {
      {"RUSSIAN", true, true}, {"russian", true, true},
      {"RU", true, true},      {"ru-RU", true, true},
      {"rus", true, true},     {"ru_Cyrl-RU", true, true},
      {"German", true, false}, {"de", true, false},
      {"jp", true, false},     {"ja", true, false},
      {"xh", true, false},     {"zh", true, false},
      {"pt-BR", true, false},  {"Czech", true, false},
      {"cs", true, false},     {"RUNDI", true, false},
      {"rn", true, false},     {"'upper sorbian'", true, false},
      {"FOO", false, false},   {"Deutsch", false, false},
      {"''", false, false},    {"GERMAN-ENGLISH", false, false},
      {"de-", false, false},
  };
  for (const auto &row : rows) {
    const Outcome outcome =
        run("kextract", "-LANGUAGE " + std::string(row.given) + " job.kti page.html");
    EXPECT_EQ(outcome.status, row.known ? 0 : 1) << row.given << outcome.errors;
    EXPECT_EQ(outcome.errors.find("PORTUGUESE (PT)") != std::string::npos, !row.known) << row.given;
    if (!row.known) continue;
    EXPECT_EQ(read("job.kti").find(" \xFF\x91") != std::string::npos, row.russian) << row.given;
  }
}

TEST_F(CommandLine, HelpNamesEveryParameter) {
  Ksourcecode_defaults_for_parms("");
  Kstart_logging_file((directory_ + "/x.log").c_str());
  Kusage(0, 0);
  Kdestroy_kparm();
  std::istringstream log(read("x.log"));
  const std::string help = run("kextract", "--help").output + " ";
  int count = 0;
  for (std::string line; std::getline(log, line);) {
    const std::string name = line.substr(line.rfind(' ') + 1);
    if (line.find(':') != line.rfind(':') && line.find(": ") != line.npos) continue;
    if (name.empty() || name == "aborted.") continue;
    count++;
    EXPECT_TRUE(help.find("-" + name + " ") != help.npos ||
                help.find("-" + name + "\n") != help.npos)
        << line;
  }
  EXPECT_GE(count, 99);
  for (const char *part :
       {"--report FILE", "--quiet", "--version", "SWEDISH (SV)", "JAPANESE (JP, ja)"})
    EXPECT_NE(help.find(part), help.npos) << part;
  EXPECT_EQ(run("kshow", "--version").output, "kshow (klib) " KLIB_VERSION "\n");
}

TEST_F(CommandLine, StandardInputAndOutput) {
  write("page.html", "<p>a <b>c</b>");
  EXPECT_EQ(run("kextract", "job.kti -", "cat page.html | ").status, 0);
  write("t.txt", "A C\n");
  const Outcome carried =
      run("kcarry", "job.kti - out.kti --align=identity --quiet", "cat t.txt | ");
  EXPECT_EQ(carried.status, 0) << carried.errors;
  EXPECT_EQ(carried.errors, "");
  EXPECT_EQ(run("kmerge", "out.kti job.anc -").output, "<p>A <b>C</b>");
  EXPECT_EQ(run("kshow", "-", "cat out.kti | ").output, run("kshow", "out.kti").output);
}

TEST_F(CommandLine, RecordsForScripts) {
  write("page.html", "<!-- -->\n\n<p>a <b>c</b>");
  run("kextract", "job.kti page.html --report r.json");
  EXPECT_NE(read("r.json").find("\"kind\":\"sentence\",\"file\":\"job.txt\",\"line\":1,"
                                "\"sentence\":0,\"figures\":{\"page-line\":3}"),
            std::string::npos)
      << read("r.json");
  write("t.txt", "\xC3\xA4\n");
  write("a.txt", "9-\33\n");
  const Outcome outcome = run("kcarry", "job.kti t.txt a.txt out.kti --quiet --report r.json");
  EXPECT_EQ(outcome.errors,
            "a.txt:1: pair '9-{U+001B}': is not two numbers with '-' between them\n");
  const std::string report = read("r.json");
  for (const char *part :
       {"{\"program\":\"kcarry\",\"severity\":\"problem\",", "\"file\":\"a.txt\",\"line\":1,",
        "\"severity\":\"note\",", "\"text\":\""})
    EXPECT_NE(report.find(part), report.npos) << part << " in " << report;
}

}  // namespace
}  // namespace klib::test
