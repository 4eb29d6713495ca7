// Checked file operations, path names and language names.

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "parameters/parameters.h"
#include "platform/platform.h"
#include "tests/support.h"

namespace klib::test {

namespace {

class CheckedFiles : public Library {
 protected:
  void SetUp() override {
    Library::SetUp();
    write_file("abc", "abc");
    write_file("empty", "");
  }
};

TEST_F(CheckedFiles, ReportWhatTheyAreNotMadeFor) {
  const int32_t abc = Kopen("abc", O_RDONLY);
  FILE *in = Kfopen2("abc", "r");
  char buffer[8];
  const struct {
    std::function<int64_t()> call;
    int64_t result;
    const char *log;
  } rows[] = {
      {[] { return Kfclose(nullptr, 1), 0; }, 0, "A file could not be closed.\n"},
      {[&] { return Kread(abc, buffer, 2); }, 2, ""},
      {[&] { return Kread(abc, buffer, 8); }, 1, "Tried to read 8 bytes. Read only 1 bytes.\n!"},
      {[&] { return Kread(abc, buffer, -1); }, -1,
       "Tried to read -1 bytes. Read only -1 bytes.\n!"},
      {[&] { return Kwrite(abc, "xy", 2); }, -1, "Tried to write 2 bytes. Wrote -1 bytes.\n!"},
      {[&] { return Kfread(in, buffer, 8); }, 3, "Tried to read 8 bytes. Read only 3 bytes.\n!"},
      {[&] { return Kfwrite(in, "x", 1); }, 0, "Tried to write 1 bytes. Wrote 0 bytes.\n!"},
      {[] { return Kprobe_file("abc") + 2 * Kprobe_file(".") + 4 * Kprobe_file("no"); }, 3, ""},
      {[] { return Kdelete_file("."), 0; }, 0, "Could not delete file '.'\n!"},
      {[] {
         platform::calls.size = [](int) { return int64_t{1} << 31; };
         return Kfile_size(0);
       },
       0, "Length of a file could not be determined.\n"},
  };
  for (const auto &row : rows) {
    std::string expected = row.log;
    if (expected.ends_with('!')) expected.replace(expected.size() - 1, 1, "Program aborted.\n");
    EXPECT_EQ(row.call(), row.result) << row.log;
    EXPECT_EQ(log(), expected);
  }
  Kclose(abc, 0);
  Kfclose(in, 1);
}

TEST_F(CheckedFiles, CopiesWholeFilesOrSaysSo) {
  const std::string content = bytes("a{00}{0D}{0A}{FF}") + std::string(200000, 'x');
  write_file("long", content);
  Kcopy_file("long", "empty");
  EXPECT_TRUE(read_file("empty") == content);
  Kcopy_file(".", "abc");
  EXPECT_EQ(log() + read_file("abc"), "File '.' cannot be read.\nabc");
  for (const char *source : {"abc", "long"}) Kcopy_file(source, "/dev/full");
  EXPECT_EQ(log(), "A file could not be closed.\nA file could not be closed.\n");
}

TEST_F(CheckedFiles, CopyNoFileOntoItself) {
  const std::string content(300000, 'x');
  write_file("long", content);
  std::filesystem::create_hard_link("long", "hard");
  std::filesystem::create_symlink("long", "soft");
  for (const char *source : {"long", "hard", "soft"})
    for (const char *target : {"long", "hard", "./soft"}) {
      Kcopy_file(source, target);
      EXPECT_TRUE(read_file("long") == content) << source << " to " << target;
    }
  EXPECT_EQ(log(), "");
}

TEST_F(CheckedFiles, CreateFilesForEveryoneButThoseMasked) {
  const mode_t mask = umask(0);
  Kclose(Kopen("new", O_WRONLY | O_CREAT), 0);
  Kclose(Kcreat("own", 0640), 0);
  umask(mask);
  const auto mode = [](const char *name) {
    return static_cast<int>(std::filesystem::status(name).permissions());
  };
  EXPECT_EQ(mode("new"), 0666);
  EXPECT_EQ(mode("own"), 0640);
}

class PathNames : public Library {};

std::string take_list(char **list) {
  std::string shown;
  for (char **name = list; *name != nullptr; ++name) shown.append("[").append(take(*name) + "]");
  Kfree(list);
  return shown;
}

TEST_F(PathNames, TakeTypesOffAndPutThemOn) {
  const struct {
    const char *name, *type, *with_par, *report;
  } rows[] = {
      {"a.b.txt", "txt", "a.b.par", ""},
      {"d.d/file", "d/file", "(null)", "'d.d/file' does not have the dot at the right position."},
      {"name.", "", "(null)", "'name.' does not have the dot at the right position."},
      {".txt", "txt", "(null)", "'.txt' is not long enough to give it type 'par'."},
      {"", "(null)", "(null)", "'' is not long enough to give it type 'par'."},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(take(Knew_type(row.name, "par", 0)), row.with_par) << row.name;
    EXPECT_NE(log().find(row.report), std::string::npos) << row.report;
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
  parameters::store_parameter_value(parameters::combined(parameters::Text::language), "GERMAN");
  EXPECT_EQ(take(Klib_pathname("x", 1)), "c:\\kavro\\dfmt/DE/x");
  EXPECT_EQ(take(Kbin_pathname("x")), "/x");
  EXPECT_EQ(take(Kcwd()), directory_);
  static size_t size;
  platform::calls.working_directory = [](char *, size_t room) -> char * {
    return size = room, nullptr;
  };
  EXPECT_EQ(Kcwd(), nullptr);
  EXPECT_EQ(size, 512U);
  platform::calls.working_directory = getcwd;
  EXPECT_EQ(take(Kpathname("doc.txt")), directory_ + "/doc.txt");
  EXPECT_EQ(take(Kpathname("\\doc.txt")), "\\doc.txt");
}

TEST(LanguageNames, TranslateBothWays) {
  EXPECT_STREQ(Klang_sh_lo("EL"), "GREEK");
  EXPECT_STREQ(Klang_lo_sh("CHINESE"), "XH");
  EXPECT_STREQ(Klang_sh_lo("de"), "UNKNOWN");
  EXPECT_STREQ(Klang_lo_sh(""), "UNKNOWN");
}

}  // namespace

}  // namespace klib::test
