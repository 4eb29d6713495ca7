// Codes into translations: 20,000 sentences of 20 words with 4 codes, compared with a plain
// implementation and a mere scan of both sentences; sentences without codes; and how the time for a
// word grows with the sentence.

#include <benchmark/benchmark.h>

#include <array>

#include "bench/allocations.h"
#include "bench/inputs.h"
#include "bench/plain_transfer.h"
#include "klib.h"

namespace klib::bench {

namespace {

constexpr size_t sentence_count = 20'000;

void declare_fonts() {
  if (kparm == nullptr) Ksourcecode_defaults_for_parms("");
  P_init_fonts();
  for (const char *line : {"FONT=Roman\xFF"
                           "Bold\xFF"
                           "Italic",
                           "FONT=Plain\xFF"
                           "Mono"})
    Kmanage_parameter_line(line);
}

struct Prepared {
  Sentence sentence;
  std::vector<int32_t *> lists;
  explicit Prepared(Sentence &&made) : sentence(std::move(made)) {
    for (auto &list : sentence.alignment) lists.push_back(list.data());
    lists.push_back(nullptr);
  }
};

std::vector<Prepared> prepare(size_t count, int32_t words, int32_t codes, Alignment kind) {
  std::vector<Prepared> sentences;
  for (size_t i = 0; i < count; i++) sentences.emplace_back(make_sentence(words, codes, kind));
  return sentences;
}

std::vector<Prepared> &prepared(Alignment kind) {
  static std::vector<Prepared> made[3];
  auto &sentences = made[static_cast<size_t>(kind)];
  if (sentences.empty()) {
    start_random(4);
    sentences = prepare(sentence_count, 20, 4, kind);
  }
  return sentences;
}

void transfer(benchmark::State &state, Alignment kind) {
  declare_fonts();
  auto &sentences = prepared(kind);
  size_t next = 0;
  {
    const CountedCalls counted(state);
    for (auto _ : state) {
      Prepared &own = sentences[next++ % sentence_count];
      Kfree(CopyFontsString(own.sentence.source.c_str(), own.sentence.target.c_str(),
                            own.lists.data()));
    }
  }
  P_cleanup_fonts();
}

void plain(benchmark::State &state, Alignment kind) {
  auto &sentences = prepared(kind);
  std::vector<std::string> results[2];
  for (auto &written : results) {
    declare_fonts();
    for (size_t i = 0; i < 1000; i++) {
      Prepared &own = sentences[i];
      const auto &[source, target, alignment] = own.sentence;
      if (&written == &results[0]) {
        written.push_back(plain_transfer(source, target, own.lists.data()));
      } else {
        char *text = CopyFontsString(source.c_str(), target.c_str(), own.lists.data());
        written.emplace_back(text);
        Kfree(text);
      }
    }
    P_cleanup_fonts();
  }
  if (results[0] != results[1]) return state.SkipWithError("the results differ");
  declare_fonts();
  size_t next = 0;
  for (auto _ : state) {
    const Prepared &own = sentences[next++ % sentence_count];
    benchmark::DoNotOptimize(
        plain_transfer(own.sentence.source, own.sentence.target, own.lists.data()));
  }
  P_cleanup_fonts();
}

// One table lookup for each byte of both sentences.
void scan(benchmark::State &state, Alignment kind) {
  auto &sentences = prepared(kind);
  std::array<uint8_t, 256> table{};
  for (const int byte : {0x20, 0x0A, 0x94, 0x98, 0x1E}) table[static_cast<size_t>(byte)] = 1;
  size_t next = 0;
  for (auto _ : state) {
    const Sentence &own = sentences[next++ % sentence_count].sentence;
    size_t stops = 0;
    for (const std::string *text : {&own.source, &own.target})
      for (const char *at = text->c_str(); *at != '\0'; at++) {
        stops += table[static_cast<unsigned char>(*at)];
        benchmark::DoNotOptimize(stops);
      }
  }
}
#define TRANSFER(kind, name)                                                           \
  BENCHMARK_CAPTURE(transfer, kind, Alignment::kind)->Name("transfer, " name "/klib"); \
  BENCHMARK_CAPTURE(plain, kind, Alignment::kind)->Name("transfer, " name "/plain");   \
  BENCHMARK_CAPTURE(scan, kind, Alignment::kind)->Name("transfer, " name "/scan of both")
TRANSFER(one_to_one, "one-to-one");
TRANSFER(reordered, "reordered");
TRANSFER(many_to_many, "many-to-many");

void no_codes(benchmark::State &state) {
  declare_fonts();
  const auto sentences = plain_sentences(2000, 20);
  int32_t list[] = {119, -1}, *lists[64] = {list, nullptr};
  size_t next = 0;
  {
    const CountedCalls counted(state);
    for (auto _ : state) {
      const char *source = sentences[next++ % 1000].c_str();
      Kfree(CopyFontsString(source, sentences[1000 + next % 1000].c_str(), lists));
    }
  }
  P_cleanup_fonts();
}
BENCHMARK(no_codes)->Name("transfer, no codes/klib");
void no_codes_limit(benchmark::State &state) {
  for (auto _ : state) state.SetIterationTime(45e-9);
}
BENCHMARK(no_codes_limit)->Name("transfer, no codes/45 ns")->UseManualTime();

// The same number of words in all, in sentences of 500 or of 50,000.
void growth(benchmark::State &state, Alignment kind, int32_t words) {
  declare_fonts();
  start_random(5);
  auto sentences = prepare(static_cast<size_t>(50'000 / words), words, words / 5, kind);
  for (auto _ : state)
    for (Prepared &own : sentences)
      Kfree(CopyFontsString(own.sentence.source.c_str(), own.sentence.target.c_str(),
                            own.lists.data()));
  P_cleanup_fonts();
}
#define GROWTH(kind, name)                                         \
  BENCHMARK_CAPTURE(growth, kind##_large, Alignment::kind, 50'000) \
      ->Name("per word at 50000, " name "/klib")                   \
      ->Unit(benchmark::kMillisecond);                             \
  BENCHMARK_CAPTURE(growth, kind##_small, Alignment::kind, 500)    \
      ->Name("per word at 50000, " name "/at 500")                 \
      ->Unit(benchmark::kMillisecond)
GROWTH(one_to_one, "one-to-one");
GROWTH(reordered, "reordered");
GROWTH(many_to_many, "many-to-many");

}  // namespace

}  // namespace klib::bench
