// Characters outside the code page, and anchors.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "bench/allocations.h"
#include "bench/inputs.h"
#include "klib.h"

namespace klib::bench {

namespace {

// A sentence of 20 words with two alien characters goes out without digits and gets them back.
void klib_aliens(benchmark::State &state) {
  auto sentences = plain_sentences(1000, 20);
  for (std::string &sentence : sentences) {
    sentence.insert(sentence.size() / 3,
                    "\x9D"
                    "00EF");
    sentence.insert(sentence.size() / 2,
                    "\x9D"
                    "0151");
  }
  size_t next = 0;
  const CountedCalls counted(state);
  for (auto _ : state) {
    std::string &sentence = sentences[next++ % sentences.size()];
    char *out = WithoutAlienCharacters(sentence.data());
    char *back = CopyAlienCharacters(sentence.c_str(), out, 0);
    benchmark::DoNotOptimize(back);
    Kfree(back);
  }
}
void alien_limit(benchmark::State &state) {
  for (auto _ : state) state.SetIterationTime(200e-9);
}
BENCHMARK(klib_aliens)->Name("aliens out and in/klib");
BENCHMARK(alien_limit)->Name("aliens out and in/200 ns")->UseManualTime();

constexpr char anchor[] = "<a href=\"https://example.org/some/page.html\">";
constexpr int32_t anchors_per_file = 10'000;

int open_new(const char *name, int flags = O_RDWR) {
  return ::open(temporary_file(name).c_str(), flags | O_CREAT | O_TRUNC, 0600);
}

void store_anchors(int texts, int index) {
  init_anchor_index_file();
  for (int32_t i = 0; i < anchors_per_file; i++) store_anchor(texts, index, anchor);
}

void klib_store(benchmark::State &state) {
  const CountedCalls counted(state, anchors_per_file);
  for (auto _ : state) {
    const int texts = open_new("anc"), index = open_new("anx");
    store_anchors(texts, index);
    ::close(texts);
    ::close(index);
  }
}
void plain_store(benchmark::State &state) {
  const CountedCalls counted(state, anchors_per_file);
  for (auto _ : state) {
    const int texts = open_new("anc"), index = open_new("anx");
    for (int32_t i = 0; i < anchors_per_file; i++) {
      const auto place = static_cast<int32_t>(::lseek(texts, 0, SEEK_END));
      if (::write(texts, anchor, sizeof anchor - 1) < 0) return;
      if (::write(index, &place, sizeof place) < 0) return;
    }
    ::close(texts);
    ::close(index);
  }
}
BENCHMARK(klib_store)->Name("store an anchor/klib");
BENCHMARK(plain_store)->Name("store an anchor/two writes and a seek");

void klib_read(benchmark::State &state) {
  const int texts = open_new("anc"), index = open_new("anx");
  store_anchors(texts, index);
  finish_anchor_index_file(texts, index);
  const CountedCalls counted(state, anchors_per_file - 1);
  for (auto _ : state) {
    ::lseek(index, 0, SEEK_SET);
    read_anchor_indexes(index);
    for (int32_t n = 1; n < anchors_per_file; n++) Kfree(read_anchor(texts, n));
    free_anchor_indexes();
  }
  ::close(texts);
  ::close(index);
}
void plain_read(benchmark::State &state) {
  const int texts = open_new("anc"), index = open_new("anx");
  store_anchors(texts, index);
  const CountedCalls counted(state, anchors_per_file - 1);
  for (auto _ : state) {
    for (int32_t n = 1; n < anchors_per_file; n++) {
      constexpr size_t size = sizeof anchor - 1;
      auto *text = static_cast<char *>(Kmalloc(size + 1));
      if (::pread(texts, text, size, static_cast<off_t>(size) * (n - 1)) < 0) return;
      benchmark::DoNotOptimize(text);
      Kfree(text);
    }
  }
  ::close(texts);
  ::close(index);
}
BENCHMARK(klib_read)->Name("read an anchor/klib");
BENCHMARK(plain_read)->Name("read an anchor/pread");

}  // namespace

}  // namespace klib::bench
