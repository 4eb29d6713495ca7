// String arrays, byte stacks and the double stack.

#include "containers/byte_stacks.h"
#include "tests/support.h"

namespace klib::test {

constexpr char exhausted[] = "NO MORE MEMORY!\nProgram aborted.\n";
constexpr char no_bytes[] = "Internal error. Allocating 0 bytes of memory.\n";

std::string join(char **texts) {
  std::string result;
  for (int i = 0; i < a_length(texts); i++) result += "[" + show(texts[i]) + "]";
  return result;
}

// "size:contents" of a byte stack.
std::string state(int n) {
  const std::string contents = show(s_stack(n));
  return std::to_string(_stack[n].size) + ":" + contents;
}

std::string double_stack() {
  std::string result;
  for (int i = 0; i < _sa_index; i++) result += std::to_string(_ta[i]) + _sa[i] + " ";
  return result;
}

class Containers : public Library {
 protected:
  void TearDown() override {
    for (const byte_stack &stack : _stack) Kfree(stack.base);
    Library::TearDown();
  }
};

TEST_F(Containers, EveryElementHasRoom) {
  static constexpr int32_t rows[][3] = {// slot, initial count, increment
                                        {0, 2, 3},  {1, 4, -150}, {2, 1, 0},  {3, 1, -100},
                                        {4, 3, -1}, {5, 0, 5},    {19, 1, 1}, {9, 7, -101}};
  for (const auto &[slot, initial, increment] : rows) {
    char **base = a_make(slot, initial, increment);
    for (int i = 0; i < 400; i++) {
      base = a_check(slot, base + i);
      base[i] = const_cast<char *>("x");
    }
    EXPECT_EQ(take(a_string(slot, 0, 399)), std::string(400, 'x')) << slot;
    a_free(slot);
    a_free(slot);
  }
  EXPECT_EQ(a_make(0, -3, 1), nullptr);
  EXPECT_EQ(log(), std::string(no_bytes) + no_bytes);
  for (const int32_t slot : {-1, 20, INT32_MAX, INT32_MIN}) {
    char *next = nullptr;
    EXPECT_EQ(a_make(slot, 1, 1), nullptr);
    EXPECT_EQ(a_check(slot, &next), nullptr);
    EXPECT_EQ(a_string(slot, 0, 0), nullptr);
    EXPECT_EQ(a_copy(slot, 0, 1), nullptr);
    a_free(slot);
  }
}

TEST_F(Containers, AnArrayMovesOnlyWhenAStepIsDue) {
  char **const made = a_make(0, 4, 4);
  for (int i = 0; i < 4; i++) EXPECT_EQ(a_check(0, made + i), made);
  {
    const FailingAllocation failing(1);
    EXPECT_EQ(a_check(0, made + 4), nullptr);
  }
  EXPECT_EQ(a_check(0, made), made) << "the old array is still there";
  EXPECT_EQ(log(), exhausted);
  EXPECT_EQ(a_make(1, INT32_MAX, 1), nullptr);
  EXPECT_EQ(log(), exhausted);
}

TEST_F(Containers, RangesAsOneTextOrAsCopies) {
  static char texts[][3] = {"ab", "c", "de"};
  char **base = a_make(3, 4, 1);
  for (int i = 0; i < 3; i++) base[i] = texts[i];
  base[3] = nullptr;
  EXPECT_EQ(take(a_string(3, 0, 2)), "abcde");
  EXPECT_EQ(take(a_string(3, 2, 1)), "");
  EXPECT_EQ(take(a_string(3, 1, 3)), "cde") << "a null element is an empty text";
  EXPECT_EQ(take(a_string(3, -1, 1)) + take(a_string(3, 0, INT32_MAX)), "(null)(null)");
  for (const auto &[from, to, copies] :
       {std::tuple(0, 2, "[ab][c]"), {1, 4, "[c][de][]"}, {2, 2, ""}, {2, 0, ""}}) {
    const int64_t before = blocks_in_use();
    for (int n = 1; n <= 1 + to - from; n++) {
      const FailingAllocation failing(n);
      EXPECT_EQ(a_copy(3, from, to), nullptr);
    }
    EXPECT_EQ(blocks_in_use(), before);
    char **copied = a_copy(3, from, to);
    EXPECT_EQ(join(copied), copies);
    for (int i = a_length(copied); i > 0;) Kfree(copied[--i]);
    Kfree(copied);
  }
}

TEST_F(Containers, FieldsOfAText) {
  static constexpr struct {
    const char *text;
    int32_t separator, collapse;
    const char *fields;
  } rows[] = {
      // clang-format off
      {"a,b,,c", ',', 0, "[a][b][][c]"}, {"a,b,,c", ',', 1, "[a][b][c]"}, {"", ',', 0, "[]"},
      {",a,", ',', 0, "[][a][]"}, {",,a,,", ',', 7, "[][a][]"}, {",,", ',', 0, "[][][]"},
      {"a{FF}b{FF}{FE}", -1, 0, "[a][b][{FE}]"}, {"a{FF}b", 0xFF, 0, "[a][b]"}, {"ab", 0, 1, "[ab]"},
      // clang-format on
  };
  for (const auto &row : rows) {
    std::string text = bytes(row.text);
    char **fields = a_separator(text.data(), row.separator, row.collapse);
    EXPECT_EQ(join(fields), row.fields) << row.text;
    EXPECT_EQ(fields[0], text.data());
    Kfree(fields);
  }
}

TEST_F(Containers, StacksGrowByTheirSteps) {
  static constexpr struct {
    int32_t size, increment;
    const char *pushed, *filled, *state;
  } rows[] = {
      // clang-format off
      {4, 4, "abcd", "", "8:abcd"},       {4, 4, "", "0123456789", "12:0123456789"},
      {4, 4, "abc", "", "4:abc"},         {4, 4, "{FF}{80}", "{9D}", "4:{FF}{80}{9D}"},
      {4, -150, "abcd", "", "6:abcd"},    {4, -150, "", "abcdef", "9:abcdef"},
      {4, -101, "abcd", "", "5:abcd"},    {2, 0, "abc", "defg", "8:abcdefg"},
      {2, -100, "ab", "cd", "5:abcd"},    {0, 3, "ab", "", "3:ab"},
      {-5, -200, "a", "b", "4:ab"},       {1, INT32_MAX, "", "", "1:"},
      // clang-format on
  };
  for (const auto &row : rows) {
    s_make(3, row.size, row.increment);
    for (const char c : bytes(row.pushed)) s_push(3, c);
    s_fill(3, bytes(row.filled).c_str());
    EXPECT_EQ(state(3), row.state) << row.size << " by " << row.increment;
    Kfree(_stack[3].base);
    _stack[3] = {};
  }
}

TEST_F(Containers, OwnersMoveTheTopOfAStack) {
  s_make(9, 4, 2);
  s_fill(9, "abc");
  _stack[9].top--;
  s_fill(9, s_stack(9));
  EXPECT_EQ(state(9), "6:abab") << "filled with its own contents";
  EXPECT_TRUE(byte_stacks::append(9, {_stack[9].base + 1, 3}));
  EXPECT_EQ(state(9), "8:ababbab");
  _stack[9].top = _stack[9].base;
  EXPECT_EQ(state(9), "8:");
}

TEST_F(Containers, StacksWithoutMemoryOrNotMade) {
  s_make(2, 3, INT32_MAX);
  s_fill(2, "ab");
  s_push(2, 'c');
  s_fill(2, "cd");
  EXPECT_EQ(state(2), "3:ab") << "a step beyond 32 bits";
  EXPECT_EQ(log(), exhausted);
  for (const int32_t n : {-1, 10, INT32_MIN}) {
    s_make(n, 1, 1);
    s_push(n, 'a');
    s_fill(n, "ab");
    EXPECT_EQ(s_stack(n), nullptr);
  }
  {
    const FailingAllocation failing(1);
    s_make(1, 10, 10);
  }
  s_push(1, 'a');
  s_fill(0, "bc");
  EXPECT_EQ(state(1) + " " + state(0) + " " + state(4), "10:a 3:bc 1:");
}

TEST_F(Containers, PairsOfTheDoubleStack) {
  push_on_double_stack(1, "before it is made");
  init_double_stack();
  push_on_double_stack(1, "x");
  push_on_double_stack(-2, "y");
  push_on_double_stack(3, "");
  for (const int32_t index : {1, 2, -1, INT32_MAX}) zap_double_object(index);
  EXPECT_EQ(double_stack(), "1x 3 ");
  push_on_double_stack(4, "%s");
  FILE *const stream = fopen("texts", "w");
  empty_double_stack(stream);
  fclose(stream);
  EXPECT_EQ(read_file("texts") + double_stack(), "x%s");
  std::string expected;
  for (int i = 0; i < 200; i++) {
    push_on_double_stack(i, "t");
    expected += std::to_string(i) + "t ";
  }
  EXPECT_EQ(double_stack(), expected);
}

TEST_F(Containers, DoubleStackWithoutMemory) {
  const int64_t before = blocks_in_use();
  for (int n = 1; n <= 2 + 50 + 3; n++) {
    const FailingAllocation failing(n);
    init_double_stack();
    for (int i = 0; i < 51; i++) push_on_double_stack(i, "t");
    EXPECT_EQ(_sa_index, n <= 2 ? 0 : 50) << n;
    reuse_double_stack();
    free_double_stack();
    zap_double_object(0);
    EXPECT_EQ(blocks_in_use(), before) << n;
  }
}

}  // namespace klib::test
