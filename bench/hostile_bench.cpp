// Expressions that a backtracking matcher never finishes, on texts that nearly match: without
// back-references on 100,000 bytes, compared with RE2, which also takes linear time; with them on
// growing texts, compared with a time for each byte.

#include <benchmark/benchmark.h>

#include <algorithm>

#include "bench/inputs.h"
#include "klib.h"
#if HAVE_re2
#include <re2/re2.h>
#endif

namespace klib::bench {

namespace {

// Holds every literal of the expressions, but none of them where it would have to be.
const std::string &xs() {
  static const std::string text = "y=" + std::string(99'996, 'x') + "zy";
  return text;
}

void search(benchmark::State &state, const std::string &text, std::string expression) {
  char *list = expression.data();
  for (auto _ : state) benchmark::DoNotOptimize(regex_search(text.c_str(), 1, &list));
}

#if HAVE_re2
void re2_search(benchmark::State &state, const std::string &expression) {
  RE2::Options options(RE2::Latin1);
  options.set_max_mem(256 << 20);
  const RE2 compiled(expression, options);
  for (auto _ : state) benchmark::DoNotOptimize(RE2::PartialMatch(xs(), compiled));
}
#endif

void fixed_time(benchmark::State &state, double seconds) {
  for (auto _ : state) state.SetIterationTime(seconds);
}

void add_hostile(const std::string &name, const std::string &expression) {
  const std::string path = "hostile, " + name;
  benchmark::RegisterBenchmark((path + "/klib").c_str(), search, std::cref(xs()), expression);
  benchmark::RegisterBenchmark((path + "/10 ms").c_str(), fixed_time, 0.010)->UseManualTime();
#if HAVE_re2
  std::string plain = expression;
  std::erase(plain, '\\');  // of the intervals
  benchmark::RegisterBenchmark((path + "/RE2 compiled once").c_str(), re2_search, plain);
#endif
}

// What follows \1 is in the text, at its end: only the back-reference can rule a match out earlier.
void add_reference(const std::string &name, const char *expression, size_t length) {
  const std::string path = name + ", " + std::to_string(length) + " bytes";
  const std::string text = std::string(length - 2, 'x') + "zy";
  benchmark::RegisterBenchmark((path + "/klib").c_str(), search, text, expression);
  benchmark::RegisterBenchmark((path + "/100 ns a byte").c_str(), fixed_time,
                               100e-9 * static_cast<double>(length))
      ->UseManualTime();
}

void half_the_text(benchmark::State &state, std::string expression) {
  const std::string text = std::string(998, 'x') + "zy";
  char *list = expression.data();
  for (auto _ : state)
    for (int i = 0; i < 4; i++) benchmark::DoNotOptimize(regex_search(text.c_str(), 1, &list));
}

void add_growth(const std::string &name, const char *expression) {
  const std::string path = name + ", 2000 bytes";
  benchmark::RegisterBenchmark((path + "/klib").c_str(), search, std::string(1998, 'x') + "zy",
                               expression);
  benchmark::RegisterBenchmark((path + "/four times 1000 bytes").c_str(), half_the_text,
                               expression);
}

const bool registered = [] {
  add_hostile("stars", "xx*x*x*x*x*x*x*x*y");
  add_hostile("any", "x.*.*.*.*=");
  add_hostile("intervals", "x\\{1,255\\}x\\{0,255\\}x\\{0,255\\}x\\{0,255\\}x\\{0,255\\}y");
  add_hostile("mixed", "x\\{0,255\\}.\\{0,255\\}[xy]\\{0,255\\}x\\{10,\\}.\\{3,200\\}=");
  add_hostile("sets", "x[^a]*[^b]*[^c]*[^d]*[^e]*=");
  for (const size_t length : {16'000u, 24'000u, 100'000u}) {
    add_reference("one back-reference", "\\(x*\\)x*\\1zy", length);
    add_reference("none fits", "\\(xx*\\)x*\\1y", length);
  }
  add_growth("two back-references", "\\(x*\\)x*\\1x*\\1zy");
  add_growth("two, none fits", "\\(xx*\\)x*\\1x*\\1y");
  return true;
}();

}  // namespace

}  // namespace klib::bench
