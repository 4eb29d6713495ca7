// Checked file operations: results and reports, interrupted calls, full disks.

#include <cerrno>
#include <functional>

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

int interruptions = 0;  // still to come
int64_t interrupted_or(int64_t result) {
  errno = EINTR;
  return interruptions-- > 0 ? -1 : result;
}

TEST_F(CheckedFiles, ReportsEveryFailureAndGivesItsResult) {
  const int32_t abc = Kopen("abc", O_RDONLY), empty = Kopen("empty", O_RDWR);
  FILE *in = Kfopen2("abc", "r");
  char buffer[8];
  const struct {
    std::function<int64_t()> call;
    int64_t result;
    const char *log;
  } rows[] = {
      {[] { return Kopen("no/a", O_RDONLY); }, -1, "File 'no/a' cannot be opened.\n"},
      {[] { return Kcreat("no/a", 0600); }, -1, "File 'no/a' cannot be created.\n"},
      {[] { return Kfopen("no/a", "r") != nullptr; }, 0, "File 'no/a' cannot be opened.\n!"},
      {[] { return Kclose(-1, 0), 0; }, 0, "A file could not be closed.\n"},
      {[] { return Kfclose(nullptr, 1), 0; }, 0, "A file could not be closed.\n"},
      {[&] { return Kfile_size(abc); }, 3, ""},
      {[&] { return Kfile_size(empty); }, 0, ""},
      {[] { return Kfile_size(-1); }, 0, "Length of a file could not be determined.\n"},
      {[&] { return Kread(abc, buffer, 2); }, 2, ""},
      {[&] { return Kread(abc, buffer, 8); }, 1, "Tried to read 8 bytes. Read only 1 bytes.\n!"},
      {[&] { return Kread(abc, buffer, 0); }, 0, ""},
      {[&] { return Kread(abc, buffer, -1); }, -1,
       "Tried to read -1 bytes. Read only -1 bytes.\n!"},
      {[&] { return Kwrite(empty, "xy", 2); }, 2, ""},
      {[&] { return Kwrite(abc, "xy", 2); }, -1, "Tried to write 2 bytes. Wrote -1 bytes.\n!"},
      {[&] { return Kfread(in, buffer, 8); }, 3, "Tried to read 8 bytes. Read only 3 bytes.\n!"},
      {[&] { return Kfwrite(in, "x", 1); }, 0, "Tried to write 1 bytes. Wrote 0 bytes.\n!"},
      {[] { return Kprobe_file("abc") + 2 * Kprobe_file(".") + 4 * Kprobe_file("no"); }, 3, ""},
      {[] { return Kdelete_file("abc"), Kprobe_file("abc"); }, 0, ""},
      {[] { return Kdelete_file("."), 0; }, 0, "Could not delete file '.'\n!"},
  };
  for (const auto &row : rows) {
    std::string expected = row.log;
    if (expected.ends_with('!')) expected.replace(expected.size() - 1, 1, "Program aborted.\n");
    EXPECT_EQ(row.call(), row.result) << row.log;
    EXPECT_EQ(log(), expected);
  }
  Kclose(abc, 0);
  Kclose(empty, 1);
  Kfclose(in, 0);
  EXPECT_EQ(read_file("empty"), "xy");
}

TEST_F(CheckedFiles, RepeatsInterruptedCallsAndRefusesSizesBeyond32Bits) {
  platform::calls.read = [](int, void *, size_t) { return interrupted_or(3); };
  platform::calls.write = [](int, const void *, size_t) { return interrupted_or(2); };
  platform::calls.size = [](int) { return int64_t{1} << 31; };
  char buffer[3];
  interruptions = 2;
  EXPECT_EQ(Kread(0, buffer, 3), 3);
  interruptions = 2;
  EXPECT_EQ(Kwrite(0, buffer, 3), 2);
  EXPECT_EQ(Kfile_size(0), 0);
  EXPECT_EQ(log(), "Tried to write 3 bytes. Wrote 2 bytes.\nProgram aborted.\n");
}

TEST_F(CheckedFiles, CopiesWholeFilesOrSaysSo) {
  const std::string content = bytes("a{00}{0D}{0A}{FF}") + std::string(200000, 'x');
  write_file("long", content);
  const struct {
    const char *source, *target, *log;
  } rows[] = {
      {"missing", "abc", "File 'missing' cannot be opened.\nProgram aborted.\n"},
      {"abc", "no/a", "File 'no/a' cannot be opened.\nProgram aborted.\n"},
      {"long", "empty", ""},
      {"abc", "/dev/full", "A file could not be closed.\n"},
      {"long", "/dev/full", "A file could not be closed.\n"},
  };
  for (const auto &row : rows) {
    Kcopy_file(row.source, row.target);
    EXPECT_EQ(log(), row.log) << row.source << " to " << row.target;
  }
  EXPECT_EQ(read_file("abc"), "abc");
  EXPECT_TRUE(read_file("empty") == content);
}

}  // namespace

}  // namespace klib::test
