// Runs every benchmark and prints, for each hot path, how klib stands beside its peers and bounds.
//
// Benchmarks are named "path/who"; who is "klib" or what klib is measured beside in the same
// process on the same content. A ratio above 1 means that klib is faster. The table compares
// medians of several repetitions. Arguments are those of Google Benchmark.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

struct Goal {
  const char *path, *beside;
  double ratio;  // time of the other / time of klib, at least
};

constexpr Goal goals[] = {
    {"parse a string", "expat", 4},
    {"parse a string", "scan and copy", 0.65},
    {"parse with positions", "expat", 3},
    {"parse with positions", "scan and copy", 0.5},
    {"parse a stream", "getc loop", 0.9},
    {"transfer, one-to-one", "scan of both", 1.0 / 20},
    {"transfer, reordered", "scan of both", 1.0 / 20},
    {"transfer, many-to-many", "scan of both", 1.0 / 20},
    {"per word at 50000, one-to-one", "at 500", 1 / 1.5},
    {"per word at 50000, reordered", "at 500", 1 / 1.5},
    {"per word at 50000, many-to-many", "at 500", 1 / 1.5},
    {"search expressions", "PCRE2 compiling", 8},
    {"search expressions", "PCRE2-JIT compiled once", 1},
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
    {"one back-reference", "100 ms", 1},
    {"load and sort a list", "std::sort", 4},
    {"search a list", "std::lower_bound", 1},
    {"read lines", "read and memchr", 0.9},
    {"uppercase", "toupper loop", 3},
    {"remove white space", "isspace loop", 3},
    {"write a sentence", "write(2)", 1 / 1.3},
    {"log a line", "write(2)", 1 / 1.5},
    {"start and end a program", "empty program", 1 / 1.5},
};

class Table : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &run : runs) {
      if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median") continue;
      const std::string name = run.run_name.function_name;
      const size_t slash = name.find('/');
      seconds_[name.substr(0, slash)][name.substr(slash + 1)] =
          run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
      std::fprintf(stderr, "%-50s %12.3f us\n", name.c_str(),
                   1e6 * seconds_[name.substr(0, slash)][name.substr(slash + 1)]);
    }
  }

  void print() const {
    std::printf("%-32s %-26s %12s %12s %8s %8s\n", "hot path", "beside", "klib us", "other us",
                "ratio", "goal");
    for (const Goal &goal : goals) {
      const auto path = seconds_.find(goal.path);
      if (path == seconds_.end()) continue;
      const auto own = path->second.find("klib"), other = path->second.find(goal.beside);
      if (own == path->second.end() || other == path->second.end()) continue;
      const double ratio = other->second / own->second;
      std::printf("%-32s %-26s %12.3f %12.3f %8.2f %8.2f%s\n", goal.path, goal.beside,
                  1e6 * own->second, 1e6 * other->second, ratio, goal.ratio,
                  ratio < goal.ratio ? "  missed" : "");
    }
  }

 private:
  std::map<std::string, std::map<std::string, double>> seconds_;
};

}  // namespace

int main(int argc, char **argv) {
  std::vector<char *> arguments(argv, argv + argc);
  char repetitions[] = "--benchmark_repetitions=5", least[] = "--benchmark_min_time=0.1";
  arguments.insert(arguments.begin() + 1, {repetitions, least});
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
  Table table;
  benchmark::RunSpecifiedBenchmarks(&table);
  table.print();
  benchmark::Shutdown();
  return 0;
}
