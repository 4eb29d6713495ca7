// What engines answer: Apertium's stream, lines with and without alignment, and what a cache has.
//
// Words of an alignment are there, a block comes back as its sentence, an analysis that spells its
// sentence covers it, and lines of any bytes make a translation that is carried, or are refused
// with a message.

#include <algorithm>
#include <optional>
#include <sstream>

#include "fuzz/page_jobs.h"
#include "programs/common/line_reader.h"
#include "programs/common/utf8.h"
#include "programs/engine/apertium_text.h"
#include "programs/translate/sentences.h"

using namespace klib::fuzz;
using namespace klib::programs;

namespace {

std::string without_end(std::string text) {
  while (!text.empty() && is_white(text.back())) text.pop_back();
  return text;
}

// The analysis of a sentence each of whose words is a unit.
std::string analysis_of(const std::string &sentence) {
  const std::string block = apertium_block(sentence), end = ".[][\n]";
  std::istringstream words(block.substr(0, block.size() - end.size()));
  std::string analysis;
  for (std::string word; words >> word;)
    if (word.find("[~]") == word.npos)
      analysis += "^" + word + "/" + word + "<n>$ ";
    else
      analysis += word + " ";
  return analysis + "^./.<sent>$[][\n]";
}

// Takes the marks out again.
std::string without_marks(std::string marked) {
  for (const std::string mark : {"[[/]]", "[[t:w:"})
    for (size_t at; (at = marked.find(mark)) != marked.npos;)
      marked.erase(at, marked.find("]]", at) + 2 - at);
  return marked;
}

void check_units(const std::string &sentence, const UnitWords &units) {
  const int32_t words = count_words(sentence);
  for (const std::vector<int32_t> &unit : units) {
    require(!unit.empty(), "a unit covers a word");
    for (const int32_t word : unit) require(word >= 0 && word < words, "it is in the sentence");
  }
}

void check_apertium(Input &input) {
  const std::string sentence = input.text(), analysis = input.text(), plain = input.text();
  const std::string block = input.rest();
  ApertiumAnswer answer;
  if (sentence.find('\n') == sentence.npos) {
    require(read_answer(apertium_block(sentence), answer), "a block has an end");
    require(answer.text == without_end(sentence), "it comes back as its sentence");
  }
  std::string marked;
  UnitWords units;
  require(mark_units(analysis_of(sentence), sentence, marked, units), "words spell their sentence");
  require(without_marks(marked) == analysis_of(sentence), "marks change nothing else");
  check_units(sentence, units);
  mark_units(analysis, sentence, marked, units);
  check_units(sentence, units);
  if (!read_answer(block, answer)) return;
  require(answer.units.size() == static_cast<size_t>(count_words(answer.text)),
          "every word of an answer has its units");
  const int32_t sources = count_words(sentence), targets = count_words(plain);
  const auto pairs = apertium_pairs(sentence, units, answer, plain);
  for (const auto &[i, j] : pairs)
    require(i >= 0 && i < sources && j >= 0 && j < targets, "a pair names words that are there");
  require(std::ranges::is_sorted(pairs), "pairs are in order");
}

bool has_cache, is_translated;

void feed_lines(const char *, const char *lines) {
  std::optional<Cache> cache;
  if (has_cache) cache.emplace("cache.db", "engine");
  std::vector<PageFiles> pages(1);
  pages[0].page = "page.html";
  pages[0].base = "job";
  pages[0].is_extracted = true;
  LineReader text("job.txt");
  while (text.next()) pages[0].sentences++;
  SentenceFeed feed(pages, cache ? &*cache : nullptr, [] {});
  feed.set_engine("engine");
  translate_with_file(lines, feed);
  is_translated = pages[0].is_translated;
}

const Program feeding = {.name = "ktranslate",
                         .files = "JOB.kti LINES",
                         .purpose = "",
                         .parameters = {},
                         .options = {},
                         .job = job<feed_lines, 2>};

// Each sentence with an answer of any bytes, as another run has left it.
void fill_cache(Input &input) {
  Cache cache("cache.db", "engine");
  std::istringstream sentences(read_scratch("job.txt"));
  for (std::string sentence; std::getline(sentences, sentence);)
    if (input.below(2) == 0) cache.put(sentence, input.text());
}

void check_translation() {
  const std::string translation = read_scratch("job.tra");
  std::string alignment = read_scratch("job.ali");
  const auto lines = std::ranges::count(read_scratch("job.txt"), '\n');
  require(std::ranges::count(translation, '\n') == lines, "a sentence has a line");
  require(std::ranges::count(alignment, '\n') == lines, "... and one of its alignment");
  require(find_invalid_utf8(translation) == translation.npos, "lines are UTF-8");
  std::ranges::replace(alignment, '?', ' ');
  require(alignment.find_first_not_of("0123456789- \t\n") == alignment.npos, "pairs are pairs");
  scratch_file("job.ali", alignment);
  const Outcome carried = run(kcarry, {"job.kti", "job.tra", "job.ali", "out.kti"});
  require(carried.good || carried.messages.find(": pair '") != std::string::npos,
          "only bad pairs make the status 1");
  require(run(kmerge, {"out.kti", "job.anc", "out.html"}).good, "what was carried is merged");
}

void check_lines(Input &input) {
  scratch_file("page.html",
               "<meta charset=utf-8><p>One <b>two</b> three.<p>Four <img> five<p>Six <a>&lt;</a>");
  require(run(kextract, {"-LANGUAGE", "ENGLISH", "job.kti", "page.html"}).good, "a page is taken");
  has_cache = input.below(4) == 0;
  if (has_cache) fill_cache(input);
  scratch_file("lines.txt", input.rest());
  is_translated = false;
  const Outcome outcome = run(feeding, {"job.kti", "lines.txt"});
  if (is_translated)
    check_translation();
  else
    require(!outcome.good, "what is refused ends with 1");
}

// A file of any bytes as a cache.
void check_cache(Input &input) {
  scratch_file("cache.db", input.rest());
  scratch_file("page.html", "One.");
  scratch_file("lines.txt", "Eins.\n");
  run(kextract, {"-LANGUAGE", "ENGLISH", "job.kti", "page.html"});
  has_cache = true;
  run(feeding, {"job.kti", "lines.txt"});
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  const uint32_t kind = input.below(8);
  clear_scratch();
  if (kind < 5)
    check_apertium(input);
  else if (kind < 7)
    check_lines(input);
  else
    check_cache(input);
  return 0;
}
