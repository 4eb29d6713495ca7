// The aligner: its models compared with slow and obvious ones, what it finds, and what it survives.
#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "programs/align/align.h"
#include "programs/align/chain.h"
#include "programs/align/constants.h"
#include "programs/align/model_file.h"
#include "programs/align/spelling.h"
#include "programs/align/tokens.h"
#include "workplace.h"

namespace klib::test {
namespace {

using namespace programs::align;

// --- units and tokens ---

std::string units_of(const char *line) {
  Vocabulary vocabulary;
  std::vector<Unit> units;
  read_units(line, vocabulary, units);
  std::string text;
  int32_t word = 0;
  for (const Unit &unit : units) {
    text += unit.word == word ? text.empty() ? "" : "+" : " ";
    word = unit.word;
    text += vocabulary.types[static_cast<size_t>(unit.type)].text;
  }
  return text;
}

TEST(Units, AreWordsWithoutTheirEdges) {
  static const struct {
    const char *line, *units;
  } rows[] = {
      {"", ""},
      {"  \t ", ""},
      {"The Old, HOUSE.", "the old+, house+."},
      {"“Bibliothek”. «Été» „Ja“", "\"+bibliothek+\"+. \"+été+\" \"+ja+\""},
      {"l'Aéroport l’air don't 'so' it's.", "l+aéroport l+air don+t \"+so+\" it+s+."},
      {"Debian-Installer -x -- --help", "debian+installer -+x - -+help"},
      {"3,5 1.000. ftp.debian.org, /etc/fstab a@b.c",
       "3,5 1.000+. ftp.debian.org+, /+etc/fstab a@b.c"},
      {"ＡＢＣ１ ٣٤ ΣΊΣΥΦΟΣ", "abc1 34 σίσυφοσ"},
      {"これは古い家です。", "これ+は+古い+家+です+."},
      {"USBメモリ、no", "usb+メモリ+,+no"},
      {"집을, 사다!", "집을+, 사다+!"},
      {"... *** \u200B", ". * \u200B"},
      {"a\u00ADb c\u0301d", "ab c\u0301d"},
  };
  for (const auto &row : rows) EXPECT_EQ(units_of(row.line), row.units) << row.line;
}

TEST(Tokens, DivideOnlyScriptsWithoutBlanks) {
  static const struct {
    const char *line, *tokens;
  } rows[] = {
      {" The “old” l'air-x. ", "The “old” l'air-x.\n"},
      {"これは「古い家」です。 ok, now", "これ は 「 古い 家 」 です 。 ok, now\n"},
      {"kernel-2.6の USB", "kernel- 2.6 の USB\n"},
      {"", "\n"},
  };
  for (const auto &row : rows) {
    Vocabulary vocabulary;
    std::vector<Unit> units;
    std::vector<Token> tokens;
    read_units(row.line, vocabulary, units);
    divide_into_tokens(row.line, units, tokens);
    EXPECT_EQ(token_line(row.line, tokens), row.tokens) << row.line;
    for (const Unit &unit : units) {
      ASSERT_LT(static_cast<size_t>(unit.word), tokens.size());
      EXPECT_LE(tokens[static_cast<size_t>(unit.word)].begin, static_cast<size_t>(unit.begin));
    }
  }
}

TEST(Tokens, OfOthersAreFoundByTheirCharacters) {
  static const struct {
    const char *line, *tokenised, *found;  // found: with '|' between tokens; "no" when they are not
  } rows[] = {
      {"It's “so”, he said.", "It 's “ so ” , he said .", "It|'s|“|so|”|,|he|said|."},
      {"It's <so> & [a|b] \"c\"",
       "It &apos;s &lt; so &gt; &amp; &#91; a &#124; b &#93; &quot; c &quot;",
       "It|'s|<|so|>|&|[|a|||b|]|\"|c|\""},
      {"well-known 1/2", "well @-@ known 1 @/@ 2", "well|-|known|1|/|2"},
      {"Bibliotheken da", "Bib@@ lio@@ theken da", "Bib|lio|theken|da"},
      {"Bibliotheken da", "▁Bib lio theken ▁ da", "Bib|lio|theken||da"},
      {"Das HAUS", "das haus", "Das|HAUS"},
      {"&amp; a@@ b", "&amp; a@@ b", "&amp;|a@@|b"},
      {"古い家です", "古い 家 です", "古い|家|です"},
      {"", "", ""},
      {"one two", "one", "no"},
      {"one", "one two", "no"},
      {"one two", "one too", "no"},
      {"“one”", "\" one \"", "no"},
  };
  for (const auto &row : rows) {
    std::vector<Token> tokens;
    std::string found;
    if (find_tokens(row.line, row.tokenised, tokens)) {
      for (const Token &token : tokens)
        found += (&token == tokens.data() ? "" : "|") +
                 std::string(row.line).substr(token.begin, token.end - token.begin);
    } else {
      found = "no";
    }
    EXPECT_EQ(found, row.found) << row.line << " / " << row.tokenised;
  }
}

TEST(Spelling, ComparesAcrossScripts) {
  static const struct {
    const char *first, *second;
    float least, most;
  } rows[] = {
      {"debian", "debian", 1, 1},
      {"université", "universite", 1, 1},
      {"installer", "installateur", 0.2F, 0.9F},
      {"and", "und", 0, 0.3F},
      {"house", "maison", 0, 0.01F},
      {"1.000", "1,000", 1, 1},
      {"1", "10", 0, 0},
      {"москва", "moskva", 1, 1},
      {"メモリ", "memory", 0.1F, 1},
      {"家", "jia", 0, 0},
      {"", "", 1, 1},
  };
  for (const auto &row : rows) {
    const auto type = [](const char *text) {
      const bool number = text[0] >= '0' && text[0] <= '9';
      const UnitKind kind = number ? UnitKind::number : UnitKind::word;
      return UnitType{text, spelling_of(text, kind), kind, 0, 0, true};
    };
    const UnitType first = type(row.first), second = type(row.second);
    Spelling spelling;
    prepare(first, spelling);
    const float found = similarity(spelling, second);
    EXPECT_GE(found, row.least) << row.first << ' ' << row.second;
    EXPECT_LE(found, row.most) << row.first << ' ' << row.second;
  }
}

// --- the models against all alignments, one by one ---

struct RandomLine {
  std::mt19937 random;
  float number() { return 0.01F + static_cast<float>(random() % 1000) / 1000; }
  Line make(int32_t states, int32_t positions) {
    Line line{states, positions, {}, {}};
    for (int32_t i = 0; i < states * positions; i++) line.likelihood.push_back(number());
    for (int32_t j = 0; j < positions; j++) line.alone.push_back(number());
    return line;
  }
  JumpCounts counts() {
    JumpCounts result{};
    for (int32_t i = longest_jump - 4; i <= longest_jump + 4; i++)
      result[static_cast<size_t>(i)] = number();
    return result;
  }
};

double weight(const Jumps &jumps, int32_t distance) {
  if (std::abs(distance) > longest_jump) return static_cast<double>(jumps.far);
  return static_cast<double>(jumps.far) +
         static_cast<double>(jumps.ahead[static_cast<size_t>(distance + longest_jump)]);
}

double jump(const Jumps &jumps, int32_t states, int32_t from, int32_t to) {
  double norm = 0;
  for (int32_t k = 0; k <= states; k++) norm += weight(jumps, k - from);
  const double any = static_cast<double>(any_jump_share);
  return any / states + (1 - any) * weight(jumps, to - from) / norm;
}

// Adds the probability of every way to go on from `position` to the sums of what it contains.
struct Enumeration {
  const Line &line;
  const Jumps &jumps;
  std::vector<int32_t> partners;  // -1: none
  std::vector<double> linked, unlinked;
  double all = 0;
  std::vector<double> jumped = std::vector<double>(2 * longest_jump + 1, 0.0);

  void finish(double probability) {
    all += probability;
    for (size_t j = 0; j < partners.size(); j++) {
      if (partners[j] < 0)
        unlinked[j] += probability;
      else
        linked[j * static_cast<size_t>(line.states) + static_cast<size_t>(partners[j])] +=
            probability;
    }
  }
  double close_to_diagonal(int32_t position, int32_t state) const {
    const double here = (position + 0.5) / line.positions, there = (state + 0.5) / line.states;
    const double away = static_cast<double>(diagonal_slope) * (here - there);
    return 1 / (1 + away * away);
  }
  // `last` is the state that the next jump begins at; -1 at the start. A position without a
  // partner, or with one that is out of order, stays there; at the start, at any state.
  void go_on(int32_t position, int32_t last, double probability) {
    if (position == line.positions) {
      finish(probability * jump(jumps, line.states, last, line.states));
      return;
    }
    const auto j = static_cast<size_t>(position);
    const double none = static_cast<double>(unlinked_share);
    const double stray = static_cast<double>(stray_share);
    double norm = 0;
    for (int32_t i = 0; i < line.states; i++) norm += close_to_diagonal(position, i);
    for (int32_t i = 0; i < line.states; i++) {
      const double likelihood = static_cast<double>(
          line.likelihood[j * static_cast<size_t>(line.states) + static_cast<size_t>(i)]);
      partners[j] = i;
      go_on(position + 1, i,
            probability * (1 - none - stray) * likelihood * jump(jumps, line.states, last, i));
      for (int32_t from = 0; from < line.states; from++) {
        if (position > 0 && from != last) continue;
        const double staying = probability / (position == 0 ? line.states : 1);
        partners[j] = i;
        go_on(position + 1, from,
              staying * stray * likelihood * close_to_diagonal(position, i) / norm);
        if (i > 0) continue;
        partners[j] = -1;
        go_on(position + 1, from, staying * none * static_cast<double>(line.alone[j]));
      }
    }
  }
};

TEST(Chain, FindsWhatAllAlignmentsTogetherSay) {
  RandomLine random;
  for (int32_t states = 1; states <= 4; states++)
    for (int32_t positions = 1; positions <= 5; positions++) {
      const Line line = random.make(states, positions);
      const Jumps jumps = jumps_of(random.counts());
      Enumeration slow{line, jumps, std::vector<int32_t>(static_cast<size_t>(positions)), {}, {}};
      slow.linked.assign(line.likelihood.size(), 0);
      slow.unlinked.assign(line.alone.size(), 0);
      slow.go_on(0, -1, 1);
      Partners found;
      ChainScratch scratch;
      JumpCounts counts{};
      find_partners_in_chain(line, jumps, scratch, found, counts);
      for (size_t i = 0; i < slow.linked.size(); i++)
        EXPECT_NEAR(static_cast<double>(found.linked[i]), slow.linked[i] / slow.all, 1e-4)
            << states << " states, " << positions << " positions, " << i;
      for (size_t j = 0; j < slow.unlinked.size(); j++)
        EXPECT_NEAR(static_cast<double>(found.unlinked[j]), slow.unlinked[j] / slow.all, 1e-4);
      double jumps_found = 0;
      for (const double count : counts) jumps_found += count;
      EXPECT_LE(jumps_found, positions - 1 + 1e-3);
    }
}

TEST(Chain, LongLinesDoNotUnderflow) {
  RandomLine random;
  Line line = random.make(200, 600);
  for (float &value : line.likelihood) value = value * value * 1e-7F;
  for (float &value : line.alone) value *= 1e-9F;
  Partners found;
  ChainScratch scratch;
  JumpCounts counts{};
  find_partners_in_chain(line, jumps_of({}), scratch, found, counts);
  for (size_t j = 0; j < 600; j++) {
    double sum = static_cast<double>(found.unlinked[j]);
    for (size_t i = 0; i < 200; i++) sum += static_cast<double>(found.linked[j * 200 + i]);
    ASSERT_NEAR(sum, 1, 1e-3) << j;
  }
}

TEST(Diagonal, IsModelOneWithAPriorOfPositions) {
  RandomLine random;
  const Line line = random.make(3, 4);
  Partners found;
  find_partners_on_diagonal(line, found);
  for (int j = 0; j < 4; j++) {
    double prior[3], all = 0, sum = 0, linked[3];
    for (int i = 0; i < 3; i++) {
      const double away = static_cast<double>(diagonal_slope) * ((j + 0.5) / 4 - (i + 0.5) / 3);
      all += prior[i] = 1 / (1 + away * away);
    }
    const double none = static_cast<double>(unlinked_share);
    for (int i = 0; i < 3; i++)
      sum += linked[i] = (1 - none) * prior[i] / all *
                         static_cast<double>(line.likelihood[static_cast<size_t>(j * 3 + i)]);
    const double alone = none * static_cast<double>(line.alone[static_cast<size_t>(j)]);
    for (int i = 0; i < 3; i++)
      EXPECT_NEAR(static_cast<double>(found.linked[static_cast<size_t>(j * 3 + i)]),
                  linked[i] / (sum + alone), 1e-5);
    EXPECT_NEAR(static_cast<double>(found.unlinked[static_cast<size_t>(j)]), alone / (sum + alone),
                1e-5);
  }
}

// --- whole texts ---

using Lines = std::vector<std::pair<std::string, std::string>>;

std::string aligned(const Lines &lines, int jobs = 1, Model *model = nullptr) {
  Model own;
  Model &learned = model ? *model : own;
  Corpus corpus;
  for (const auto &[source, target] : lines) add_line(source, target, learned, corpus);
  AlignmentJob job;
  job.jobs = jobs;
  std::string text;
  align_words(corpus, job, learned, [&](int64_t, const std::vector<WordLink> &links) {
    for (const WordLink &link : links)
      text += std::to_string(link.source) + '-' + std::to_string(link.target) + ' ';
    text += '\n';
  });
  return text;
}

// A word that looks like no other of the same number in another language.
std::string word(const char *syllables, uint32_t number) {
  std::string text;
  number = (number + 1) * 2654435761U;
  for (int i = 0; i < 4; i++, number /= 25) {
    text += syllables[number % 5];
    text += syllables[5 + number / 5 % 5];
  }
  return text;
}

// Lines of words that translate each other one by one, neighbours sometimes in the other order.
Lines planted(size_t count, size_t length, std::string *links) {
  std::mt19937 random;
  Lines lines;
  for (size_t k = 0; k < count; k++) {
    std::vector<uint32_t> words(length);
    for (uint32_t &number : words) number = static_cast<uint32_t>(random() % 60);
    std::vector<size_t> order(length);
    for (size_t i = 0; i < length; i++) order[i] = i;
    for (size_t i = 0; i + 1 < length; i++)
      if (random() % 4 == 0) std::swap(order[i], order[i + 1]);
    std::string source, target, pairs;
    std::vector<size_t> places(length);
    for (size_t j = 0; j < length; j++) {
      source += (j > 0 ? " " : "") + word("bdfgkaeiou", words[j] + 1);
      target += (j > 0 ? " " : "") + word("zwvxqyhjlm", words[order[j]] + 100);
      places[order[j]] = j;
    }
    for (size_t i = 0; i < length; i++)
      pairs += std::to_string(i) + '-' + std::to_string(places[i]) + ' ';
    lines.emplace_back(source, target);
    if (links) *links += pairs + '\n';
  }
  return lines;
}

TEST(Aligner, FindsAPlantedLexicon) {
  std::string wanted;
  const std::string found = aligned(planted(150, 9, &wanted));
  size_t common = 0;
  const auto pairs = [](const std::string &text) {
    std::vector<std::string> result;
    std::string line = "0:", pair;
    size_t number = 0;
    for (const char c : text) {
      if (c == '\n') number++;
      if (c != ' ' && c != '\n') pair += c;
      if (c == ' ') result.push_back(std::to_string(number) + ':' + pair), pair.clear();
    }
    std::sort(result.begin(), result.end());
    return result;
  };
  const std::vector<std::string> all = pairs(wanted), ours = pairs(found);
  for (const std::string &pair : ours) common += std::binary_search(all.begin(), all.end(), pair);
  EXPECT_GT(common, all.size() * 95 / 100);
  EXPECT_GT(common, ours.size() * 98 / 100);
}

TEST(Aligner, TakesAnyLines) {
  std::string longest, numbers;
  for (int i = 0; i < 1000; i++) {
    longest += "w" + std::to_string(i % 97) + " ";
    numbers += std::to_string(i % 89) + ", ";
  }
  const Lines rows[] = {
      {},
      {{"", ""}},
      {{"a", ""}, {"", "b"}, {" ", "\t"}},
      {{"a", "b"}},
      {{"...", "!"}},
      {{"a a a a", "a"}},
      {{"\xFF\xFE\x80 \xC3", "\xF0\x9F \xED\xA0\x80"}},
      {{longest, numbers.substr(0, 500)}},
      {{longest, "w1"}, {"w1", numbers}},
      {{"家", "дом"}, {"古い家", "старый дом"}},
  };
  for (const Lines &lines : rows) {
    const std::string found = aligned(lines);
    EXPECT_EQ(std::count(found.begin(), found.end(), '\n'), static_cast<long>(lines.size()));
    EXPECT_EQ(found, aligned(lines, 3));
  }
}

TEST(Aligner, LinksEqualLinesWordByWord) {
  EXPECT_EQ(aligned({{"Install Debian on the disk.", "Install Debian on the disk."},
                     {"one two three", "one two three"}}),
            "0-0 1-1 2-2 3-3 4-4 \n0-0 1-1 2-2 \n");
}

TEST(Aligner, CutsVeryLongLines) {
  std::string source, target;
  for (int i = 0; i < 2100; i++)
    source += "s" + std::to_string(i) + " ", target += "s" + std::to_string(i) + " ";
  Model model;
  Corpus corpus;
  add_line(source, target, model, corpus);
  std::string cut;
  AlignmentJob job;
  job.cut = [&](int64_t line) { cut += std::to_string(line) + ' '; };
  size_t right = 0;
  align_words(corpus, job, model, [&](int64_t, const std::vector<WordLink> &links) {
    for (const WordLink &link : links) right += link.source == link.target;
    EXPECT_EQ(right, links.size());
  });
  EXPECT_EQ(cut, "0 ");
  EXPECT_GT(right, 2000U);
}

TEST(Aligner, IsTheSameForAnyNumberOfJobs) {
  const Lines lines = planted(90, 12, nullptr);
  const std::string one = aligned(lines, 1);
  for (const int jobs : {2, 3, 7}) EXPECT_EQ(aligned(lines, jobs), one) << jobs;
}

// --- models in files ---

TEST(ModelFile, BringsBackWhatWasLearned) {
  Model model;
  const Lines lines = planted(60, 9, nullptr);
  aligned(lines, 1, &model);
  const std::string bytes = write_model(model);
  Model again;
  ASSERT_EQ(read_model(bytes, again), "");
  EXPECT_EQ(write_model(again), bytes);
  const Lines next = {planted(61, 9, nullptr).back()};
  EXPECT_EQ(aligned(next, 1, &model), aligned(next, 1, &again));
  EXPECT_EQ(write_model(model), write_model(again));
}

uint64_t checksum(std::string_view bytes) {
  uint64_t hash = 0xCBF29CE484222325;
  for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  return hash;
}

TEST(ModelFile, HostileOnesAreRefused) {
  Model model;
  aligned({{"a house", "ein Haus"}, {"a tree", "ein Baum"}}, 1, &model);
  const std::string good = write_model(model);
  Model read;
  EXPECT_EQ(read_model("", read), "is no model");
  EXPECT_EQ(read_model("klib-model 2\n" + good.substr(13), read),
            "is a model of another version; train it again");
  EXPECT_EQ(read_model("klib-model 1\n", read), "is cut off");
  for (size_t length = 13; length < good.size(); length++)
    EXPECT_NE(read_model(good.substr(0, length), read), "") << length;
  // With the right checksum, every byte at its extremes: refused or harmless.
  for (size_t i = 13; i + 8 < good.size(); i++)
    for (const char value : {'\x00', '\x01', '\x7F', '\x80', '\xFF'}) {
      std::string bad = good.substr(0, good.size() - 8);
      bad[i] = value;
      uint64_t sum = checksum(bad);
      for (int k = 0; k < 8; k++, sum >>= 8) bad += static_cast<char>(sum & 0xFF);
      Model hostile;
      if (read_model(bad, hostile).empty()) aligned({{"a house tree", "ein Haus"}}, 1, &hostile);
    }
}

// --- the program ---

using Kalign = Workplace;

TEST_F(Kalign, TakesAnyNamesAndStreams) {
  write("source", "Debian is here.\n\n");
  write("target", "Debian ist hier.\n\n");
  EXPECT_EQ(run("kalign", "source target out").status, 0);
  EXPECT_EQ(read("out"), "0-0 1-1 2-2\n\n");
  const Outcome piped = run("kalign", "- target -", "cat source | ");
  EXPECT_EQ(piped.output, "0-0 1-1 2-2\n\n") << piped.errors;
  write("source", "One\vtwo three\n");
  EXPECT_EQ(run("kalign", "source source out").status, 0);
  EXPECT_EQ(read("out"), "0-0 0-1 1-2\n");
  write("ja", "USBを\n");
  write("en", "the USB\n");
  EXPECT_EQ(run("kalign", "--tokens t ja en -").status, 0);
  EXPECT_EQ(read("t.source"), "USB を\n");
  EXPECT_EQ(read("t.target"), "the USB\n");
}

TEST_F(Kalign, LearnsFromWhatItIsGiven) {
  write("source", "alpha beta\n");
  write("target", "drei vier\n");
  write("lexicon", "alpha\tvier\nbeta\tdrei\n\nno column here\n");
  const Outcome outcome = run("kalign", "--lexicon lexicon source target out");
  EXPECT_EQ(read("out"), "0-1 1-0\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "lexicon:4: does not have two columns, and is left out\n");
  std::string words, partners;
  for (int i = 0; i < 5; i++) words += "alpha\nbeta\n", partners += "vier\ndrei\n";
  write("memory.s", words);
  write("memory.t", partners);
  EXPECT_EQ(run("kalign", "--memory memory.s memory.t --save model memory.s memory.t x").status, 0);
  EXPECT_EQ(run("kalign", "--memory memory.s memory.t source target out2").status, 0);
  EXPECT_EQ(read("out2"), "0-1 1-0\n");
  EXPECT_EQ(run("kalign", "--model model source target out3").status, 0);
  EXPECT_EQ(read("out3"), "0-1 1-0\n");
}

TEST_F(Kalign, RefusesWhatDoesNotFit) {
  write("two", "a\nb\n");
  write("three", "a\nb\nc\n");
  write("model", "klib-model 9\n");
  static const struct {
    const char *arguments, *errors;
  } rows[] = {
      {"two three out", "three: has 3 lines, but two has 2\n"},
      {"three two out", "two: has 2 lines, but three has 3\n"},
      {"--memory two three two two out", "two: has 2 lines, but three has 3\n"},
      {"--model model two two out", "model: is a model of another version; train it again\n"},
      {"--model none two two out", "none: cannot be read: No such file or directory\n"},
      {"two two", "kalign: 2 file names, but each job takes 3\n"},
      {"--save s two two out two two o", "kalign: --save and --tokens are for one job alone\n"},
      {"two two out two two out",
       "out: is the same file as out, which this job uses, too: nothing is written\n"},
      {"--memory two two --save two three three out",
       "two: is the same file as two, which this job uses, too: nothing is written\n"},
  };
  for (const auto &row : rows) {
    const Outcome outcome = run("kalign", row.arguments);
    EXPECT_EQ(outcome.errors, row.errors) << row.arguments;
    EXPECT_EQ(outcome.status, 1) << row.arguments;
    EXPECT_EQ(read("out"), "(none)") << row.arguments;
  }
}

// --- kcarry with it ---

class CarryAlong : public Workplace {
 protected:
  // A page of one paragraph a line, and its translation.
  void extract(const std::string &paragraphs, const std::string &translation,
               const std::string &languages) {
    write("job.html", "<meta charset=utf-8>\n" + paragraphs);
    write("t.txt", translation);
    languages_ = languages;
    const size_t target = languages.find(" -TARGET");
    EXPECT_EQ(run("kextract", languages.substr(0, target) + " job.kti job.html").status, 0);
  }
  // Carries by these arguments and merges; the paragraphs that come out.
  std::string carry(const std::string &arguments, const std::string &errors) {
    const Outcome carried =
        run("kcarry", languages_ + " " + arguments + " out.kti", "cat t.txt | ");
    const size_t summary = carried.errors.find("job.kti: ");
    EXPECT_EQ(carried.errors.substr(0, summary), errors) << arguments;
    const size_t name = languages_.rfind(' ');
    run("kmerge", "-LANGUAGE" + languages_.substr(name) + " out.kti job.anc out.html");
    const std::string page = read("out.html");
    return page.substr(std::min(page.find("<p>"), page.size()));
  }

  std::string languages_;
};

const char *const english_houses =
    "<p>This is an <b>old house</b>.</p>\n<p>This is <b>an old</b> tree.</p>\n"
    "<p>The <i>house</i> is old.</p>\n";
const char *const japanese_houses =
    "<p>これは<b>古い家</b>です。</p>\n<p>これは<b>古い</b>木です。</p>\n<p><i>家</i>は古いです。</"
    "p>\n";

// The text of a page, a line for each paragraph.
std::string plain(std::string page) {
  for (size_t begin; (begin = page.find('<')) != page.npos;)
    page.erase(begin, page.find('>', begin) + 1 - begin);
  return page;
}

TEST_F(CarryAlong, FollowsTheWordsOfScriptsWithoutBlanks) {
  std::string english, japanese;
  for (int i = 0; i < 10; i++) {
    english += "house\nold\nold house\ntree\nis\nThis is a house.\nThe tree is old.\n";
    japanese += "家\n古い\n古い家\n木\nです\nこれは家です。\n木は古いです。\n";
  }
  write("m.en", english);
  write("m.ja", japanese);
  extract(japanese_houses, plain(english_houses), "-LANGUAGE JAPANESE -TARGET-LANGUAGE ENGLISH");
  EXPECT_EQ(carry("--align --memory m.ja m.en job.kti -", ""),
            "<p>This is an <b>old house</b>.</p>\n<p>This is an <b>old</b> tree.</p>\n"
            "<p>The <i>house</i> is old.</p>\n");
  extract(english_houses, plain(japanese_houses), "-LANGUAGE ENGLISH -TARGET-LANGUAGE JAPANESE");
  const std::string page = carry("--align --memory m.en m.ja job.kti t.txt", "");
  EXPECT_EQ(page, japanese_houses);
  // The same through files.
  EXPECT_EQ(run("kalign", "--memory m.en m.ja --tokens k job.txt t.txt a.txt").status, 0);
  EXPECT_EQ(carry("--source-tokens k.source --target-tokens k.target job.kti t.txt a.txt", ""),
            page);
}

TEST_F(CarryAlong, IsKalignAndKcarryInOneStep) {
  std::string page, translation;
  for (const auto &[source, target] : planted(40, 8, nullptr)) {
    const size_t middle = source.find(' ', source.size() / 2);
    page += "<p>" + source.substr(0, middle) + " <a href=x>" + source.substr(middle + 1) +
            "</a>.</p>\n";
    translation += target + ".\n";
  }
  extract(page, translation, "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN");
  EXPECT_EQ(run("kalign", "job.txt t.txt a.txt").status, 0);
  const std::string two_steps = carry("job.kti t.txt a.txt", "");
  EXPECT_NE(two_steps.find("<a href=x>"), two_steps.npos);
  EXPECT_EQ(carry("--align job.kti - --jobs 2", ""), two_steps);
}

TEST_F(CarryAlong, MapsTokensToWords) {
  extract(
      "<p>It's a <b>“well-known” fact</b>, <i>isn't</i> it?</p>\n<p>Other <b>Debian</b> "
      "words.</p>\n",
      "Nicht wahr, das ist eine „bekannte“ Tatsache.\nAndere Debian-Wörter.\n",
      "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN");
  write("s.tok", "it &apos;s a “ well @-@ known ” fact , isn &apos;t it ?\nOther more words .\n");
  write("t.tok", "Nicht wahr , das ist eine „ bekan@@ nte “ Tatsache .\nAndere Debian-Wörter .\n");
  write("a.txt", "0-3 1-4 2-5 3-6 4-7 6-8 7-9 8-10 9-2 10-0 11-1 13-11\n0-0 99-7\n");
  EXPECT_EQ(
      carry(
          "--source-tokens s.tok --target-tokens t.tok job.kti t.txt a.txt",
          "job.kti:5: sentence 1: the tokens are not those of the sentence; it is aligned again\n"),
      "<p><i>Nicht wahr</i>, das ist eine <b>„bekannte“ Tatsache</b>.</p>\n"
      "<p>Andere <b>Debian</b>-Wörter.</p>\n");
}

TEST_F(CarryAlong, RefusesWhatDoesNotFit) {
  extract("<p>One <b>b</b> c.</p>\n<p>Two.</p>\n", "Eins.\n",
          "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN");
  write("one", "One b c.\n");
  write("pairs", "0-0\n");
  write("two", "Eins .\nZwei .\n");
  static const struct {
    const char *arguments, *errors;
  } rows[] = {
      {"--align job.kti t.txt", "t.txt: has 1 line, but job.kti has 2 sentences\n"},
      {"--source-tokens one job.kti t.txt pairs",
       "t.txt: has 1 line, but job.kti has 2 sentences\npairs: has 1 line, but job.kti has 2 "
       "sentences\none: has 1 line, but job.kti has 2 sentences\n"},
      {"--align=nonsense job.kti t.txt",
       "kcarry: --align=nonsense: the alignment without a file is --align or --align=identity\n"},
      {"--align --target-tokens two job.kti two",
       "kcarry: tokens are for an ALIGNMENT that counts them, not for --align\n"},
  };
  for (const auto &row : rows) EXPECT_EQ(carry(row.arguments, row.errors), "") << row.arguments;
}

}  // namespace
}  // namespace klib::test
