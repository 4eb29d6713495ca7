// Anchors: codes, the text file and its index, and hostile index files.

#include <climits>

#include "platform/platform.h"
#include "tests/support.h"

namespace klib::test {

namespace {

TEST_F(Library, AnchorsAreNumberedStoredAndReadBack) {
  EXPECT_EQ(take(make_anchor()), "{94}0{95}");
  init_anchor_index_file();
  write_file("text", "?");
  const int32_t text = Kopen("text", O_RDWR), index = Kopen("index", O_RDWR | O_CREAT);
  EXPECT_EQ(take(make_anchor()), "{94}1{95}");
  EXPECT_EQ(take(make_font_anchor()), "{98}2{99}");
  for (const char *stored : {"abc", "", "%d"}) store_anchor(text, index, stored);
  finish_anchor_index_file(text, index);
  EXPECT_EQ(read_file("text"), "?abc%d");
  EXPECT_EQ(show(read_file("index")),
            "{01}{00}{00}{00}{04}{00}{00}{00}{04}{00}{00}{00}{06}{00}{00}{00}");
  platform::calls.seek(index, 0, SEEK_SET);
  read_anchor_indexes(index);
  for (const int32_t n : {3, 1, 1}) EXPECT_EQ(take(read_anchor(text, n)), n == 3 ? "%d" : "abc");
  Kcheck_all_anchors_used();
  free_anchor_indexes();
  Kcheck_all_anchors_used();
  EXPECT_EQ(take(read_anchor(text, 1)), "(null)");
  EXPECT_EQ(log(),
            "Anchor #1 read more than once.\nAnchor #2 lost.\n"
            "Internal error. There is no anchor #1.\n");
}

TEST_F(Library, HostileAnchorIndexesAreHarmless) {
  const struct {
    const char *index, *text, *log;
  } rows[] = {
      {"{01}{00}{00}{00}{FC}{FF}{FF}{FF}x", "abc", ""},
      {"{06}{00}{00}{00}xyz", "(null)", "Internal error. There is no anchor #1.\n"},
      {"{04}{00}{00}{00}{01}{00}{00}{00}", "(null)",
       "Internal error. Anchor #1 ends before it begins.\n"},
      {"{04}{00}{00}{00}{00}{01}{00}{00}", "de", "Tried to read 252 bytes. Read only 2 bytes.\n!"},
      {"{64}{00}{00}{00}{65}{00}{00}{00}", "", "Tried to read 1 bytes. Read only 0 bytes.\n!"},
      {"{FF}{FF}{FF}{FF}{02}{00}{00}{00}", "abc", "Seek error.\n"},
      {"{00}{00}{00}{00}{00}{00}{00}{80}", "?abcde",
       "Tried to read 2147483647 bytes. Read only 6 bytes.\n!"},
  };
  write_file("text", "?abcde");
  const int32_t text = Kopen("text", O_RDONLY);
  // A hostile length must not become a request for memory.
  static const auto allocate = platform::calls.allocate;
  platform::calls.allocate = [](size_t size) { return size < 4096 ? allocate(size) : nullptr; };
  for (const auto &row : rows) {
    write_file("index", bytes(row.index));
    read_anchor_indexes(Kopen("index", O_RDONLY));
    platform::calls.seek(text, 1, SEEK_SET);
    std::string expected = row.log;
    if (expected.ends_with('!')) expected.replace(expected.size() - 1, 1, "Program aborted.\n");
    EXPECT_EQ(take(read_anchor(text, 1)), row.text) << row.log;
    EXPECT_EQ(log(), expected);
  }
}

TEST_F(Library, AnchorsBeyondTheLastPositionAreStoredWithoutTheirText) {
  const int32_t text = Kcreat("text", 0600), index = Kcreat("index", 0600);
  platform::calls.seek = [](int, int64_t, int) { return int64_t{INT_MAX} - 1; };
  store_anchor(text, index, "ab");
  EXPECT_EQ(read_file("text") + show(read_file("index")), "{FE}{FF}{FF}{7F}");
  EXPECT_EQ(log(), "An anchor is stored without its text: the anchor text file is full.\n");
}

}  // namespace

}  // namespace klib::test
