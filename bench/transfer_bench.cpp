// Codes into translations: 100,000 sentences of 20 words with 4 codes, and how the time for a word
// grows with the sentence.

#include <benchmark/benchmark.h>

#include <array>

#include "bench/inputs.h"
#include "klib.h"

namespace klib::bench {

namespace {

constexpr size_t sentence_count = 100'000;

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

void transfer(benchmark::State &state, Alignment kind) {
  declare_fonts();
  auto sentences = prepare(sentence_count, 20, 4, kind);
  size_t next = 0;
  for (auto _ : state) {
    Prepared &own = sentences[next++ % sentence_count];
    Kfree(CopyFontsString(own.sentence.source.c_str(), own.sentence.target.c_str(),
                          own.lists.data()));
  }
  P_cleanup_fonts();
}
BENCHMARK_CAPTURE(transfer, 1, Alignment::one_to_one)->Name("transfer, one-to-one/klib");
BENCHMARK_CAPTURE(transfer, 2, Alignment::reordered)->Name("transfer, reordered/klib");
BENCHMARK_CAPTURE(transfer, 3, Alignment::many_to_many)->Name("transfer, many-to-many/klib");

// One table lookup for each byte of both sentences.
void scan(benchmark::State &state, Alignment kind) {
  auto sentences = prepare(sentence_count, 20, 4, kind);
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
BENCHMARK_CAPTURE(scan, 1, Alignment::one_to_one)->Name("transfer, one-to-one/scan of both");
BENCHMARK_CAPTURE(scan, 2, Alignment::reordered)->Name("transfer, reordered/scan of both");
BENCHMARK_CAPTURE(scan, 3, Alignment::many_to_many)->Name("transfer, many-to-many/scan of both");

// The same number of words in all, in sentences of 500 or of 50,000.
void growth(benchmark::State &state, Alignment kind, int32_t words) {
  declare_fonts();
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
