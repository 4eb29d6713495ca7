// What kcarry makes of sentences, translations and alignments, and how kshow shows it.
#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <vector>

#include "workplace.h"

namespace klib::test {
namespace {

// A short notation for codes: "[w2]" is the font {98}weight{FF}2{99}, "[i3]" slant, "[c4]" face,
// "[5]" the anchor {94}5{95}. What stands in braces is a byte.
std::string with_codes(const std::string &text) {
  static const std::map<char, std::string> groups = {
      {'w', "weight"}, {'i', "slant"}, {'c', "face"}};
  std::string notation;
  for (size_t i = 0; i < text.size(); i++) {
    const size_t end = text.find(']', i);
    const auto group = text[i] == '[' ? groups.find(text[i + 1]) : groups.end();
    if (text[i] != '[')
      notation += text[i];
    else if (group == groups.end())
      notation.append("{94}").append(text, i + 1, end - i - 1).append("{95}"), i = end;
    else
      notation.append("{98}").append(group->second).append("{FF}"),
          notation.append(text, i + 2, end - i - 2).append("{99}"), i = end;
  }
  return notation;
}

class Carry : public Workplace {
 protected:
  // Runs kcarry on sentences, each "source | translation | alignment".
  Outcome carry(const std::vector<std::string> &rows, const std::string &languages) const {
    std::string sentences, translation, alignment;
    for (const std::string &row : rows) {
      const size_t first = row.find(" | "), second = row.find(" | ", first + 3);
      sentences += "{90}" + std::to_string(sentences.size()) + " ";
      sentences += with_codes(row.substr(0, first)) + "{91}\n";
      translation += row.substr(first + 3, second - first - 3) + "\n";
      alignment += row.substr(second + 3) + "\n";
    }
    write("job.kti", coded(sentences));
    write("t.txt", translation);
    write("a.txt", alignment);
    return run("kcarry", languages + " job.kti t.txt a.txt out.kti");
  }

  // The texts of the frames that kcarry has written.
  std::vector<std::string> frames() const {
    std::vector<std::string> texts;
    std::istringstream file(read("out.kti"));
    for (std::string line; std::getline(file, line);) {
      const size_t begin = line.find(' ') + 1;
      texts.push_back(line.substr(begin, line.size() - begin - 1));
    }
    return texts;
  }
};

TEST_F(Carry, PlacesOfCodes) {
  static const struct {
    const char *question, *row, *result;
  } rows[] = {
      {"moved in front of plain words", "a [w1]b[w0] c | B A C | 0-1 1-0 2-2", "[w1]B[w0] A C"},
      {"aligned with nothing", "[w1]a b[w0] | A x B | 0-0 1-2", "[w1]A[w0] x [w1]B[w0]"},
      {"one to many", "a [w1]b[w0] c | A B B C | 0-0 1-1 1-2 2-3", "A [w1]B B[w0] C"},
      {"many to one, the first decides", "a [w1]b[w0] | AB C | 0-0 1-0 1-1", "AB [w1]C[w0]"},
      {"codes on either side of a blank", "a[w1] b [w0]c | A B C | 0-0 1-1 2-2", "A [w1]B[w0] C"},
      {"inside a word", "in[i1]visible[i0], a | un{C3}{BC}bar, A | 0-0 1-1",
       "u[i1]n{FC}bar[i0], A"},
      {"quotation marks of the translation", "\"[w1]a[w0]\", | ({E2}{80}{9E}A{E2}{80}{9C}), | 0-0",
       "({9D}201E[w1]A[w0]{9D}201C),"},
      {"punctuation of the last source word", "[w1]a b[w0]. | AB. | 0-0 1-0", "[w1]AB[w0]."},
      {"some of it in the font", "[w1]5%[w0], | 5%!, | 0-0", "[w1]5%![w0],"},
      {"punctuation inside the font", "[w1]a![w0] b | B A! | 0-1 1-0", "B [w1]A![w0]"},
      {"two groups and an anchor", "[w1][i2]a[i0] [3]b[4][w0] c | C B A | 0-2 1-1 2-0",
       "C [w1][3]B[4] [i2]A[w0][i0]"},
      {"an anchor behind a font", "[w1]a[w0][2] b | A B | 0-0 1-1", "[w1]A[w0][2] B"},
      {"anchors of unaligned words", "a[1] [2]b[3] c | A C | 0-0 2-1", "A[1] [2]C[3]"},
      {"at the end of the sentence", "a [1]b [2]c[3] | A | 0-0", "[1][2]A[3]"},
      {"nothing aligned", "[w1]a[w0] [2]b | A B | ", "A [2]B"},
      {"no translation", "[w1]a[w0] [2]b[3] |  | ", "[2][3]"},
      {"a surrogate pair stays whole", "a[1]b | {F0}{9F}{94}{A6} | 0-0", "{9D}D83D{9D}DD26[1]"},
      {"white space", "a [w1]b[w0] |   A \t B{C2}{A0}b | 1-1", "A [w1]B{9D}00A0b[w0]"},
      {"plain characters", "a | <A> & B | 0-0", "<A> & B"},
  };
  std::vector<std::string> sentences;
  for (const auto &row : rows) sentences.push_back(coded(row.row));
  const Outcome outcome = carry(sentences, "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN");
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  const std::vector<std::string> results = frames();
  ASSERT_EQ(results.size(), std::size(rows)) << outcome.errors;
  for (size_t i = 0; i < results.size(); i++)
    EXPECT_EQ(shown(results[i]), shown(coded(with_codes(rows[i].result)))) << rows[i].question;
}

// Letters with the fonts that they have, and the anchors of a sentence.
struct Reading {
  std::string text;
  std::vector<std::string> fonts;  // of each byte of the text
  std::multiset<std::string> anchors;
};

Reading read_codes(const std::string &sentence) {
  Reading reading;
  std::map<std::string, std::string> selected;
  for (size_t i = 0; i < sentence.size(); i++) {
    const size_t end = sentence.find_first_of("\x95\x99", i);
    if (sentence[i] == '\x94') {
      reading.anchors.insert(sentence.substr(i, end - i)), i = end;
    } else if (sentence[i] == '\x98') {
      const size_t separator = sentence.find('\xFF', i);
      selected[sentence.substr(i, separator - i)] = sentence.substr(separator, end - separator);
      i = end;
    } else {
      std::string fonts;
      for (const auto &[group, number] : selected)
        if (number !=
            "\xFF"
            "0")
          fonts += group + number;
      reading.text += sentence[i];
      reading.fonts.push_back(fonts);
    }
  }
  return reading;
}

// The fonts of the first letter of each word.
std::vector<std::string> fonts_of_words(const Reading &reading) {
  std::vector<std::string> fonts;
  for (size_t i = 0; i < reading.text.size(); i++)
    if (i == 0 || reading.text[i - 1] == ' ') fonts.push_back(reading.fonts[i]);
  return fonts;
}

TEST_F(Carry, WhatHoldsForAnyCodesAndAlignment) {
  std::mt19937 random(1);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const auto word = [&](int letter) {
    return std::string(1 + static_cast<size_t>(below(5)), static_cast<char>(letter));
  };
  int number = 0;
  std::vector<std::string> rows, sources, translations;
  std::vector<std::map<int, int>> first_sources;
  for (int k = 0; k < 500; k++) {
    const int words = 1 + below(k % 50 == 0 ? 150 : 12), targets = 1 + below(12);
    std::string source, translation, alignment;
    for (int w = 0; w < words; w++) {
      source += w > 0 ? " " : "";
      for (int c = below(3); c > 0; c--) {
        const int kind = below(6);
        const std::string n = std::to_string(++number);
        source += kind < 2 ? "[" + n + "]" : "[" + std::string(1, "wic"[below(3)]);
        source += kind < 2 ? "" : (kind < 4 ? "0" : n) + "]";
      }
      source += word('a' + w % 26);
      if (below(5) == 0) source += "[w0]";
    }
    std::map<int, int> first;
    for (int j = 0; j < targets; j++) {
      translation += (j > 0 ? " " : "") + word('A' + j);
      for (int c = below(4); c > 0; c--) {
        const int w = below(words);
        alignment.append(std::to_string(w)).append("-").append(std::to_string(j)).append(" ");
        first[j] = first.contains(j) ? std::min(first[j], w) : w;
      }
    }
    rows.push_back(source + " | " + translation + " | " + alignment);
    sources.push_back(coded(with_codes(source)));
    translations.push_back(translation);
    first_sources.push_back(first);
  }
  ASSERT_EQ(carry(rows, "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN").status, 0);
  const std::vector<std::string> results = frames();
  ASSERT_EQ(results.size(), rows.size());
  for (size_t k = 0; k < rows.size(); k++) {
    const Reading source = read_codes(sources[k]), result = read_codes(results[k]);
    EXPECT_EQ(result.text, translations[k]);
    EXPECT_EQ(result.anchors, source.anchors) << rows[k];
    const std::vector<std::string> had = fonts_of_words(source), got = fonts_of_words(result);
    for (size_t j = 0; j < got.size(); j++) {
      const auto first = first_sources[k].find(static_cast<int>(j));
      EXPECT_EQ(got[j],
                first == first_sources[k].end() ? "" : had[static_cast<size_t>(first->second)])
          << rows[k] << " word " << j;
    }
  }
}

TEST_F(Carry, ReportsAndBadInput) {
  const std::string good =
      coded("{94}0{95}\n{90}7 a {98}weight{FF}2{99}b{98}weight{FF}0{99}\nc{91}\n");
  const struct {
    const char *sentences, *translation, *alignment;
    int status;
    const char *report, *out;
  } rows[] = {
      {"", "A C\n", "0-0 2-1", 0, "job.kti:2: sentence 7: 1 font dropped",
       "{94}0{95}/{90}7 A C{91}/"},
      {"", "A\n", "0-0 7-0 0-1 x 1-", 1, "a.txt:1: pair '7-0': the sentence has only 3 words",
       "{94}0{95}/{90}7 A{91}/"},
      {"", "A\nB\n", "0-0", 1, "t.txt: has 2 lines, but job.kti has 1 sentences", "(none)"},
      {"", "A\n", "0-0\n0-0\n", 1, "a.txt: has 2 lines, but job.kti has 1 sentences", "(none)"},
      {"", "A\n", "", 1, "a.txt: has 0 lines, but job.kti has 1 sentences", "(none)"},
      {"", "A\nB\xFF\n", "0-0", 1, "t.txt:2: is not UTF-8", "(none)"},
      {"{90}1 a", "A\n", "0-0", 1, "job.kti:1: a sentence is cut off", "(none)"},
      {"{90}1 a{98}H{99}{91}", "A\n", "0-0", 1, "job.kti:1: unknown font 'H'", "(none)"},
      {"{90}1 {94}2{95}a{9D}12{91}", "A\n", "0-0", 1,
       "job.kti:1: sentence 1: {9D}{31}{32} is no character", "(none)"},
  };
  for (const auto &row : rows) {
    write("job.kti", row.sentences[0] ? coded(row.sentences) : good);
    write("t.txt", row.translation);
    write("a.txt", row.alignment);
    const Outcome outcome = run("kcarry", "job.kti t.txt a.txt out.kti");
    EXPECT_EQ(outcome.status, row.status) << outcome.errors;
    EXPECT_NE(outcome.errors.find(row.report), std::string::npos) << outcome.errors;
    EXPECT_EQ(shown(read("out.kti")), shown(coded(row.out))) << row.report;
    std::remove((directory_ + "/out.kti").c_str());
  }
  EXPECT_EQ(files(), "a.txt job.kti t.txt");
}

TEST_F(Carry, OtherCodePagesAndTheDefaultAlignment) {
  write("job.kti", coded("{90}3 {CC}{E8}{F0} [1]{9D}00E9{91}\n"));
  write("t.txt", "\xCE\x95 \xC2\xAA\n");  // a Greek capital, and a letter that Greek has not
  write("a.txt", "");
  EXPECT_EQ(run("kcarry",
                "--align=identity -LANGUAGE RUSSIAN -TARGET-LANGUAGE GREEK job.kti t.txt out.kti")
                .status,
            0);
  EXPECT_EQ(shown(read("out.kti")), shown(coded("{90}3 {C5} {9D}00AA{91}\n")));
}

TEST_F(Carry, WritesItsFileWholeAndNothingElseIntoIt) {
  carry({std::string(600, 'a') + " | b | 0-0", "c | " + std::string(600, 'd') + " | 0-0"}, "");
  const std::string all = read("out.kti");
  const Outcome outcome = run("kcarry", "job.kti t.txt a.txt out.kti", "ulimit -f 1; ");
  EXPECT_EQ(outcome.errors, "out.kti: could not be written: File too large\n");
  EXPECT_EQ(read("out.kti") + files(), all + "a.txt job.kti out.kti t.txt");
  write("t.txt", "\n\n");  // reported, where there is a standard error
  run("kcarry", "--align=identity job.kti t.txt out.kti <&- >&- 2>&-; true");
  EXPECT_EQ(shown(read("out.kti")), shown(coded("{90}0 {91}\n{90}611 {91}\n")));
}

TEST_F(Carry, Kshow) {
  write("a.kti", coded("{94}1{95}\n{90}0 A{98}line{FF}2{99}{7B}{E4}{9D}20AC{91}\nb{94}3"));
  const Outcome outcome = run("kshow", "-LANGUAGE GERMAN a.kti");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "a.kti: 1 codes are cut off\n");
  EXPECT_EQ(outcome.output,
            "raw       real      kind      text\n"
            "1:1       1:1       anchor    {94}1{95}\n"
            "1:4       1:1       line      {0A}\n"
            "2:1       2:1       sentence  {90}0 \n"
            "2:4       2:3         text    A\n"
            "2:5       2:4         font    {98}line{FF}2{99}\n"
            "2:13      2:4         text    {7B}\xC3\xA4\n"
            "2:15      2:6         alien   {9D}20AC  \xE2\x82\xAC\n"
            "2:20      2:7       sentence  {91}\n"
            "2:21      2:7       line      {0A}\n"
            "3:1       3:1       text      b\n"
            "3:2       3:2       anchor    {94}3  (cut off)\n");
}

}  // namespace
}  // namespace klib::test
