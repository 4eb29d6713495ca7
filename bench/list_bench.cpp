// Word lists: a million words loaded, sorted and searched, and 50 MB of lines.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "bench/inputs.h"
#include "klib.h"

namespace klib::bench {

namespace {

constexpr size_t word_count = 1'000'000;

const std::string &list_file() {
  static const std::string path = [] {
    std::string content;
    start_random(7);
    for (size_t i = 0; i < word_count; i++) content += random_word() + random_word() + '\n';
    return make_file("list", content);
  }();
  return path;
}

bool below(const char *a, const char *b) { return std::strcmp(a, b) < 0; }

void klib_sort(benchmark::State &state) {
  for (auto _ : state) {
    Klist_in(list_file().c_str());
    Ksort_list();
    Kdestroy_list();
  }
}
void std_sort(benchmark::State &state) {
  Klist_in(list_file().c_str());
  const std::vector<char *> unsorted(l_array, l_array + l_length);
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<char *> lines = unsorted;
    state.ResumeTiming();
    std::sort(lines.begin(), lines.end(), below);
  }
  Kdestroy_list();
}
// Pointers sorted as the runtime library does it, by a comparison of bytes.
int compare_lines(const void *a, const void *b) {
  return std::strcmp(*static_cast<char *const *>(a), *static_cast<char *const *>(b));
}
void qsort_sort(benchmark::State &state) {
  for (auto _ : state) {
    Klist_in(list_file().c_str());
    std::qsort(l_array, static_cast<size_t>(l_length), sizeof *l_array, compare_lines);
    Kdestroy_list();
  }
}
BENCHMARK(qsort_sort)->Name("load and sort a list/qsort")->Unit(benchmark::kMillisecond);
BENCHMARK(klib_sort)->Name("load and sort a list/klib")->Unit(benchmark::kMillisecond);
BENCHMARK(std_sort)->Name("load and sort a list/std::sort")->Unit(benchmark::kMillisecond);

template <class Search>
void search_list(benchmark::State &state, Search search) {
  Klist_in(list_file().c_str());
  Ksort_list();
  start_random(8);
  std::vector<std::string> words;
  for (size_t i = 0; i < 100'000; i++)
    words.push_back(i % 2 == 0 ? l_array[next_random(word_count)] : random_word());
  size_t next = 0;
  for (auto _ : state) benchmark::DoNotOptimize(search(words[next++ % words.size()].c_str()));
  Kdestroy_list();
}
void klib_search(benchmark::State &state) {
  search_list(state, [](const char *word) { return Klist_search(word); });
}
void bsearch_search(benchmark::State &state) {
  search_list(state, [](const char *word) {
    return std::bsearch(&word, l_array, static_cast<size_t>(l_length), sizeof *l_array,
                        compare_lines);
  });
}
void std_search(benchmark::State &state) {
  search_list(state, [](const char *word) {
    char **end = l_array + l_length;
    char **line = std::lower_bound(l_array, end, word, below);
    return line != end && std::strcmp(*line, word) == 0 ? line - l_array : -1;
  });
}
BENCHMARK(klib_search)->Name("search a list/klib");
BENCHMARK(bsearch_search)->Name("search a list/bsearch");
BENCHMARK(std_search)->Name("search a list/std::lower_bound");

template <class Dump>
void dump_list(benchmark::State &state, Dump dump) {
  const std::string path = temporary_file("dumped");
  Klist_in(list_file().c_str());
  for (auto _ : state) dump(path.c_str());
  Kdestroy_list();
}
void klib_dump(benchmark::State &state) { dump_list(state, Kdump_list); }
void fputs_dump(benchmark::State &state) {
  dump_list(state, [](const char *path) {
    FILE *stream = std::fopen(path, "w");
    for (int32_t i = 0; i < l_length; i++) {
      std::fputs(l_array[i], stream);
      std::fputc('\n', stream);
    }
    std::fclose(stream);
  });
}
BENCHMARK(klib_dump)->Name("dump a list/klib")->Unit(benchmark::kMillisecond);
BENCHMARK(fputs_dump)->Name("dump a list/fputs")->Unit(benchmark::kMillisecond);

const std::string &text_file() {
  static const std::string path = make_file("lines", coded_text());
  return path;
}

void klib_lines(benchmark::State &state) {
  for (auto _ : state) {
    int32_t count = 0;
    char **lines = Kfile_to_array(text_file().c_str(), &count);
    benchmark::DoNotOptimize(count);
    Kfree(lines[0]);
    Kfree(lines);
  }
}
void memchr_lines(benchmark::State &state) {
  for (auto _ : state) {
    const int file = ::open(text_file().c_str(), O_RDONLY);
    struct stat status;
    if (::fstat(file, &status) != 0) return;
    const auto size = static_cast<size_t>(status.st_size);
    std::unique_ptr<char[]> buffer(new char[size + 1]);
    if (::read(file, buffer.get(), size) != status.st_size) return;
    ::close(file);
    std::vector<char *> lines;
    char *at = buffer.get(), *end = at + size;
    while (at < end) {
      lines.push_back(at);
      char *stop = static_cast<char *>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
      if (stop == nullptr) stop = end;
      *stop = '\0';
      at = stop + 1;
    }
    benchmark::DoNotOptimize(lines.data());
  }
}
BENCHMARK(klib_lines)->Name("read lines/klib")->Unit(benchmark::kMillisecond);
BENCHMARK(memchr_lines)->Name("read lines/read and memchr")->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace klib::bench
