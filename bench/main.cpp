// Runs every benchmark and prints, for each hot path, how klib compares with its peers and bounds.
//
// Benchmarks are named "path/who"; who is "klib" or what klib is compared with in the same process
// on the same content. The repetitions of all of them are run in random order, so that a busy
// machine slows all equally. Times are processor time, unless a whole program is started or the
// bound is a time. The table compares medians; a ratio above 1 means that klib is faster. Arguments
// are those of Google Benchmark.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

struct Goal {
  const char *path, *beside;
  double ratio;  // time of the other / time of klib, at least; 0: no goal
};

constexpr double jit_kind = 1 / 1.5, jit_mean = 54.5 / 57;

constexpr Goal goals[] = {
    {"parse a string", "expat", 4},
    {"parse a string", "flex", 2},
    {"parse a string", "scan and copy", 0.65},
    {"parse with positions", "expat", 3},
    {"parse with positions", "scan and copy", 0.5},
    {"parse a stream", "getc loop", 0.9},
    {"parse, five kinds (1A5)", "scan and copy", 0.65},
    {"parse, words (225)", "scan and copy", 0.9},
    {"transfer, one-to-one", "scan of both", 1.0 / 5},
    {"transfer, reordered", "scan of both", 1.0 / 5},
    {"transfer, many-to-many", "scan of both", 1.0 / 5},
    {"transfer, one-to-one", "plain", 3},
    {"transfer, reordered", "plain", 3},
    {"transfer, many-to-many", "plain", 3},
    {"transfer, no codes", "45 ns", 1},
    {"per word at 50000, one-to-one", "at 500", 1 / 1.5},
    {"per word at 50000, reordered", "at 500", 1 / 1.5},
    {"per word at 50000, many-to-many", "at 500", 1 / 1.5},
    {"aliens out and in", "200 ns", 1},
    {"store an anchor", "two writes and a seek", 1 / 1.2},
    {"read an anchor", "pread", 1 / 2.5},
    {"expressions, all kinds", "PCRE2 compiling", 10},
    {"expressions, all kinds", "PCRE2-JIT compiled once", jit_mean},
    {"expressions, word", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, word", "PCRE2 compiling", 0},
    {"expressions, ^word", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, ^word", "PCRE2 compiling", 0},
    {"expressions, a.b$", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, a.b$", "PCRE2 compiling", 0},
    {"expressions, a[set]b", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, a[set]b", "PCRE2 compiling", 0},
    {"expressions, [^set]ab", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, [^set]ab", "PCRE2 compiling", 0},
    {"expressions, a.*word", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, a.*word", "PCRE2 compiling", 0},
    {"expressions, a[a-m]*b", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, a[a-m]*b", "PCRE2 compiling", 0},
    {"expressions, \\<word\\>", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, \\<word\\>", "PCRE2 compiling", 0},
    {"expressions, [set]{4,6}", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, [set]{4,6}", "PCRE2 compiling", 0},
    {"expressions, (ab*)\\1", "PCRE2-JIT compiled once", jit_kind},
    {"expressions, (ab*)\\1", "PCRE2 compiling", 0},
    {"hostile, stars", "10 ms", 1},
    {"hostile, stars", "RE2 compiled once", 1},
    {"hostile, any", "10 ms", 1},
    {"hostile, any", "RE2 compiled once", 1},
    {"hostile, intervals", "10 ms", 1},
    {"hostile, intervals", "RE2 compiled once", 1},
    {"hostile, mixed", "10 ms", 1},
    {"hostile, mixed", "RE2 compiled once", 1},
    {"hostile, sets", "10 ms", 1},
    {"hostile, sets", "RE2 compiled once", 1},
    {"one back-reference, 16000 bytes", "100 ns a byte", 1},
    {"one back-reference, 24000 bytes", "100 ns a byte", 1},
    {"one back-reference, 100000 bytes", "100 ns a byte", 1},
    {"none fits, 16000 bytes", "100 ns a byte", 1},
    {"none fits, 24000 bytes", "100 ns a byte", 1},
    {"none fits, 100000 bytes", "100 ns a byte", 1},
    {"two back-references, 2000 bytes", "four times 1000 bytes", 0.8},
    {"two, none fits, 2000 bytes", "four times 1000 bytes", 0.8},
    {"load and sort a list", "qsort", 4},
    {"load and sort a list", "std::sort", 4},
    {"search a list", "bsearch", 1},
    {"search a list", "std::lower_bound", 1},
    {"read lines", "read and memchr", 0.9},
    {"dump a list", "fputs", 1.2},
    {"uppercase", "toupper loop", 3},
    {"remove white space", "isspace loop", 3},
    {"remove white space", "branchless loop", 1},
    {"search a text", "strstr", 0.8},
    {"replace in a text", "strstr and copies", 0.8},
    {"write a sentence", "write(2)", 0.87},
    {"log a line", "write(2)", 1 / 1.5},
    {"start and end a program", "empty program", 1 / 1.5},
    {"take a page apart", "apertium-deshtml", 0},
    {"take a page apart", "xmllint", 0},
    {"take a page apart", "gumbo", 0},
    {"take a short page apart", "apertium-deshtml", 0},
    {"take a short page apart", "xmllint", 0},
    {"take a short page apart", "gumbo", 0},
    {"put a page together", "apertium-rehtml", 0},
    {"put a page together", "xmllint", 0},
    {"show a sentence file", "xmllint", 0},
};

struct Measured {
  double seconds, allocations;  // of a call; allocations are negative when they were not counted
};

class Table : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &run : runs) {
      if (run.error_occurred)
        std::fprintf(stderr, "%s: %s\n", run.run_name.function_name.c_str(),
                     run.error_message.c_str());
      if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median") continue;
      add(run);
    }
  }

  void print() const {
    std::printf("%-34s %-24s %12s %12s %7s %6s %6s\n", "hot path", "beside", "klib us", "other us",
                "ratio", "goal", "allocs");
    for (const Goal &goal : goals) {
      const auto path = measured_.find(goal.path);
      if (path == measured_.end()) continue;
      const auto own = path->second.find("klib"), other = path->second.find(goal.beside);
      if (own == path->second.end() || other == path->second.end()) continue;
      const Measured &klib = own->second;
      const double ratio = other->second.seconds / klib.seconds;
      std::printf("%-34s %-24s %12.4f %12.4f %7.2f", goal.path, goal.beside, 1e6 * klib.seconds,
                  1e6 * other->second.seconds, ratio);
      goal.ratio > 0 ? std::printf(" %6.2f", goal.ratio) : std::printf(" %6s", "");
      if (klib.allocations >= 0) std::printf(" %6.1f", klib.allocations);
      std::puts(ratio < goal.ratio ? "  missed" : "");
    }
  }

 private:
  void add(const Run &run) {
    const bool processor_time = run.run_name.time_type.empty();
    const double time = processor_time ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
    const auto counter = [&](const char *name, double missing) {
      const auto found = run.counters.find(name);
      return found == run.counters.end() ? missing : static_cast<double>(found->second);
    };
    const double seconds = time / benchmark::GetTimeUnitMultiplier(run.time_unit);
    const std::string &name = run.run_name.function_name;
    const size_t slash = name.find('/');
    measured_[name.substr(0, slash)][name.substr(slash + 1)] = {seconds / counter("calls", 1),
                                                                counter("allocations", -1)};
  }

  std::map<std::string, std::map<std::string, Measured>> measured_;
};

}  // namespace

int main(int argc, char **argv) {
  std::vector<char *> arguments(argv, argv + argc);
  char repetitions[] = "--benchmark_repetitions=7", least[] = "--benchmark_min_time=0.05";
  char interleaved[] = "--benchmark_enable_random_interleaving=true";
  arguments.insert(arguments.begin() + 1, {repetitions, least, interleaved});
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
  Table table;
  benchmark::RunSpecifiedBenchmarks(&table);
  table.print();
  benchmark::Shutdown();
  return 0;
}
