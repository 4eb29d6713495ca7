// Regular expressions: compiled forms, errors, matches, the searches, and the decisions by sets
// compared with plain backtracking.

#include "pattern/regex_walk.h"

#include <cstring>
#include <iterator>
#include <random>
#include <sstream>
#include <utility>

#include "tests/support.h"

namespace klib::test {

namespace {

std::string members(const uint8_t *bitmap, int size) {
  std::string text;
  for (int c = 0; c < size * 8; ++c) {
    if ((bitmap[c / 8] & 1 << c % 8) == 0) continue;
    const int first = c;
    while (c + 1 < size * 8 && (bitmap[(c + 1) / 8] & 1 << (c + 1) % 8) != 0) ++c;
    text += static_cast<char>(first);
    if (c != first) text += std::string(c - first > 1 ? "-" : "") + static_cast<char>(c);
  }
  return "<" + show(text) + ">";
}

// The compiled form of the last of the expressions: codes and counts in decimal, the byte of a
// literal in quotes, a bitmap as its members.
std::string form(const std::vector<const char *> &expressions) {
  regex::Compiled compiled;
  const regex::Expression *expression = nullptr;
  for (const char *text : expressions) expression = regex::regex_compile(text, compiled);
  if (expression == nullptr) return "none";
  std::string text = expression->anchored ? "^ " : "";
  const uint8_t *item = expression->items.data();
  for (; *item != regex::end; item = regex::next_item(item)) {
    const auto size = static_cast<int>(regex::operand_size(regex::plain(*item)));
    text += std::to_string(*item) + " ";
    if (size > 1)
      text += members(item + 1, size) + " ";
    else if (size == 1)
      text += regex::plain(*item) == regex::literal
                  ? "'" + show({reinterpret_cast<const char *>(item + 1), 1}) + "' "
                  : std::to_string(item[1]) + " ";
    for (const uint8_t *count = item + 1 + size; count < regex::next_item(item); ++count)
      text += std::to_string(*count) + " ";
  }
  EXPECT_EQ(item + 1 - expression->items.data(), expression->size);
  return text + std::to_string(*item);
}

std::string repeated(const char *text, int times) {
  std::string result;
  while (times-- > 0) result += text;
  return result;
}

int32_t search_one(const std::string &expression, const std::string &text) {
  std::string copy = expression;
  char *list = copy.data();
  return regex_search(text.c_str(), 1, &list);
}

}  // namespace

class RegularExpressions : public Library {};

TEST_F(RegularExpressions, CompiledForms) {
  static constexpr std::pair<const char *, const char *> rows[] = {
      {"ab\\{2\\}c", "4 'a' 7 'b' 2 2 4 'c' 22"},
      {"x**", "5 'x' 22"},
      {"\\(a\\)\\(b\\)\\1*\\2\\{1,3\\}", "2 0 4 'a' 24 0 2 1 4 'b' 24 1 37 0 39 1 1 3 22"},
      {"\\(\\(a\\)\\1\\)", "2 0 2 1 4 'a' 24 1 36 0 24 0 22"},
      {"a\\{2,\\}.\\{0,255\\}", "7 'a' 2 255 11 0 255 22"},
      {"^$", "^ 20 22"},
      {"^", "^ 22"},
      {"a^$b$", "4 'a' 4 '^' 4 '$' 4 'b' 20 22"},
      {"a$\nb", "4 'a' 20 22"},
      {"\\<a\\>.*", "28 4 'a' 30 9 22"},
      // nothing to repeat
      {"**", "5 '*' 22"},
      {"^*\\(*\\)*\\<*\\>*", "^ 4 '*' 2 0 4 '*' 24 0 4 '*' 28 4 '*' 30 4 '*' 22"},
      {"\\{2\\}", "4 '{7B}' 4 '2' 4 '{7D}' 22"},
      {"^\\{\\(\\{a\\)\\{\\<\\{", "^ 4 '{7B}' 2 0 4 '{7B}' 4 'a' 24 0 4 '{7B}' 28 4 '{7B}' 22"},
      // one repetition after the other
      {"a*\\{1,2\\}b\\{3\\}*c\\{4\\}\\{5\\}", "7 'a' 1 2 7 'b' 3 3 7 'c' 5 5 22"},
      // the backslash
      {"\\.\\*\\[\\$\\^\\\\\\n\\0\\}",
       "4 '.' 4 '*' 4 '[' 4 '$' 4 '^' 4 '\\' 4 'n' 4 '0' 4 '{7D}' 22"},
      {"a\\", "4 'a' 4 '\\' 22"},
      {"\351\\\350", "4 '{E9}' 4 '{E8}' 22"},
      // sets
      {"[]]", "12 <]> 22"},
      {"[]a][^]-a]", "12 <]a> 40 <{00}]-a> 22"},
      {"[-a][a-][a-c-e][z-a][+--][a--]", "12 <-a> 12 <-a> 12 <a-e> 12 <az> 12 <+--> 12 <-a> 22"},
      {"[\\]a-\n][^^*$.[]", "12 <\\> 4 'a' 4 '-' 22"},
      {"[\t-\n]*[^a]\\{2\\}", "13 <{09}{0A}> 43 <{00}a> 2 2 22"},
      {"[a\340-\351z]*", "17 <az{E0}-{E9}> 22"},
      {"[x-\200]", "16 <x-{80}> 22"},
      {"[\377-x][^b-\376]", "16 <x{FF}> 16 <{01}-a{FF}> 22"},
  };
  for (const auto &[expression, expected] : rows)
    EXPECT_EQ(form({expression}), expected) << expression;
  EXPECT_EQ(form({"^a*", ""}), "^ 5 'a' 22");
  EXPECT_EQ(form({"^a", "b", "\\(", "[", "\nc"}), "4 'b' 22");
}

TEST_F(RegularExpressions, Errors) {
  const std::string full = repeated("a", 62);  // leaves 4 bytes, one of them for the end
  const std::pair<std::string, int> rows[] = {
      {"a\\{256\\}", 11},
      {"a\\{1,256x", 11},
      {"a\\{99999999999999999999\\}", 11},
      {"a\\{x\\}", 16},
      {"a\\{\\}", 16},
      {"a\\{,2\\}", 16},
      {"a\\{2x\\}", 16},
      {"a\\{2,x\\}", 16},
      {"a\\{2", 16},
      {"a\\{2,\n", 16},
      {"a\\{2,,", 16},
      {"\\1", 25},
      {"\\(a\\1\\)", 25},
      {"\\(a\\)\\2", 25},
      {"a\\\nb", 36},
      {"", 41},
      {"\nabc", 41},
      {"\\(a", 42},
      {"a\\)", 42},
      {"\\(a\\)\\)", 42},
      {repeated("\\(", 10), 43},
      {repeated("\\(\\)", 10), 43},
      {"a\\{1,2,3\\}", 44},
      {"a\\{2\\a", 45},
      {"a\\{2,\\", 45},
      {"a\\{2,1\\", 45},
      {"a\\{2,1\\}", 46},
      {"[abc", 49},
      {"[]", 49},
      {"[^]", 49},
      {"[a\nb]", 49},
      {"[a-", 49},
      {"[-", 49},
      {"[", 49},
      // room for 128 bytes, the end among them
      {repeated(".", 127), 0},
      {repeated(".", 128), 50},
      {repeated("a", 64), 50},
      {full + "a.$", 50},
      {full + ".b", 0},
      {full + ".b*", 0},
      {full + "ab", 50},
      {full + "\\{2\\}", 0},
      {full + "a\\{2\\}", 50},
      {full + "*\\{2\\}\\{3\\}", 0},
      {repeated("[ab]", 7) + repeated(".", 8), 0},
      {repeated("[ab]", 7) + repeated(".", 9), 50},
      {repeated("[a]", 7) + "bb", 0},
      {repeated("[a]", 8), 50},
      {repeated("[a\351]", 3) + repeated(".", 28), 0},
      {repeated("[a\351]", 3) + repeated(".", 29), 50},
      {repeated(".", 110) + "[abc]", 0},
      {repeated(".", 94) + "[\351]", 0},
      {repeated(".", 95) + "[\351]", 50},
      // the first error from left to right
      {repeated("[a]", 7) + ".......[", 50},
      {repeated(".", 95) + "[a\351", 50},
      {repeated(".", 95) + "[a", 49},
      {full + "a\\{x", 50},
      {full + "a.\\)", 50},
      {full + "a.\\1", 50},
      {full + "a.\\\n", 36},
      {"\\(\\1[", 25},
  };
  for (const auto &[expression, error] : rows) {
    search_one(expression, "");
    const std::string report = "Error in regular expression #" + std::to_string(error) + "\n";
    EXPECT_EQ(log(), error == 0 ? "" : report) << expression;
  }
}

TEST_F(RegularExpressions, Matches) {
  static constexpr std::tuple<const char *, const char *, const char *> rows[] = {
      // expression, texts that match, texts that do not; blanks between the texts, _ for a blank
      {"a.c", "xabcx a\nc", "ac abxc"},
      {"^a.c", "abcx", "xabc"},
      {"c$", "abc c", "abcd"},
      {"[a-c]x", "bx", "dx"},
      {"[^a-c]x", "dx \351x", "bx x"},
      {"[\340-\351]", "\345", "\352 e"},
      {"[^\340-\351]", "a \352", "\345\340"},
      {"[z-a]$", "a z", "m"},
      {"ab\\{2\\}c", "abbc", "abc abbbc"},
      {"ab\\{2,\\}c", "abbbbc", "abc"},
      {"ab\\{1,2\\}c", "xabcx abbc", "ac abbbc"},
      {"[ab]\\{3\\}\\(c\\)*", "xabac*", "abac ab"},
      {"a\\{0\\}b\\{0,0\\}$", "a b", ""},
      {"\\(ab\\)\\1", "abab", "abba"},
      {"\\(ab*\\)\\1", "xaab abbabb", "abba ab"},
      {"\\(a\\)b*\\1c", "aac abac", "abc ac"},
      {"\\(\\)a\\1b", "ab", "ba a"},
      {"a\\(\\(b\\)\\1c\\)", "abc", "abbc"},
      {"^\\(a*\\)b\\1*c", "bc abc abaaac", "aabac"},
      {"^\\(a*\\)b\\1\\{2\\}c", "bc abaac", "abac abaaac"},
      {"\\(.\\)\\(.\\)\\2\\1", "xabba", "abab"},
      {"^\\(.*\\) \\1$", "_ ab_ab", "ab_b"},
      {"^\\(\\(a\\)\\1b\\)", "ab", "aab"},  // \1 is still open
      {"^\\(a*\\)\\1\\(b*\\)\\2$", "aabb aaaa", "aab ab"},
      {"\\<the", "the a_the \351the", "other _9the"},
      {"\\<the\\>", "a_the. the", "them athe"},
      {"cat\\>", "cat. cat a_cat", "cats cat9"},
      {"x*x*x*y", "y xxy", "xx"},
      {".*.*.*=", "a=", "aaaa"},
  };
  for (const auto &[expression, matching, others] : rows) {
    std::string texts = std::string(matching) + " | " + others + " ";
    bool expected = true;
    for (size_t end; (end = texts.find(' ')) != std::string::npos; texts.erase(0, end + 1)) {
      std::string text = texts.substr(0, end);
      for (char &c : text) c = c == '_' ? ' ' : c;
      if (text == "|")
        expected = false;
      else if (!text.empty()) {
        EXPECT_EQ(search_one(expression, text) == 0, expected) << expression << "; " << show(text);
      }
    }
  }
  for (const char *expression : {"x*", "$", "^$", "\\<", "\\>", "\\(\\)\\1", "^\\(a*\\)\\1*$"})
    EXPECT_EQ(search_one(expression, ""), 0) << expression;
}

// What every match must contain is looked for first: in all places of texts of all short lengths,
// and where most places nearly fit.
TEST_F(RegularExpressions, StretchesAreFoundWhereverTheyAre) {
  static constexpr std::pair<const char *, const char *> rows[] = {
      {"qu", "qu"},
      {"q.u", "q-u"},
      {"[^a]qu[e-i]", "bque"},
      {"\\<qu\\{2\\}\\>", "quu"},
      {"x*qu", "qu"},
      {"\\(q\\)u\\1*z", "quz"},
      {"qu$", "qu"},
      {"x*q[tu]$", "qu"},
      {"q$", "q"},
      {"[^a]q[tuv].u", "bqu-u"},
      {"\\<qu..\\>", "quit"},
      {"\\<q.u\\>", "qau"},
  };
  for (const auto &[expression, fitting] : rows) {
    const std::string piece = fitting;
    const bool at_end = expression[std::strlen(expression) - 1] == '$';
    for (size_t length = 0; length < 70; ++length) {
      for (size_t at = 0; at + piece.size() <= length; ++at) {
        std::string text(length, ' ');
        text.replace(at, piece.size(), piece);
        const bool expected = !at_end || at + piece.size() == length;
        const bool found = search_one(expression, text) == 0;
        EXPECT_EQ(found, expected) << expression << " on " << text;
      }
      EXPECT_EQ(search_one(expression, std::string(length, 'q')),
                std::string(expression) == "q$" && length > 0 ? 0 : -1)
          << expression << ", " << length;
    }
  }
  for (const char *expression : {"xx[^x]", "x.x[^x]"}) {
    EXPECT_EQ(search_one(expression, repeated("x", 5000) + "y"), 0) << expression;
    EXPECT_EQ(search_one(expression, repeated("x", 5000)), -1) << expression;
  }
}

TEST_F(RegularExpressions, RepetitionsWithoutBoundEndAfter20000More) {
  const auto matches = [](const char *expression, int count) {
    return search_one(expression, repeated("ab", count) + "c") == 0;
  };
  for (const auto &[expression, most] : {std::pair("^[ab]\\{3,\\}c", 20003),
                                         {"^[ab]\\{0,255\\}c", 20000},
                                         {"^[ab]\\{255\\}c", 20255},
                                         {"^.\\{254\\}.\\{1,\\}c", 20255}}) {
    EXPECT_TRUE(matches(expression, most / 2)) << expression;
    EXPECT_FALSE(matches(expression, most / 2 + 1)) << expression;
  }
  EXPECT_EQ(search_one("^a\\{2,\\}\\(b\\)", repeated("a", 20003) + "b"), -1);
  EXPECT_EQ(search_one("^a*\\(b\\)", repeated("a", 20003) + "b"), 0);
}

TEST_F(RegularExpressions, CountsAreExactAcrossBlocks) {
  for (int count = 1; count <= 254; count += count % 64 == 1 ? 61 : 1)
    for (const int length : {count - 1, count, count + 1, count + 2}) {
      const std::string number = std::to_string(count), more = std::to_string(count + 1);
      const std::string text = "xb" + repeated("a", length) + "c" + repeated("x", 70);
      EXPECT_EQ(search_one("ba\\{" + number + "\\}c", text) == 0, length == count) << length;
      EXPECT_EQ(search_one("b[a]\\{" + number + "," + more + "\\}c", text) == 0,
                length == count || length == count + 1 || (more == "255" && length >= count))
          << count << " in " << length;
    }
}

TEST_F(RegularExpressions, NoExpressionTakesForever) {
  const std::string text = repeated("x", 100000) + "zy";
  for (const std::string &expression :
       {repeated("x*", 40) + "y=", repeated("x\\{0,255\\}", 31) + "=",
        repeated(".\\{1,255\\}", 40) + "=", repeated(".*", 60) + "=", repeated("x", 61) + "=",
        "x" + repeated("[^=]", 6) + "x="})
    EXPECT_EQ(search_one(expression, text), -1) << expression;
}

// One back-reference in a long text, where only the back-reference decides.
TEST_F(RegularExpressions, OneBackReferenceIsDecidedInLongTexts) {
  const int half = 40000;
  const std::string even = repeated("x", 2 * half), odd = even + "x",
                    words = repeated("abcde ", half / 2);
  const std::tuple<const char *, std::string, bool> rows[] = {
      {"\\(x*\\)x*\\1y", even + "y", true},
      {"\\(x*\\)x*\\1zy", even + "zy", true},
      {"\\(xx*\\)x*\\1y", even + "zy", false},
      {"\\([xz]*\\)x*\\1y", even + "zy", true},
      {"^\\(xx*\\)\\1$", even, true},
      {"^\\(xx*\\)\\1$", odd, false},
      {"^\\(xx*\\)\\1y", odd + "y", false},
      {"\\(xx*\\)\\1y", odd + "y", true},
      {"\\(xx*\\)x*x*\\1y", even + "zy", false},
      {"x*\\(x*\\)x*x*z\\1z*\\1*zy", even + "zy", false},
      {"\\(x*x*.*\\).*.*\\1\\{2,\\}x=", even + "zy", false},
      {"\\(x..*\\).*\\1y", even + "zy", false},
      {"\\(a.*e\\) \\1b", words, false},
      {"^\\(a.*e \\)\\1$", words, true},
      {"^\\(a.*\\)f*\\1a", words, true},
  };
  for (const auto &[expression, text, matches] : rows)
    EXPECT_EQ(search_one(expression, text) == 0, matches) << expression << ", " << text.size();
}

TEST_F(RegularExpressions, TwoBackReferencesTakeQuadraticTime) {
  const std::string text = repeated("x", 1501);
  for (const auto &[expression, ending, matches] : {std::tuple("\\(x*\\)x*\\1x*\\1zy", "zy", true),
                                                    {"\\(xx*\\)x*\\1x*\\1y", "zy", false},
                                                    {"\\(xx*\\)\\(xx*\\)\\1\\2y", "y", true},
                                                    {"^\\(xx*\\)\\(xx*\\)\\1\\2$", "", false},
                                                    {"^\\(xx*\\)\\1\\1$", "x", false}})
    EXPECT_EQ(search_one(expression, text + ending) == 0, matches) << expression;
}

TEST_F(RegularExpressions, SearchesGoThroughTheirLists) {
  const char *list[] = {"\\(", "dog", "", "cat", "["};
  char **expressions = const_cast<char **>(list);
  EXPECT_EQ(regex_search("a cat", 5, expressions), 3);
  EXPECT_EQ(log(), "Error in regular expression #42\n");
  EXPECT_EQ(regex_search("a dog", 5, expressions), 1);
  EXPECT_EQ(regex_search("a dog", 3, expressions + 2), -1);
  EXPECT_EQ(log(),
            "Error in regular expression #42\nError in regular expression #41\nError in regular "
            "expression #49\n");
  EXPECT_EQ(regex_search("a", 0, expressions), -1);
  EXPECT_EQ(regex_search("a", -1, nullptr), -1);

  EXPECT_EQ(Kregex_search("x"), -1);
  write_file("words", "x\ny\n");
  ASSERT_EQ(Klist_in("words"), 0);
  const std::tuple expected(1, -1, -1, 1, 1);
  EXPECT_EQ(std::tuple(Kregex_search("x"), Kregex_search("z"), Kspecial_regex_search("x", 0),
                       Kspecial_regex_search("x", 1), Kspecial_regex_search("y", 0)),
            expected);
  Kdestroy_list();
}

// Random expressions over texts of several blocks, every other one of a kind that is decided as it
// is written. Backtracking is the reference.
TEST_F(RegularExpressions, SetsDecideAsBacktrackingDoes) {
  std::istringstream list(
      "a b ab ba . [^a] [a\351] [ab] \\< \\> a* b* .* [ab]* [^b]\\{0,3\\} [a\351]\\{2,\\} "
      "a\\{60,70\\} .\\{64\\} \\(\\) \\(ab*\\) \\(a*\\) \\([ab]*b\\) \\(.\\) \\1 \\1 \\1* "
      "\\1\\{2,3\\} \\2");
  constexpr size_t simple = 10;
  const std::vector<std::string> parts(std::istream_iterator<std::string>(list), {});
  std::mt19937 random(1);
  int matching = 0;
  for (int i = 0; i < 6000; ++i) {
    std::string expression = random() % 4 == 0 ? "^" : "", text;
    const size_t kinds = i % 2 == 0 ? parts.size() : simple;
    for (auto n = random() % 6; n <= 6; ++n) expression += parts[random() % kinds];
    if (random() % 4 == 0) expression += "$";
    for (auto n = random() % 8; n < 8; ++n)
      text += std::string(random() % (random() % 4 == 0 ? 90 : 4), "ab \351"[random() % 4]);
    regex::Compiled compiled;
    const regex::Expression *made = regex::regex_compile(expression.c_str(), compiled);
    if (made == nullptr) continue;
    const regex::Subject subject(text.c_str());
    regex::Groups groups;
    regex::set_up(groups, *made, 100000);
    bool found = false;
    for (size_t at = 0; !found && at <= (made->anchored ? 0 : text.size()); ++at)
      found = regex::regex_match_at(subject, groups, subject.text + at, made->items.data());
    if (groups.steps_left <= 0) continue;
    matching += found ? 1 : 0;
    ASSERT_EQ(regex::regex_find(*made, subject), found) << expression << " on " << show(text);
    ASSERT_EQ(search_one(expression, text) == 0, found) << expression << " on " << show(text);
    regex::Walk walk;
    regex::begin(walk, *made);
    if (walk.references != 1) continue;
    ASSERT_EQ(regex::match_one_reference(walk, made->anchored, subject), found)
        << expression << " on " << show(text);
  }
  EXPECT_GT(matching, 500);
  log();
}

}  // namespace klib::test
