// What kcarry makes of sentences, translations and alignments, and how kshow shows it.
#include <algorithm>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <vector>

#include "workplace.h"

namespace klib::test {
namespace {

// A short notation for codes: "[w2]" is the font {98}weight{FF}2{99}, "[i3]" slant, "[c4]" face,
// "[5]" the anchor {94}5{95}. What is in braces is a byte.
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
    const size_t language = languages.starts_with("-LANGUAGE ") ? 10 : languages.npos;
    write_sentences("job.kti", coded(sentences),
                    language == languages.npos
                        ? "ENGLISH"
                        : languages.substr(language, languages.find(' ', language) - language));
    write("t.txt", translation);
    write("a.txt", alignment);
    return run("kcarry", languages + " job.kti t.txt a.txt out.kti");
  }

  // Runs the programs on a page of one paragraph; the result is the paragraph that comes out.
  std::string translate(const std::string &source, const std::string &target,
                        const std::string &alignment, const std::string &language) const {
    write("job.htm", "<meta charset=utf-8><p>" + source + "</p>");
    write("t.txt", target + "\n");
    write("a.txt", alignment + "\n");
    const Outcome outcomes[] = {
        run("kextract", "-LANGUAGE ENGLISH job.kti job.htm"),
        run("kcarry",
            "-LANGUAGE ENGLISH -TARGET-LANGUAGE " + language + " job.kti t.txt a.txt out.kti"),
        run("kmerge", "-LANGUAGE " + language + " out.kti job.anc out.htm")};
    for (const Outcome &outcome : outcomes) EXPECT_EQ(outcome.status, 0) << outcome.errors;
    const std::string page = read("out.htm");
    const size_t begin = page.find("<p>") + 3, end = page.rfind("</p>");
    return end == page.npos ? page : page.substr(begin, end - begin);
  }

  // The texts of the frames that kcarry has written.
  std::vector<std::string> frames() const {
    std::vector<std::string> texts;
    std::istringstream file(read_sentences("out.kti"));
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
      {"a gap that nothing claims", "[w1]a b[w0] | A x B | 0-0 1-2", "[w1]A x B[w0]"},
      {"one to many", "a [w1]b[w0] c | A B B C | 0-0 1-1 1-2 2-3", "A [w1]B B[w0] C"},
      {"many to one", "a [w1]b[w0] c | AB C | 0-0 1-0 2-1", "[w1]AB[w0] C"},
      {"codes on either side of a blank", "a[w1] b [w0]c | A B C | 0-0 1-1 2-2", "A [w1]B[w0] C"},
      {"the word for what was inside it", "in[i1]visible[i0], a | un{C3}{BC}bar, A | 0-0 1-1",
       "[i1]un{FC}bar[i0], A"},
      {"quotation marks of the translation", "\"[w1]a[w0]\", | ({E2}{80}{9E}A{E2}{80}{9C}), | 0-0",
       "({9D}201E[w1]A[w0]{9D}201C),"},
      {"punctuation of the last source word", "[w1]a b[w0]. | AB. | 0-0 1-0", "[w1]AB[w0]."},
      {"some of it in the font", "[w1]5%[w0], | 5%!, | 0-0", "[w1]5%[w0]!,"},
      {"punctuation inside the font", "[w1]a![w0] b | B A! | 0-1 1-0", "B [w1]A![w0]"},
      {"two groups and an anchor", "[w1][i2]a[i0] [3]b[4][w0] c | C B A | 0-2 1-1 2-0",
       "C [w1][3]B[4] [i2]A[i0][w0]"},
      {"an anchor after a font", "[w1]a[w0][2] b | A B | 0-0 1-1", "[w1]A[w0][2] B"},
      {"anchors of unaligned words", "d a[1] [2]b[3] c | X Y Z | 0-0 1-1 3-2", "X Y[1] [2]Z[3]"},
      {"nothing aligned", "[w1]a[w0] [2]b | C D | ", "C [2]D"},
      {"no translation", "[w1]a[w0] [2]b[3] |  | ", "[2][3]"},
      {"a surrogate pair stays whole", "[1]a[2] | {F0}{9F}{94}{A6} | 0-0",
       "[1]{9D}D83D{9D}DD26[2]"},
      {"white space", "a [w1]b[w0] |   A \t B{C2}{A0}b | 1-1", "A [w1]B{9D}00A0b[w0]"},
      {"plain characters", "a[1] | <A> & B | 0-0", "<A> & B[1]"},
      {"a font in a font of its group", "[w1]a [w2]b[w1] c[w0] | C B A | 0-2 1-1 2-0",
       "[w1]C[w0] [w2]B[w0] [w1]A[w0]"},
      {"without text", "a[w1][w0] [i2][3][i0]b | A B | 0-0 1-1", "A [3]B"},
      {"all to all", "a [w1]b[w0] c | A B C | 0-0 0-1 0-2 1-0 1-1 1-2 2-0 2-1 2-2",
       "[w1]A B C[w0]"},
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

TEST_F(Carry, WhereAPersonPutsTags) {
  static const struct {
    const char *rule, *source, *target, *alignment, *language, *result;
  } rows[] = {
      {"an element is one span", "The <b>old public library</b> is", "Die alte x Bibliothek ist",
       "0-0 1-1 3-3 4-4", "GERMAN", "Die <b>alte x Bibliothek</b> ist"},
      {"it ends after its last word, whichever that is",
       "An <a>implementation of the EU's economic programmes</a>.",
       "Eine Umsetzung der Wirtschaftsprogramme der EU.", "0-0 1-1 2-2 3-2 4-5 5-3 6-3", "GERMAN",
       "Eine <a>Umsetzung der Wirtschaftsprogramme der EU</a>."},
      {"of the whole sentence but its full stop", "<a>The programmes of the EU</a>.",
       "Heute die Programme der EU.", "0-1 1-2", "GERMAN", "<a>Heute die Programme der EU</a>."},
      {"nothing aligned: between the neighbours", "Open <a>me</a> now", "Bitte mich jetzt",
       "0-0 2-2", "GERMAN", "Bitte <a>mich</a> jetzt"},
      {"nothing aligned and nothing between: a link", "Do <a>it</a> now", "Mach jetzt", "0-0 2-1",
       "GERMAN", "Mach <a>jetzt</a>"},
      {"nothing aligned and nothing between: a font", "Do <b>it</b> now", "Mach jetzt", "0-0 2-1",
       "GERMAN", "Mach jetzt"},
      {"a mark that the word had not", "Now add the <a href=\"x\">--foreign</a> option.",
       "Ahora añada la opción --foreign.", "0-0 1-1 2-2 3-4 4-3", "SPANISH",
       "Ahora añada la opción <a href=\"x\">--foreign</a>."},
      {"the same with a font", "Now add the <b>--foreign</b> option.",
       "Ahora añada la opción --foreign.", "0-0 1-1 2-2 3-4 4-3", "SPANISH",
       "Ahora añada la opción <b>--foreign</b>."},
      {"a bracket outside", "It is (see <a>the man page whois</a>).",
       "Es ist so (siehe Handbuch whois).", "0-0 1-1 2-3 3-4 4-4 5-4 6-5", "GERMAN",
       "Es ist so (siehe <a>Handbuch whois</a>)."},
      {"quotation marks inside", "See <a>“Account setup”</a>.", "Siehe „Konten einrichten“.",
       "0-0 1-1 2-2", "GERMAN", "Siehe <a>„Konten einrichten“</a>."},
      {"quotation marks are whole", "See <a>Section 7, “Manual Pages”</a>) now",
       "Ver Sección 7, “Páginas de Manuales”) ahora", "0-0 1-1 2-2 4-3 5-6", "SPANISH",
       "Ver <a>Sección 7, “Páginas de Manuales”</a>) ahora"},
      {"between a word and the last mark", "They <b>answered</b> all<img>.",
       "Alle haben sie beantwortet.", "0-2 1-3 2-0", "GERMAN",
       "Alle haben sie <b>beantwortet</b><img>."},
      {"not inside a word", "Then preseed <a href=\"x\">skip-config</a>. this will do",
       "Luego preconfigure skip-config. Esto hará que", "0-0 1-1 2-2 2-4 3-3 4-4", "SPANISH",
       "Luego preconfigure <a href=\"x\">skip-config</a>. Esto hará que"},
      {"before a mark with a blank", "Do you read <a href=x>a file</a>?", "Lisez-vous un fichier ?",
       "0-0 1-0 2-0 3-1 4-2 4-3", "FRENCH", "Lisez-vous <a href=x>un fichier</a> ?"},
      {"letters that the code page lacks", "a <b>blade of grass</b>, still", "źdźbło trawy, wciąż",
       "1-0 3-1 4-2", "POLISH", "<b>źdźbło trawy</b>, wciąż"},
      {"Cyrillic", "in the <a>left corner</a>.", "в левом углу.", "0-0 2-1 3-2", "RUSSIAN",
       "в <a>левом углу</a>."},
      {"Japanese has no blanks", "Use <b>apt</b> now", "今すぐaptを使ってください", "0-0 1-0 2-0",
       "JAPANESE", "今すぐ<b>apt</b>を使ってください"},
      {"a change of script", "use <b>apt</b> now", "지금 apt를", "0-1 1-1 2-0", "KOREAN",
       "지금 <b>apt</b>를"},
      {"inside a word as in the source", "an in<i>visible</i> man", "ein invisible Mann",
       "0-0 1-1 2-2", "GERMAN", "ein in<i>visible</i> Mann"},
      {"a part of a compound", "the <b>debian-installer</b> package", "das debian-installer-Paket",
       "0-0 1-1 2-1", "GERMAN", "das <b>debian-installer</b>-Paket"},
      {"a word and a part of another", "an <i>URL-path</i> at the <b>URL</b> given",
       "an der URL ein URL-Pfad steht", "0-3 1-4 2-0 3-1 4-2 5-5", "GERMAN",
       "an der <b>URL</b> ein <i>URL-Pfad</i> steht"},
      {"a compound of two words", "the <b>Help</b> button", "der Hilfe-Button", "0-0 1-1 2-1",
       "GERMAN", "der <b>Hilfe</b>-Button"},
      {"a compound of the span", "Read <b>on Debian</b>, now", "Lies zur Debian-Installation jetzt",
       "0-0 1-1 2-2 3-3", "GERMAN", "Lies <b>zur Debian-Installation</b> jetzt"},
      {"the end of a sentence", "On <a>the site</a>. more here", "Auf der Seite. und mehr Seiten",
       "0-0 1-1 2-2 2-5 3-4", "GERMAN", "Auf <a>der Seite</a>. und mehr Seiten"},
      {"a verb before the full stop", "You read <b>page one</b>.", "Seite eins lesen Sie durch.",
       "0-3 1-2 2-0 3-1", "GERMAN", "<b>Seite eins</b> lesen Sie durch."},
      {"an article with an apostrophe", "with <a>Africa</a>", "avec l'Afrique", "0-0 1-1", "FRENCH",
       "avec l'<a>Afrique</a>"},
      {"the same beginning", "3.3.<img>Update", "3.3.Aktualisierung", "0-0", "GERMAN",
       "3.3.<img>Aktualisierung"},
      {"marks and digits", "(13)<img>The robustness", "(13)Der Finanzsektor", "0-0 1-1", "GERMAN",
       "(13)<img>Der Finanzsektor"},
      {"whatever the alignment says", "-<img>EUR 1251,74", "—1251,74 EUR", "0-1 1-0", "GERMAN",
       "—<img>1251,74 EUR"},
      {"another order after it", "4.3.<img>2019 Update", "4.3.Für das Jahr 2019", "0-3 1-1",
       "GERMAN", "4.3.<img>Für das Jahr 2019"},
      {"an address", "see <a>https://x.eu/budget-future_en</a>.",
       "siehe https://x.eu/budget-future_de.", "0-0 1-1", "GERMAN",
       "siehe <a>https://x.eu/budget-future_de</a>."},
      {"the same text", "Set <b>url</b> and the other url", "Setzen Sie url und die andere url",
       "0-0 1-6 2-3 4-5", "GERMAN", "Setzen Sie <b>url</b> und die andere url"},
      {"a stray pair", "The <b>old library</b> is next to the town hall",
       "Die alte Bücherei steht neben dem Rathaus dort", "0-0 1-1 2-2 2-7 3-3 4-4 5-4 6-5 7-6 8-6",
       "GERMAN", "Die <b>alte Bücherei</b> steht neben dem Rathaus dort"},
      {"links apart", "<a>One</a> <a>two</a> three", "Zwei drei eins", "0-2 1-0 2-1", "GERMAN",
       "<a>Zwei</a> drei <a>eins</a>"},
      {"well nested", "The <a>big <b>red</b> house</a> there", "Das rote große Haus dort",
       "0-0 1-2 2-1 3-3 4-4", "GERMAN", "Das <a><b>rote</b> große Haus</a> dort"},
      {"a picture between two words", "The <img> button <b>here</b> <img> too",
       "Der Knopf hier auch", "0-0 1-1 2-2 3-3", "GERMAN",
       "Der <img> Knopf <b>hier</b> <img> auch"},
      {"links without words", "Click <a><img></a> <i><img></i> now", "Jetzt hier klicken",
       "0-2 1-0", "GERMAN", "<a><img></a> <i><img></i> Jetzt hier klicken"},
      {"before the last mark", "Click <img>.", "Klicken Sie.", "0-0 1-1", "GERMAN",
       "Klicken Sie<img>."},
      {"before a mark", "Click here <img>, please (or there <img>)",
       "Bitte klicken Sie hier, oder dort.", "0-1 1-3 3-0 4-4 5-5", "GERMAN",
       "Bitte klicken Sie hier<img>, oder dort<img>."},
      {"a blank on one side", "The <img>button and the<img> key", "Der Knopf und die Taste",
       "0-0 1-1 2-2 3-3 4-4", "GERMAN", "Der <img>Knopf und die<img> Taste"},
      {"no blanks in the translation", "The <img> button works", "按钮有效", "1-0 2-0", "CHINESE",
       "<img>按钮有效"},
      {"the words of the sentence", "The<b> <i>old</i> </b> <img> house &lt; <",
       "The old house < <", "0-1 1-0", "GERMAN", "The<b> <i>old</i> </b> <img> house &lt; <"},
      {"an element inside a word", "Press Tab or <b>Shift</b>+<b>Tab</b>+<b>+</b> now",
       "Nun Tab oder Shift+Tab++ drücken", "0-4 1-1 2-2 3-3 4-0", "GERMAN",
       "Nun Tab oder <b>Shift</b>+<b>Tab</b>+<b>+</b> drücken"},
      {"a picture stays in its link", "See <a><img>this page</a> now", "Jetzt diese Seite ansehen",
       "0-3 1-1 2-2 3-0", "GERMAN", "Jetzt <a><img>diese Seite</a> ansehen"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(translate(row.source, row.target, row.alignment, row.language), row.result)
        << row.rule;
}

TEST_F(Carry, AnchorsThatDoNotFit) {
  write("job.htm", "<p>See <a>this</a> now</p>");
  write("t.txt", "Sieh das jetzt\n");
  write("a.txt", "0-0 1-1 2-2\n");
  ASSERT_EQ(run("kextract", "-LANGUAGE ENGLISH job.kti job.htm").status, 0);
  const std::string index = read("job.anx");
  const std::string sentences = read("job.kti"),
                    header = sentences.substr(0, sentences.find('\n') + 1);
  const struct {
    const char *name;
    std::string content;
    const char *report;
  } rows[] = {
      {"job.anx", index.substr(0, 7), "job.anx: is no anchor index"},
      {"job.anx", index.substr(0, 8), "job.anx: does not fit job.anc"},
      {"job.anc", "anchors" + std::string(read("job.anc").substr(7)), "is not a header"},
      {"job.kti", header + coded("{90}0 a {94}77{95}b{91}\n"), "job.anc: there is no anchor 77"},
      {"job.kti", header + coded("{90}0 a {98}weight{FF}2{99}b{91}\n"),
       "sentence 0: anchor 2 is no font"},
  };
  for (const auto &row : rows) {
    const std::string good = read(row.name);
    write(row.name, row.content);
    const Outcome outcome = run("kcarry", "job.kti t.txt a.txt out.kti");
    EXPECT_EQ(outcome.status, 1) << row.report;
    EXPECT_NE(outcome.errors.find(row.report), std::string::npos) << outcome.errors;
    write(row.name, good);
  }
  std::remove((directory_ + "/job.anc").c_str());
  const Outcome outcome = run("kcarry", "job.kti t.txt a.txt out.kti");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.errors.find("job.anc: is not there"), std::string::npos) << outcome.errors;
}

// The text of a sentence, the fonts that its letters have, and its anchors.
struct Reading {
  std::string text;
  std::set<std::string> fonts;
  std::multiset<std::string> anchors;
  bool all_closed = true;  // at the end
};

Reading read_codes(const std::string &sentence) {
  Reading reading;
  std::map<std::string, std::string> selected;  // by group
  for (size_t i = 0; i < sentence.size(); i++) {
    const size_t end = sentence.find_first_of("\x95\x99", i);
    if (sentence[i] == '\x94') {
      reading.anchors.insert(sentence.substr(i, end - i)), i = end;
    } else if (sentence[i] == '\x98') {
      const std::string code = sentence.substr(i, end - i);
      selected[code.substr(0, code.find('\xFF'))] = code.ends_with(
                                                        "\xFF"
                                                        "0")
                                                        ? ""
                                                        : code;
      i = end;
    } else {
      reading.text += sentence[i];
      for (const auto &[group, code] : selected) reading.fonts.insert(code);
    }
  }
  for (const auto &[group, code] : selected) reading.all_closed &= code.empty();
  return reading;
}

std::vector<std::string> words_of(const std::string &text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

TEST_F(Carry, WhatHoldsForAnyCodesAndAlignment) {
  std::mt19937 random(1);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const auto word = [&](int letter) {
    return std::string(1 + static_cast<size_t>(below(5)), static_cast<char>(letter));
  };
  int number = 0;
  std::vector<std::string> rows, sources, translations;
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
    for (int j = 0; j < targets; j++) {
      translation += (j > 0 ? " " : "") + word('A' + j);
      for (int c = below(4); c > 0; c--) {
        const int w = below(words);
        alignment.append(std::to_string(w)).append("-").append(std::to_string(j)).append(" ");
      }
    }
    rows.push_back(source + " | " + translation + " | " + alignment);
    sources.push_back(coded(with_codes(source)));
    translations.push_back(translation);
  }
  ASSERT_EQ(carry(rows, "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN").status, 0);
  const std::vector<std::string> results = frames();
  ASSERT_EQ(results.size(), rows.size());
  for (size_t k = 0; k < rows.size(); k++) {
    const Reading source = read_codes(sources[k]), result = read_codes(results[k]);
    EXPECT_EQ(words_of(result.text), words_of(translations[k]));
    EXPECT_EQ(result.anchors, source.anchors) << rows[k];
    EXPECT_TRUE(result.all_closed) << rows[k];
    for (const std::string &font : result.fonts)
      EXPECT_TRUE(font.empty() || source.fonts.contains(font)) << rows[k] << " font " << font;
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
      {"", "A C\n", "0-0 2-1", 0, "job.kti:3: sentence 7: 1 font dropped",
       "{94}0{95}/{90}7 A C{91}/"},
      {"{90}1 {98}weight{FF}2{99}a {98}slant{FF}3{99}b{98}slant{FF}0{99}{98}weight{FF}0{99} "
       "{98}slant{FF}4{99}c{98}slant{FF}0{99}{91}",
       "A\n", "0-0 1-0 2-0", 0, "job.kti:2: sentence 1: 1 font dropped",
       "{90}1 {98}weight{FF}2{99}{98}slant{FF}3{99}A{98}slant{FF}0{99}{98}weight{FF}0{99}{91}/"},
      {"", "A\n", "0-0 7-0 0-1 x 1-", 1, "a.txt:1: pair '7-0': the sentence has only 3 words",
       "{94}0{95}/{90}7 A{91}/"},
      {"", "A\nB\n", "0-0", 1, "t.txt: has 2 lines, but job.kti has 1 sentence", "(none)"},
      {"", "A\n", "0-0\n0-0\n", 1, "a.txt: has 2 lines, but job.kti has 1 sentence", "(none)"},
      {"", "A\n", "", 1, "a.txt: has 0 lines, but job.kti has 1 sentence", "(none)"},
      {"", "A\nB\xFF\n", "0-0", 1, "t.txt:2: is not UTF-8", "(none)"},
      {"{90}1 a", "A\n", "0-0", 1, "job.kti:2: a sentence is cut off", "(none)"},
      {"{90}1 a{98}H{99}{91}", "A\n", "0-0", 1, "job.kti:2: unknown font 'H'", "(none)"},
      {"{90}1 {94}2{95}a{9D}12{91}", "A\n", "0-0", 1,
       "job.kti:2: sentence 1: {9D}12 is no character", "(none)"},
  };
  for (const auto &row : rows) {
    write_sentences("job.kti", row.sentences[0] ? coded(row.sentences) : good);
    write("t.txt", row.translation);
    write("a.txt", row.alignment);
    const Outcome outcome = run("kcarry", "job.kti t.txt a.txt out.kti");
    EXPECT_EQ(outcome.status, row.status) << outcome.errors;
    EXPECT_NE(outcome.errors.find(row.report), std::string::npos) << outcome.errors;
    EXPECT_EQ(shown(read_sentences("out.kti")), shown(coded(row.out))) << row.report;
    std::remove((directory_ + "/out.kti").c_str());
  }
  EXPECT_EQ(files(), "a.txt job.kti t.txt");
}

TEST_F(Carry, OtherCodePagesAndTheDefaultAlignment) {
  write_sentences("job.kti", coded("{90}3 {CC}{E8}{F0} [1]{9D}00E9{91}\n"), "RUSSIAN");
  write("t.txt", "\xCE\x95 \xC2\xAA\n");  // a Greek capital, and a letter that Greek has not
  write("a.txt", "");
  EXPECT_EQ(run("kcarry",
                "--align=identity -LANGUAGE RUSSIAN -TARGET-LANGUAGE GREEK job.kti t.txt out.kti")
                .status,
            0);
  EXPECT_EQ(shown(read_sentences("out.kti")), shown(coded("{90}3 {C5} {9D}00AA{91}\n")));
}

TEST_F(Carry, WritesItsFileWholeAndNothingElseIntoIt) {
  carry({std::string(600, 'a') + " | b | 0-0", "c | " + std::string(600, 'd') + " | 0-0"}, "");
  const std::string all = read("out.kti");
  const Outcome outcome = run("kcarry", "job.kti t.txt a.txt out.kti", "ulimit -f 1; ");
  EXPECT_EQ(outcome.errors, "out.kti: could not be written: File too large\n");
  EXPECT_EQ(read("out.kti") + files(), all + "a.txt job.kti out.kti t.txt");
  write("t.txt", "\n\n");  // reported, where there is a standard error
  run("kcarry", "--align=identity job.kti t.txt out.kti <&- >&- 2>&-; true");
  EXPECT_EQ(shown(read_sentences("out.kti")), shown(coded("{90}0 {91}\n{90}611 {91}\n")));
}

TEST_F(Carry, Kshow) {
  write("a.kti", coded("{94}1{95}\n{90}0 A{98}line{FF}2{99}{7B}{E4}{9D}20AC{91}\nb{94}3"));
  const Outcome outcome = run("kshow", "-LANGUAGE GERMAN a.kti");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "a.kti: 1 code is cut off\n");
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
