// Path names, file types and language names.

#include "parameters/parameters.h"
#include "platform/platform.h"
#include "tests/support.h"

namespace klib::test {

namespace {

using parameters::store_parameter_value;

class PathNames : public Library {};

std::string take_list(char **list) {
  std::string shown;
  for (char **name = list; *name != nullptr; name++) shown.append("[").append(take(*name) + "]");
  Kfree(list);
  return shown;
}

TEST_F(PathNames, TakeTypesOffAndPutThemOn) {
  const struct {
    const char *name, *type, *with_par, *log;
  } rows[] = {
      {"a.txt", "txt", "a.par", ""},
      {"a.b.txt", "txt", "a.b.par", ""},
      {"d.d/file", "d/file", "(null)", "'d.d/file' does not have the dot at the right position"},
      {"name.", "", "(null)", "'name.' does not have the dot at the right position"},
      {".txt", "txt", "(null)", "'.txt' is not long enough to give it type 'par'"},
      {"", "(null)", "(null)", "'' is not long enough to give it type 'par'"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(take(Knew_type(row.name, "par", 0)), row.with_par) << row.name;
    std::string report = "The filename " + std::string(row.log) + ".\nProgram aborted.\n";
    EXPECT_EQ(log(), *row.log != '\0' ? report : "");
    EXPECT_EQ(take(Kfile_type(row.name)), row.type) << row.name;
  }
  EXPECT_EQ(log(), "The filename '' does not have a dot.\nProgram aborted.\n");
}

TEST_F(PathNames, ListTheDirectoriesOfAPath) {
  const struct {
    const char *path, *entries;
  } rows[] = {
      {"/a/b/doc.txt", "[/P][/a/P][/a/b/P]"}, {"doc.txt", ""},   {"", ""},
      {"C:\\work/doc.txt", "[C:\\work/P]"},   {"a\\b", ""},      {"a\\\\b", "[a\\\\P]"},
      {"a\\/b/", "[a\\/P][a\\/b/P]"},         {"a\\", "[a\\P]"}, {"//", "[/P][//P]"},
      {"\\\\\\", "[\\\\P][\\\\\\P]"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(take_list(Ksearch_path(row.path, "P")), row.entries) << row.path;
}

TEST_F(PathNames, StandBelowTheirDirectories) {
  EXPECT_EQ(take(Klib_pathname("x", 0)), "c:\\kavro\\dfmt/x");
  store_parameter_value(65, "GERMAN");
  EXPECT_EQ(take(Klib_pathname("x", 1)), "c:\\kavro\\dfmt/DE/x");
  EXPECT_EQ(take(Kbin_pathname("x")), "/x");
  EXPECT_EQ(take(Kcwd()), directory_);
  EXPECT_EQ(take(Kpathname("doc.txt")), directory_ + "/doc.txt");
  EXPECT_EQ(take(Kpathname("/doc.txt")), "/doc.txt");
  EXPECT_EQ(take(Kpathname("\\doc.txt")), "\\doc.txt");
  platform::calls.working_directory = [](char *, size_t) -> char * { return nullptr; };
  EXPECT_EQ(Kpathname("doc.txt"), nullptr);
  EXPECT_EQ(log(), "Unable to get current working directory.\nProgram aborted.\n");
}

TEST(LanguageNames, TranslateBothWays) {
  EXPECT_STREQ(Klang_sh_lo("EL"), "GREEK");
  EXPECT_STREQ(Klang_lo_sh("CHINESE"), "XH");
  for (const char *name : {"de", "GERMAN", ""}) EXPECT_STREQ(Klang_sh_lo(name), "UNKNOWN") << name;
  for (const char *name : {"German", "DE", ""}) EXPECT_STREQ(Klang_lo_sh(name), "UNKNOWN") << name;
}

}  // namespace

}  // namespace klib::test
