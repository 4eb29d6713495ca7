// String arrays, byte stacks and the double stack.

#include "tests/support.h"

namespace klib::test {

class Containers : public Library {};

TEST_F(Containers, EveryElementHasRoom) {
  static constexpr int32_t rows[][3] = {
      // slot, initial count, increment
      {0, 2, 3}, {1, 4, -150}, {2, 1, 0}, {3, 1, -100}, {5, 0, 5}, {19, 7, -101}};
  for (const auto &[slot, initial, increment] : rows) {
    char **base = a_make(slot, initial, increment);
    for (int i = 0; i < initial; ++i) EXPECT_EQ(a_check(slot, base + i), base) << "not due";
    for (int i = 0; i < 400; ++i) {
      base = a_check(slot, base + i);
      base[i] = const_cast<char *>("x");
    }
    EXPECT_EQ(take(a_string(slot, 0, 399)), std::string(400, 'x')) << slot;
    a_free(slot);
    a_free(slot);
  }
  EXPECT_EQ(log(), "Internal error. Allocating 0 bytes of memory.\n");
}

TEST_F(Containers, RangesAsOneTextOrAsCopies) {
  char **base = a_make(3, 4, 1);
  for (const char *text : {"ab", "c", "de", ""}) *base++ = const_cast<char *>(text);
  base[-1] = nullptr;
  std::string joined;
  for (const auto &[from, to] : {std::pair(0, 2), {2, 1}, {1, 3}, {-1, 1}, {0, INT32_MAX}})
    joined += take(a_string(3, from, to)) + "|";
  EXPECT_EQ(joined, "abcde||cde|(null)|(null)|") << "a null element is an empty text";
  for (const auto &[from, to, copies] :
       {std::tuple(0, 2, "ab,c,"), {1, 4, "c,de,,"}, {2, 2, ""}, {2, 0, ""}}) {
    char **copied = a_copy(3, from, to);
    std::string all;
    for (int i = 0, length = a_length(copied); i < length; ++i) all += take(copied[i]) + ",";
    EXPECT_EQ(all, copies);
    Kfree(copied);
  }
  const FailingAllocation failing(3);
  EXPECT_EQ(a_copy(3, 0, 3), nullptr);
}

TEST_F(Containers, FieldsOfAText) {
  static constexpr std::tuple<const char *, int32_t, int32_t, const char *> rows[] = {
      // clang-format off
      {"a,b,,c", ',', 0, "[a][b][][c]"}, {",a,", ',', 0, "[][a][]"}, {",,a,,", ',', 7, "[][a][]"},
      {"a{FF}b{FF}{FE}", -1, 0, "[a][b][{FE}]"}, {"ab", 0, 1, "[ab]"}, {"", ',', 0, "[]"},
      // clang-format on
  };
  for (const auto &[line, separator, collapse, expected] : rows) {
    std::string text = bytes(line), fields;
    char **array = a_separator(text.data(), separator, collapse);
    for (int i = 0; i < a_length(array); ++i) fields += "[" + show(array[i]) + "]";
    EXPECT_EQ(fields, expected) << line;
    Kfree(array);
  }
}

// "size:contents" of a byte stack, which is released.
std::string finish(int n) {
  const std::string contents = show(s_stack(n)), size = std::to_string(_stack[n].size);
  Kfree(_stack[n].base);
  _stack[n] = {};
  return size + ":" + contents;
}

TEST_F(Containers, StacksGrowByTheirSteps) {
  static constexpr struct {
    int32_t size, increment;
    const char *pushed, *filled, *result;
  } rows[] = {
      // clang-format off
      {4, 4, "abcd", "", "8:abcd"},    {4, 4, "", "0123456789", "12:0123456789"},
      {4, 4, "abc", "", "4:abc"},      {4, 4, "{FF}{80}", "{9D}", "4:{FF}{80}{9D}"},
      {4, -150, "abcd", "", "6:abcd"}, {4, -150, "", "abcdef", "9:abcdef"},
      {4, -101, "abcd", "", "5:abcd"}, {2, 0, "abc", "defg", "8:abcdefg"},
      {0, 3, "ab", "", "3:ab"},        {-5, -200, "a", "b", "4:ab"},
      {3, INT32_MAX, "abc", "cd", "3:ab"},  // a step beyond 32 bits: no room
      // clang-format on
  };
  for (const auto &row : rows) {
    s_make(3, row.size, row.increment);
    for (const char c : bytes(row.pushed)) s_push(3, c);
    s_fill(3, bytes(row.filled).c_str());
    EXPECT_EQ(finish(3), row.result) << row.size << " by " << row.increment;
  }
  s_make(9, 4, 2);
  s_fill(9, "abc");
  --_stack[9].top;
  s_fill(9, s_stack(9));
  EXPECT_EQ(finish(9), "6:abab") << "filled with its own contents";
}

TEST_F(Containers, WhatIsNotMadeIsHarmless) {
  for (const int32_t n : {-1, 20, INT32_MIN}) {
    char *next = nullptr;
    EXPECT_EQ(a_make(n, 1, 1), nullptr);
    EXPECT_EQ(a_check(n, &next), nullptr);
    EXPECT_EQ(a_string(n, 0, 0), nullptr);
    EXPECT_EQ(a_copy(n, 0, 1), nullptr);
    a_free(n);
    s_make(n, 1, 1);
    s_push(n, 'a');
    s_fill(n, "ab");
    EXPECT_EQ(s_stack(n), nullptr);
  }
  s_fill(0, "bc");
  EXPECT_EQ(finish(0) + " " + finish(4), "3:bc 1:");
  zap_double_object(0);
  push_on_double_stack(1, "text");
  EXPECT_EQ(_sa_index, 0);
}

TEST_F(Containers, DoubleStack) {
  init_double_stack();
  const char *const texts[] = {"x", "y", "", nullptr};
  for (const char *text : texts) push_on_double_stack(-_sa_index, text);
  EXPECT_EQ(show(_sa[3]) + std::to_string(_sa_index), "(null)4");
  for (const int32_t index : {1, 2, -1, INT32_MAX}) zap_double_object(index);
  for (int i = 2; i < 200; ++i) push_on_double_stack(i, "%s");
  while (_sa_index > 3) zap_double_object(2);
  EXPECT_EQ(_ta[0] * 100 + _ta[1] * 10 + _ta[2], 0 - 20 + 199);
  FILE *const stream = fopen("texts", "w");
  empty_double_stack(stream);
  fclose(stream);
  EXPECT_EQ(read_file("texts"), "x%s");
  push_on_double_stack(1, nullptr);
  free_double_stack();
  EXPECT_EQ(_sa_index, 1);
  init_double_stack();
  EXPECT_EQ(_sa_index, 0) << "whatever was left";
  free_double_stack();
  for (int n = 1; n <= 2 + 50 + 3; ++n) {
    const FailingAllocation failing(n);
    init_double_stack();
    for (int i = 0; i < 51; ++i) push_on_double_stack(i, "t");
    EXPECT_EQ(_sa_index, n <= 2 ? 0 : 50) << n;
    reuse_double_stack();
    free_double_stack();
  }
}

}  // namespace klib::test
