// Counters, sentences written and read back, progress and summary in the log.

#include <algorithm>
#include <climits>

#include "tests/support.h"

namespace klib::test {

namespace {

// What kti_format adds to a file; the caller's text must have become what is there.
std::string format(std::string sentence, int32_t tick) {
  FILE *stream = Kfopen("sentence", "w");
  kti_format(stream, sentence.data(), tick);
  Kfclose(stream, 0);
  const std::string written = read_file("sentence");
  EXPECT_NE(written.find(sentence.c_str()), std::string::npos) << show(sentence);
  return show(written);
}

TEST_F(Library, CountsDigitsAndShowsValues) {
  const struct {
    int32_t counter, start, step, delta, calls;
    const char *result;  // value and digits, then what was shown
  } rows[] = {
      {0, 98, 5, 1, 6, "104 3: 103 "},
      {1, 0, 10, 25, 3, "75 2: 25 50 75 "},  // shown once for several thresholds
      {1, 7, 0, 1000, 3, "3007 4: "},        // one digit a call
      {14, -7, -1, 1, 2, "-5 1: -6 -5 "},
      {15, 12, 3, 0, 2, "12 2: 12 12 "},
      {2, INT_MAX - 1, 1, 7, 3, "2147483647 10: 2147483647 "},
      {16, 5, 5, 1, 1, "0 2: "},
  };
  for (const auto &[counter, from, distance, delta, calls, result] : rows) {
    init_counter(counter, from, distance);
    for (int i = 1; i < calls; ++i) count(counter, delta);
    const int32_t value = count(counter, delta), digits = _count_length[std::min(counter, 15)];
    EXPECT_EQ(std::to_string(value) + " " + std::to_string(digits) + ": " + log(), result);
  }
}

TEST_F(Library, ShowsProgressAndSummary) {
  const std::pair<int, const char *> rows[] = {
      {0, "No sentence has been written. Sorry.\n"},
      {1, "One sentence has been written.\n"},
      {250, "100 200 250 \n250 sentences have been written.\n"},
      {200, "100 200 200 sentences have been written.\n"},
  };
  for (const auto &[sentences, result] : rows) {
    init_kti_format(1);
    for (int i = 0; i < sentences; ++i) format("x", 1);
    exit_kti_format();
    EXPECT_EQ(log(), result);
  }
  number_of("SHOW-PROGRESS") = 0;
  exit_kti_format();
  EXPECT_EQ(format("x", 1) + log(), "{90}200 x{91}{0A}");
}

TEST_F(Library, FramesCollapsesAndWrapsSentences) {
  const struct {
    int32_t numbered, width;
    const char *sentence, *written;
  } rows[] = {
      {1, 999999, "a{09}b{0A}{0A}c", "{90}7 a b c{91}{0A}"},
      {0, 999999, " {0D}{09}%d%s{FF} {20}{0A}", " %d%s{FF} {0A}"},
      {0, 999999, "0123456789abcde {0A}vwx  y", "0123456789abcde vwx y{0A}"},
      {0, 10, "aaaa bbbb cccc dddd", "aaaa bbbb{0A}cccc dddd{0A}"},
      {0, 5, "aaaa bbbbb ccccccc d", "aaaa{0A}bbbbb{0A}ccccccc d{0A}"},
      {1, 9, "aa bb cc", "{90}7 aa{0A}bb cc{91}{0A}"},
      {1, 5, " a bb ccc d", "{90}7 {0A}a bb{0A}ccc d{91}{0A}"},
      {1, 4, " a bb ccc d", "{90}7  a{0A}bb{0A}ccc{0A}d{91}{0A}"},
      {1, INT_MIN, "a b c", "{90}7 a b c{91}{0A}"},
  };
  for (const auto &row : rows) {
    number_of("KTI-WIDTH") = row.width;
    number_of("KTI-START") = 7;
    init_kti_format(row.numbered);
    EXPECT_EQ(format(bytes(row.sentence), 0), row.written) << row.sentence << " in " << row.width;
  }
}

TEST_F(Library, ReadsSentencesBackUnderTheirNumbers) {
  // Longer than the pieces in which a sentence is written, with line breaks at every offset from
  // them.
  std::string sentence = "x", single = "x";
  for (size_t i = 1; sentence.size() < 300000; ++i) {
    const std::string word(1 + i % 83, 'w');
    sentence += std::string(1 + i % 41, "\n \t"[i % 3]) + word;
    single += " " + word;
  }
  number_of("KTI-STEP") = INT_MAX;
  for (const int32_t line : {60, 100000, 999999}) {
    number_of("KTI-WIDTH") = line;
    init_kti_format(1);
    for (const int32_t tick : {0, -1, 1, 0}) {
      std::string token = bytes(format(sentence, tick)),
                  text = (token.pop_back(), kti_body(token.data()));
      std::replace(text.begin(), text.end(), '\n', ' ');
      EXPECT_TRUE(text == single) << line;
    }
    EXPECT_EQ(current_sentence_number, INT_MAX) << "and no further";
  }
}

TEST_F(Library, FindsNumberAndTextInASentenceToken) {
  const std::pair<const char *, const char *> rows[] = {
      {"{90}12 Hello{91}", "12 Hello"},
      {"{90}12{B2} {A0}{09} x {91}", "12 x "},
      {"{90}-5 x{91}", "-5 -5 x"},
      {"{90}99999999999 x{91}", "2147483647 x"},
      {"{90}12", "1 "},
      {"", "0 "},
  };
  for (const auto &[token, result] : rows) {
    std::string writable = bytes(token);
    const std::string text = show(kti_body(writable.data()));
    EXPECT_EQ(std::to_string(current_sentence_number) + " " + text, result) << token;
  }
}

}  // namespace

}  // namespace klib::test
