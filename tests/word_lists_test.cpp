// Files read as lines, and the word list.

#include <algorithm>
#include <random>

#include "platform/platform.h"
#include "tests/support.h"

namespace klib::test {

namespace {

class WordLists : public Library {};

using Reader = char **(const char *, int32_t *);

// The lines of a file as "a|b|".
std::string lines_of(Reader *reader, const char *name) {
  int32_t count = -1;
  char **lines = reader(name, &count);
  if (lines == nullptr) return "(null) " + std::to_string(count);
  std::string shown;
  for (int32_t i = 0; i < count; ++i) shown += show(lines[i]) + "|";
  Kfree(lines[0]);
  Kfree(lines);
  return shown;
}

TEST_F(WordLists, SplitFilesIntoLines) {
  const struct {
    Reader *reader;
    const char *content, *lines;
  } rows[] = {
      {Kfile_to_array, "a{0A}b{0D}{0A}{0A}{0A}", "a|b|"},
      {Kfile_to_array, "a{00}{0A}{0B}b{0D}c{0D}d{0A}e{0D}", "a||{0B}b|e|"},
      {Kfile_to_array, "a{0A}{0D}b{0A}{0D}", "a|"},
      {Kfile_to_array, "{0A}{0A}", ""},
      {Kndxfile_to_array, "ab{00}c{0A}d{00}{00}", "ab|c{0A}d|"},
      {Kndxfile_to_array, "{0D}{00}{00}{0D}{0A}", "{0D}||{0D}{0A}|"},
  };
  for (const auto &row : rows)
    for (size_t before = 0; before < 130; ++before) {  // wherever a line may start in a block
      const std::string padding(before, 'x');
      write_file("file", padding + '\0' + bytes(row.content));
      const std::string lines = padding + "|" + row.lines;
      EXPECT_EQ(lines_of(row.reader, "file"), lines == "|" ? "" : lines) << row.content;
    }
  EXPECT_EQ(log(), "");
}

TEST_F(WordLists, ReportEmptyTextFiles) {
  write_file("empty", "");
  for (Reader *reader : {Kfile_to_array, Kndxfile_to_array})
    EXPECT_EQ(lines_of(reader, "empty"), "(null) 0");
  EXPECT_EQ(log(), "Could not open file 'empty'\n");
}

TEST_F(WordLists, SortSearchAndDump) {
  write_file("list", "b\nB\na\nab\n\xE4");
  ASSERT_EQ(Klist_in("list"), 0);
  Ksort_list();
  Kdump_list("dump");
  EXPECT_EQ(show(read_file("dump")), "B{0A}a{0A}ab{0A}b{0A}{E4}{0A}");
  EXPECT_EQ(Klist_search("ab") + 10 * Klist_search("\xE4"), 42);
  for (const char *word : {"", "A", "Bb", "c", "b\xFF"}) EXPECT_EQ(Klist_search(word), -1) << word;
  Kdump_list("/dev/full");
  EXPECT_EQ(log(), "A file could not be closed.\n");
  Kdestroy_list();
  Kdestroy_list();
  EXPECT_EQ(l_length, 5);
}

TEST_F(WordLists, DumpsLinesOfAllLengths) {
  std::string lines;
  for (const size_t length : {0u, 1u, 32766u, 0u, 32767u, 32768u, 5u, 100000u, 32760u, 7u, 0u, 3u})
    lines += std::string(length, 'a') + '\n';
  write_file("list", lines);
  ASSERT_EQ(Klist_in("list"), 0);
  Kdump_list("dump");
  EXPECT_EQ(read_file("dump"), lines);
  Kdestroy_list();
}

TEST_F(WordLists, SortLinesWithMuchInCommonWithAndWithoutMemory) {
  std::mt19937 random(1);
  for (const size_t common : {0u, 7u, 8u, 300u})
    for (const size_t count : {2u, 400u, 5000u}) {
      std::vector<std::string> words;
      std::string content;
      for (size_t i = 0; i < count; ++i) {
        std::string word(common - random() % 2 * (common / 8), 'x');
        do word += "ab\xFF"[random() % 3];
        while (random() % 12 != 0);
        content += word + "\n";
        words.push_back(word);
      }
      write_file("list", content);
      ASSERT_EQ(Klist_in("list"), 0);
      FailingAllocation none(common == 7 ? 1 : 0);
      Ksort_list();
      std::sort(words.begin(), words.end());
      for (size_t i = 0; i < count; ++i) {
        ASSERT_EQ(show(l_array[i]), show(words[i])) << common;
        EXPECT_EQ(l_array[Klist_search(l_array[i])], words[i]);
      }
      Kdestroy_list();
    }
  EXPECT_EQ(log(), "");
}

}  // namespace

}  // namespace klib::test
