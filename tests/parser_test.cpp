#include <algorithm>
#include <cstring>
#include <map>

#include "containers/slots.h"
#include "tests/support.h"

namespace klib::test {

namespace {

// clang-format off
const std::map<int32_t, std::string> kind_names = {
    {P_END, "END"}, {P_TEXT, "TEXT"}, {P_ANCHOR, "ANCHOR"}, {P_SENTENCE, "SENT"},
    {P_CODE_1E, "1E"}, {P_TO_EOL, "TO_EOL"}, {P_CODE_LINE, "CODE_LINE"}, {P_FONT, "FONT"},
    {P_CODE_9B, "9B"}, {P_MARK_1D, "MARK"}, {P_ALIEN, "ALIEN"}, {P_WHITE, "WHITE"},
    {P_LINE, "LINE"}};
// clang-format on

parser_frame &frame() { return p_root[parser_level]; }

std::string next_token(FILE *stream = nullptr) {
  const int32_t kind = parse(stream);
  return kind_names.at(kind) + (kind == P_END ? "" : "[" + show(frame().token) + "]");
}

// Tokens through the first P_END.
std::string tokens(FILE *stream = nullptr) {
  std::string result = next_token(stream);
  for (std::string token = result; token != "END";) result += ' ' + (token = next_token(stream));
  return result;
}

FILE *stream_of(const std::string &content) {
  write_file("stream", content);
  return Kfopen("stream", "r");
}

std::string positions() {
  const parser_frame &f = frame();
  std::string result;
  for (const int32_t n : {f.line, f.column, f.real_line, f.real_column, f.token_line,
                          f.token_column, f.token_real_line, f.token_real_column})
    result += std::to_string(n) + ' ';
  return result.replace(result.size() - 1, 1, ", ");
}

}  // namespace

using Parser = Library;

TEST_F(Parser, SplitsTextsAndStreamsAlike) {
  static const struct {
    int32_t flags;
    const char *text, *tokens, *log;
  } rows[] = {
      {P_FONT, "", "END", ""},
      {P_FONT, "a{98}Bold{99}b", "TEXT[a] FONT[{98}Bold{99}] TEXT[b] END", ""},
      {P_FONT, "{98}A{98}B{99}C{99}{99}", "FONT[{98}A{98}B{99}C{99}] TEXT[{99}] END", ""},
      {P_FONT, "{94}{98}x{95}{99}{FF}", "TEXT[{94}] FONT[{98}x{95}{99}] TEXT[{FF}] END", ""},
      {0, "a{98}Bold{99}{1D}{9D}{96}{0A}", "TEXT[a{98}Bold{99}{1D}{9D}{96}{0A}] END", ""},
      {0x3FF & ~P_WHITE, "{90}1 {1E}x{1F}{91}{9B}{9C}{1D}{9D}00E9{92}{9A}",
       "SENT[{90}1 {1E}x{1F}{91}] 9B[{9B}{9C}] MARK[{1D}] ALIEN[{9D}00E9] TEXT[{92}{9A}] END", ""},
      {P_TO_EOL, "a{96}b{96}{0A}c", "TEXT[a] TO_EOL[{96}b{96}{0A}] TEXT[c] END", ""},
      {P_CODE_LINE, "x y{0A}z{97}w{0A}", "TEXT[x y{0A}] CODE_LINE[z{97}w{0A}] END", ""},
      {P_CODE_LINE | P_MARK_1D, "x{0A}y{1D}z{97}{97}{1D}{0A}",
       "TEXT[x{0A}y] MARK[{1D}] CODE_LINE[z{97}{97}{1D}{0A}] END", ""},
      {P_WHITE, "a  b{09}{A0}{0A}", "TEXT[a] WHITE[  ] TEXT[b] WHITE[{09}{A0}{0A}] END", ""},
      {P_WHITE | P_LINE, "a{0A}", "TEXT[a] WHITE[{0A}] END", ""},
      {P_LINE | P_FONT, "a{98}{0A}{99}{0A}{0A}b",
       "TEXT[a] FONT[{98}{0A}{99}] LINE[{0A}] LINE[{0A}] TEXT[b] END", ""},
      // The end inside a code: what is there, and a report.
      {P_FONT, "{98}{98}a{99}", "FONT[{98}{98}a{99}] END", "Premature end of file.\n"},
      {P_TO_EOL, "{96}a", "TO_EOL[{96}a] END", "Premature end of file.\n"},
      {P_CODE_LINE, "a{97}", "CODE_LINE[a{97}] END", "Premature end of file.\n"},
      {P_ALIEN, "a{9D}00E", "TEXT[a] ALIEN[{9D}00E] END", "Premature end of file.\n"},
  };
  for (const auto &row : rows) {
    init_parser(row.flags);
    const std::string text = bytes(row.text);
    parse_from_string(text.c_str());
    EXPECT_EQ(tokens(), row.tokens) << row.text;
    EXPECT_EQ(next_token(), "END");
    EXPECT_EQ(frame().token, nullptr);
    EXPECT_EQ(log().substr(0, std::strlen(row.log)), row.log) << row.text;
    FILE *stream = stream_of(text);
    EXPECT_EQ(tokens(stream), row.tokens) << row.text;
    Kfclose(stream, 0);
    log();
    exit_parser();
  }
}

// Line, column, real line and real column reached, and those of the token's start, after each
// token. The real position counts what a reader sees.
TEST_F(Parser, KeepsPositions) {
  static const struct {
    int32_t flags;
    const char *text, *positions;
  } rows[] = {
      {P_FONT, "ab{98}Bold{99}c", "1 3 1 3 1 1 1 1, 1 9 1 3 1 3 1 3, 1 10 1 4 1 9 1 3, "},
      {0, "a{0A}bc{0A}d", "3 2 3 2 1 1 1 1, "},
      {0, "a{9D}00E9b{1D}{9B}c{9C}{9B}", "1 13 1 5 1 1 1 1, "},
      {P_TO_EOL, "a{96}b{0A}c", "1 2 1 2 1 1 1 1, 2 1 1 2 1 2 1 2, 2 2 1 3 2 1 1 2, "},
      {P_CODE_LINE, "a{0A}b{97}{0A}c", "2 1 2 1 1 1 1 1, 3 1 2 1 2 1 2 1, 3 2 2 2 3 1 2 1, "},
      // A hidden stretch inside a visible pair is seen; a second 0x96 freezes the real position.
      {P_CODE_1E, "{1E}a{98}B{99}c{1F}", "1 8 1 5 1 1 1 1, "},
      {0, "a{96}{96}{0A}bc{99}d", "2 5 1 3 1 1 1 1, "},
      // Taking a line back for its 0x97 does not undo the newline that ended a hidden stretch.
      {P_CODE_LINE, "{96}{0A}{94}{97}{95}{0A}", "2 1 1 1 1 1 1 1, 3 1 1 1 2 1 1 1, "},
  };
  for (const auto &row : rows) {
    init_parser(row.flags | P_COUNT);
    const std::string text = bytes(row.text);
    parse_from_string(text.c_str());
    std::string seen;
    while (parse(nullptr) != P_END) seen += positions();
    EXPECT_EQ(seen, row.positions) << row.text;
    exit_parser();
  }
  init_parser(P_SENTENCE | P_COUNT);
  const std::string sentence = bytes("{90}7 ab{98}x{99} {91}");
  parse_from_string(sentence.c_str());
  EXPECT_EQ(parse(nullptr), P_SENTENCE);
  EXPECT_EQ(frame().min_real_column, 1);
  EXPECT_EQ(frame().max_real_column, 5);
  parse_from_string("\x90\x1D\x91");
  parse(nullptr);
  EXPECT_EQ(frame().status, 128);
}

TEST_F(Parser, ReadsToAPosition) {
  static const struct {
    int32_t line, column;
    const char *read;
  } rows[] = {{1, 1, "0 "},
              {1, 2, "0 a"},
              {1, 3, "0 a{98}F{99}b"},
              {2, 1, "0 a{98}F{99}b{0A}"},
              {2, 9, "-1 a{98}F{99}b{0A}c"}};
  const std::string text = bytes("a{98}F{99}b{0A}c");
  for (const auto &row : rows) {
    init_parser(P_COUNT);
    parse_from_string(text.c_str());
    const std::string result = std::to_string(parse_to(nullptr, row.line, row.column));
    EXPECT_EQ(result + ' ' + show(frame().token), row.read);
    exit_parser();
  }
}

TEST_F(Parser, LevelsKeepTheirPlace) {
  init_parser(P_FONT);
  parse_from_string("a\x98x\x99z");
  EXPECT_EQ(next_token(), "TEXT[a]");
  for (int level = 2; level <= 4; ++level) init_parser(P_WHITE);
  parse_from_string("b c");
  EXPECT_EQ(next_token(), "TEXT[b]");
  init_parser(P_FONT);
  parse_from_string("never read");
  EXPECT_EQ(log(), "Internal error. More than 4 parser levels.\n");
  EXPECT_EQ(tokens() + std::to_string(p_getchar(nullptr)), "END-1");
  exit_parser();
  EXPECT_EQ(tokens(), "WHITE[ ] TEXT[c] END");
  for (int level = 4; level >= 2; --level) exit_parser();
  EXPECT_EQ(next_token(), "FONT[{98}x{99}]");
  EXPECT_EQ(p_getchar(nullptr), 'z');  // joins the token
  EXPECT_EQ(show(frame().token), "{98}x{99}z");
  exit_parser();
  init_parser(P_FONT);
  EXPECT_EQ(frame().token, nullptr) << "not the one of the level that was closed";
  exit_parser();
  EXPECT_EQ(_stack[slots::parser_token].base, nullptr);
  exit_parser();
  EXPECT_EQ(log(), "Internal error. No parser level to close.\n");
}

TEST_F(Parser, AStreamIsReadNoFurtherThanNeededAndGoesOnAfterNul) {
  init_parser(P_FONT);
  FILE *stream = stream_of(bytes("ab{98}c{00}d{99}{00}e"));
  EXPECT_EQ(next_token(stream), "TEXT[ab]");
  EXPECT_EQ(std::ftell(stream), 3);
  EXPECT_EQ(next_token(stream), "FONT[{98}c]");
  EXPECT_EQ(tokens(stream), "TEXT[d{99}] END");
  EXPECT_EQ(tokens(stream), "TEXT[e] END");
  Kfclose(stream, 0);
}

TEST_F(Parser, TheStacksGrowByFixedSteps) {
  const byte_stack &token = _stack[slots::parser_token], &taken = _stack[slots::parser_pushback];
  for (const int32_t length : {998, 999, 1000, 1998, 1999, 70000}) {
    init_parser(P_CODE_LINE | P_COUNT);
    const std::string line(static_cast<size_t>(length), 'x'), text = '\n' + line + "\x97\n";
    parse_from_string(text.c_str());
    EXPECT_EQ(parse(nullptr), P_TEXT);
    EXPECT_EQ(token.size, ((length + 2) / 1000 + 1) * 1000) << length;
    EXPECT_EQ(taken.size, ((length + 1) / 50 + 1) * 50) << length;
    EXPECT_EQ(parse(nullptr), P_CODE_LINE);
    EXPECT_EQ(frame().token, line + "\x97\n");
    exit_parser();
  }
}

TEST_F(Parser, MeasuresAndTakesApart) {
  static const std::pair<const char *, int32_t> widths[] = {{"", 0},
                                                            {"abc", 3},
                                                            {"a{98}Bold{99}b", 2},
                                                            {"{90}12 ab{91}", 5},
                                                            {"a{9D}00E9b", 3},
                                                            {"ab{0A}cd", 2},
                                                            {"{1D}", 0},
                                                            {"{1E}a{98}B{99}c{1F}", 4},
                                                            {"a{98}b{94}c{95}d{99}e", 2}};
  for (const auto &[text, width] : widths)
    EXPECT_EQ(real_string_length(bytes(text).c_str()), width) << text;
  static const std::pair<const char *, const char *> bodies[] = {
      {"{1D}", ""}, {"{98}Bold{99}", "Bold"}, {"{98}{99}", ""}, {"", ""}};
  for (const auto &[code, inside] : bodies) EXPECT_STREQ(body(bytes(code).data()), inside) << code;
  static const std::pair<const char *, int32_t> aliens[] = {
      {"{9D}00E9", 233}, {"{9D}FFFF", 65535}, {"{9D}1F", 31}, {"{9D}", 0}, {"", 0}};
  for (const auto &[token, value] : aliens) EXPECT_EQ(Kparse_alien(bytes(token).c_str()), value);
}

TEST_F(Parser, SurvivesExhaustedMemory) {
  const std::string text = std::string(3000, 'a') + "\n" + std::string(300, 'b') + "\x97\n";
  const int64_t before = blocks_in_use();
  bool failed = true;
  for (int n = 1; failed; ++n) {
    init_parser(P_CODE_LINE);
    parse_from_string("outer");
    std::string seen;
    {
      FailingAllocation failing(n);
      init_parser(P_CODE_LINE | P_COUNT);
      parse_from_string(text.c_str());
      while (parse(nullptr) != P_END) seen += frame().token;
      exit_parser();
      real_string_length(text.c_str());
      failed = failing.happened();
    }
    EXPECT_EQ(log().starts_with("NO MORE MEMORY!\n"), failed);
    EXPECT_TRUE(failed || seen == text);
    EXPECT_EQ(tokens(), "TEXT[outer] END");
    exit_parser();
    EXPECT_EQ(blocks_in_use(), before);
  }
}

}  // namespace klib::test
