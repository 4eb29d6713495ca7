// What klib writes, compared with a write(2) of the same bytes to the same kind of file.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "bench/allocations.h"
#include "bench/inputs.h"
#include "klib.h"

namespace klib::bench {

namespace {

constexpr char message[] = "A line of the log, about as long as most of them.\n";
constexpr size_t lines_per_file = 100'000;  // so that the files stay small

void plain_write(benchmark::State &state, const std::string &bytes) {
  const std::string path = temporary_file("written");
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
  size_t written = 0;
  std::string text;
  for (auto _ : state) {
    if (++written % lines_per_file == 0 && ::ftruncate(file, 0) != 0) return;
    text = bytes;  // klib takes a sentence in memory that it may change
    if (::write(file, text.data(), text.size()) < 0) return;
  }
  ::close(file);
}

void klib_log(benchmark::State &state) {
  Ksourcecode_defaults_for_parms("");
  const std::string path = temporary_file("bench.log");
  Kstart_logging_file(path.c_str());
  size_t written = 0;
  for (auto _ : state) {
    if (++written % lines_per_file == 0 && ::truncate(path.c_str(), 0) != 0) return;
    Kmessage(1, 1, "%s", message);
  }
  Kstop_logging_file();
}
void write_log(benchmark::State &state) {
  plain_write(state, std::string("26/11/22 12:00:00 ") + message);
}
BENCHMARK(klib_log)->Name("log a line/klib");
BENCHMARK(write_log)->Name("log a line/write(2)");

const std::string &sentence() {
  static const std::string text = plain_sentences(1, 20)[0];
  return text;
}

void klib_sentence(benchmark::State &state) {
  Ksourcecode_defaults_for_parms("");
  FILE *stream = std::fopen(temporary_file("bench.kti").c_str(), "a");
  init_kti_format(1);
  std::string text;
  size_t written = 0;
  for (auto _ : state) {
    if (++written % lines_per_file == 0 && ::ftruncate(fileno(stream), 0) != 0) return;
    text = sentence();
    kti_format(stream, text.data(), 0);
  }
  std::fclose(stream);
}
void write_sentence(benchmark::State &state) {
  plain_write(state,
              "\x90"
              "0 " +
                  sentence() + "\x91\n");
}
BENCHMARK(klib_sentence)->Name("write a sentence/klib");
BENCHMARK(write_sentence)->Name("write a sentence/write(2)");

}  // namespace

}  // namespace klib::bench
