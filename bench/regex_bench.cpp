// Expressions: ten kinds of them over sentences of 20 words, hostile ones over 100,000 bytes.

#include <benchmark/benchmark.h>

#include "bench/inputs.h"
#include "klib.h"
#if HAVE_libpcre2_8
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#endif
#if HAVE_re2
#include <re2/re2.h>
#endif

namespace klib::bench {

namespace {

constexpr size_t sentence_count = 1000;
constexpr int expressions_per_kind = 10;

struct Expression {
  std::string own, pcre;
};

// Ten expressions of each kind, the same in both dialects.
std::vector<Expression> make_expressions() {
  std::vector<Expression> result;
  for (int i = 0; i < expressions_per_kind; i++) {
    const std::string a = random_word(), b = random_word();
    const std::string c(1, a[0]), d(1, b[0]);
    result.insert(result.end(), {
                                    {a, a},
                                    {"^" + a, "^" + a},
                                    {c + "." + d + "$", c + "." + d + "$"},
                                    {c + "[" + b + "]" + d, c + "[" + b + "]" + d},
                                    {"[^" + a + "]" + d + c, "[^" + a + "]" + d + c},
                                    {c + ".*" + b, c + ".*" + b},
                                    {c + "[a-m]*" + d + " ", c + "[a-m]*" + d + " "},
                                    {"\\<" + a + "\\>", "\\b" + a + "\\b"},
                                    {"[" + a + "]\\{4,6\\}", "[" + a + "]{4,6}"},
                                    {"\\(" + c + d + "*\\)\\1", "(" + c + d + "*)\\1"},
                                });
  }
  return result;
}

const std::vector<Expression> &expressions() {
  static const std::vector<Expression> made = make_expressions();
  return made;
}
const std::vector<std::string> &sentences() {
  static const std::vector<std::string> made = plain_sentences(sentence_count, 20);
  return made;
}

template <class Matches>
void search_all(benchmark::State &state, Matches matches) {
  int64_t found = 0;
  for (auto _ : state) {
    found = 0;
    for (size_t i = 0; i < expressions().size(); i++)
      for (const std::string &sentence : sentences()) found += matches(i, sentence) ? 1 : 0;
  }
  state.counters["found"] = static_cast<double>(found);
}

void klib_search(benchmark::State &state) {
  search_all(state, [](size_t i, const std::string &sentence) {
    char *expression = const_cast<char *>(expressions()[i].own.c_str());
    return regex_search(sentence.c_str(), 1, &expression) == 0;
  });
}
BENCHMARK(klib_search)->Name("search expressions/klib")->Unit(benchmark::kMillisecond);

#if HAVE_libpcre2_8

pcre2_code *compile(const std::string &expression) {
  int error;
  PCRE2_SIZE offset;
  return pcre2_compile(reinterpret_cast<PCRE2_SPTR>(expression.data()), expression.size(), 0,
                       &error, &offset, nullptr);
}

bool match(const pcre2_code *code, const std::string &text, pcre2_match_data *data) {
  return pcre2_match(code, reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), 0, 0, data,
                     nullptr) > 0;
}

void pcre_compiling(benchmark::State &state) {
  pcre2_match_data *data = pcre2_match_data_create(10, nullptr);
  search_all(state, [&](size_t i, const std::string &sentence) {
    pcre2_code *code = compile(expressions()[i].pcre);
    const bool found = match(code, sentence, data);
    pcre2_code_free(code);
    return found;
  });
  pcre2_match_data_free(data);
}
void pcre_jit(benchmark::State &state) {
  pcre2_match_data *data = pcre2_match_data_create(10, nullptr);
  std::vector<pcre2_code *> codes;
  for (const Expression &expression : expressions()) {
    codes.push_back(compile(expression.pcre));
    pcre2_jit_compile(codes.back(), PCRE2_JIT_COMPLETE);
  }
  search_all(state, [&](size_t i, const std::string &sentence) {
    return match(codes[i], sentence, data);
  });
  for (pcre2_code *code : codes) pcre2_code_free(code);
  pcre2_match_data_free(data);
}
BENCHMARK(pcre_compiling)
    ->Name("search expressions/PCRE2 compiling")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(pcre_jit)
    ->Name("search expressions/PCRE2-JIT compiled once")
    ->Unit(benchmark::kMillisecond);

#endif

// A time to be held stands beside klib as a benchmark that takes just that long.
void fixed_time(benchmark::State &state, double seconds) {
  for (auto _ : state) state.SetIterationTime(seconds);
}

// An expression that a backtracking matcher never finishes, on 100,000 bytes.
void hostile(benchmark::State &state, const char *expression) {
  static const std::string text(100'000, 'x');
  std::string own = expression;
  char *list = own.data();
  for (auto _ : state) benchmark::DoNotOptimize(regex_search(text.c_str(), 1, &list));
}
#if HAVE_re2
void hostile_to_re2(benchmark::State &state, std::string expression) {
  static const std::string text(100'000, 'x');
  std::erase(expression, '\\');  // of the intervals
  const RE2 compiled(expression, RE2::Latin1);
  for (auto _ : state) benchmark::DoNotOptimize(RE2::PartialMatch(text, compiled));
}
#define HOSTILE_TO_RE2(name, expression) \
  BENCHMARK_CAPTURE(hostile_to_re2, name, expression)->Name("hostile, " #name "/RE2 compiled once")
#else
#define HOSTILE_TO_RE2(name, expression) static_assert(true)
#endif
void one_back_reference(benchmark::State &state) {
  static const std::string text(1000, 'x');
  char expression[] = "\\(x*\\)x*\\1y";
  char *list = expression;
  for (auto _ : state) benchmark::DoNotOptimize(regex_search(text.c_str(), 1, &list));
}
#define HOSTILE(name, expression)                                                \
  BENCHMARK_CAPTURE(hostile, name, expression)->Name("hostile, " #name "/klib"); \
  HOSTILE_TO_RE2(name, expression);                                              \
  BENCHMARK_CAPTURE(fixed_time, name, 0.010)->Name("hostile, " #name "/10 ms")->UseManualTime()
HOSTILE(stars, "x*x*x*x*x*x*x*x*y");
HOSTILE(any, ".*.*.*.*=");
HOSTILE(intervals, "x\\{0,255\\}x\\{0,255\\}x\\{0,255\\}x\\{0,255\\}x\\{0,255\\}y");
HOSTILE(mixed, "x\\{0,255\\}.\\{0,255\\}[xy]\\{0,255\\}x\\{10,\\}.\\{3,200\\}y");
HOSTILE(sets, "[^a]*[^b]*[^c]*[^d]*[^e]*$=");
BENCHMARK(one_back_reference)->Name("one back-reference/klib");
BENCHMARK_CAPTURE(fixed_time, hundred, 0.100)->Name("one back-reference/100 ms")->UseManualTime();

}  // namespace

}  // namespace klib::bench
