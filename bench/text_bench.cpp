// String routines on a sentence of 20 words and on a long text.

#include <benchmark/benchmark.h>

#include <cctype>
#include <cstring>

#include "bench/inputs.h"
#include "klib.h"

namespace klib::bench {

namespace {

template <class Change>
void on_sentences(benchmark::State &state, Change change) {
  static const std::vector<std::string> sentences = plain_sentences(1000, 20);
  static char text[4096];
  size_t next = 0;
  for (auto _ : state) {
    const std::string &sentence = sentences[next++ % sentences.size()];
    std::memcpy(text, sentence.c_str(), sentence.size() + 1);
    change(text);
    benchmark::DoNotOptimize(text);
    benchmark::ClobberMemory();
  }
}

void klib_uppercase(benchmark::State &state) { on_sentences(state, uppercase_string); }
void toupper_loop(benchmark::State &state) {
  on_sentences(state, [](char *text) {
    for (; *text != '\0'; text++)
      *text = static_cast<char>(std::toupper(static_cast<unsigned char>(*text)));
  });
}
void klib_remove(benchmark::State &state) {
  on_sentences(state, [](char *text) { remove_if(text, 0x08000000); });
}
void isspace_loop(benchmark::State &state) {
  on_sentences(state, [](char *text) {
    char *to = text;
    for (; *text != '\0'; text++)
      if (!std::isspace(static_cast<unsigned char>(*text))) *to++ = *text;
    *to = '\0';
  });
}
BENCHMARK(klib_uppercase)->Name("uppercase/klib");
BENCHMARK(toupper_loop)->Name("uppercase/toupper loop");
BENCHMARK(klib_remove)->Name("remove white space/klib");
BENCHMARK(isspace_loop)->Name("remove white space/isspace loop");

}  // namespace

}  // namespace klib::bench
