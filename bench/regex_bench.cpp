// Expressions on sentences: ten of each of ten kinds over a thousand sentences of 20 words,
// compared with PCRE2, which compiles them once to machine code or, as klib does, for every text.

#include <benchmark/benchmark.h>

#include "bench/allocations.h"
#include "bench/inputs.h"
#include "klib.h"
#if HAVE_libpcre2_8
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#endif

namespace klib::bench {

namespace {

constexpr size_t sentence_count = 1000, expressions_per_kind = 10;

struct Expression {
  std::string own, pcre;
};

constexpr const char *kinds[] = {
    "word",    "^word",    "a.b$",       "a[set]b",    "[^set]ab",
    "a.*word", "a[a-m]*b", "\\<word\\>", "[set]{4,6}", "(ab*)\\1",
};
constexpr size_t kind_count = std::size(kinds);

// An expression of each kind in turn, the same in both dialects.
std::vector<Expression> make_expressions() {
  start_random(3);
  std::vector<Expression> result;
  for (size_t i = 0; i < expressions_per_kind; i++) {
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

// Every expression of a kind, or of all kinds, on every sentence.
template <class Matches>
void search_all(benchmark::State &state, size_t kind, Matches matches) {
  const size_t first = kind < kind_count ? kind : 0, step = kind < kind_count ? kind_count : 1;
  const size_t searches = expressions().size() / step * sentences().size();
  int64_t found = 0;
  const CountedCalls counted(state, searches);
  for (auto _ : state)
    for (size_t i = first; i < expressions().size(); i += step)
      for (const std::string &sentence : sentences()) found += matches(i, sentence) ? 1 : 0;
  benchmark::DoNotOptimize(found);
}

void klib_search(benchmark::State &state, size_t kind) {
  search_all(state, kind, [](size_t i, const std::string &sentence) {
    char *expression = const_cast<char *>(expressions()[i].own.c_str());
    return regex_search(sentence.c_str(), 1, &expression) == 0;
  });
}

#if HAVE_libpcre2_8

pcre2_code *compile(const std::string &expression) {
  int error;
  PCRE2_SIZE offset;
  return pcre2_compile(reinterpret_cast<PCRE2_SPTR>(expression.data()), expression.size(), 0,
                       &error, &offset, nullptr);
}

void pcre_compiling(benchmark::State &state, size_t kind) {
  pcre2_match_data *data = pcre2_match_data_create(10, nullptr);
  search_all(state, kind, [&](size_t i, const std::string &sentence) {
    pcre2_code *code = compile(expressions()[i].pcre);
    const bool found = pcre2_match(code, reinterpret_cast<PCRE2_SPTR>(sentence.data()),
                                   sentence.size(), 0, 0, data, nullptr) > 0;
    pcre2_code_free(code);
    return found;
  });
  pcre2_match_data_free(data);
}

void pcre_jit(benchmark::State &state, size_t kind) {
  static const std::vector<pcre2_code *> codes = [] {
    std::vector<pcre2_code *> made;
    for (const Expression &expression : expressions()) {
      made.push_back(compile(expression.pcre));
      pcre2_jit_compile(made.back(), PCRE2_JIT_COMPLETE);
    }
    return made;
  }();
  pcre2_match_data *data = pcre2_match_data_create(10, nullptr);
  search_all(state, kind, [&](size_t i, const std::string &sentence) {
    return pcre2_jit_match(codes[i], reinterpret_cast<PCRE2_SPTR>(sentence.data()), sentence.size(),
                           0, 0, data, nullptr) > 0;
  });
  pcre2_match_data_free(data);
}

#endif

const bool registered = [] {
  for (size_t kind = 0; kind <= kind_count; kind++) {
    const std::string path =
        std::string("expressions, ") + (kind < kind_count ? kinds[kind] : "all kinds");
    const auto add = [&](const char *who, void (*run)(benchmark::State &, size_t)) {
      benchmark::RegisterBenchmark((path + "/" + who).c_str(), run, kind)
          ->Unit(benchmark::kMillisecond);
    };
    add("klib", klib_search);
#if HAVE_libpcre2_8
    add("PCRE2 compiling", pcre_compiling);
    add("PCRE2-JIT compiled once", pcre_jit);
#endif
  }
  return true;
}();

}  // namespace

}  // namespace klib::bench
