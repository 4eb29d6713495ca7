// Counts the allocations of this process, so that a benchmark can say how many a call makes.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

namespace klib::bench {

// Calls of malloc, calloc and realloc since the process began.
[[nodiscard]] int64_t allocations();

// While it lives, counts for a benchmark, each of whose iterations makes this many calls of what is
// measured. The table shows the time and the allocations of one call.
class CountedCalls {
 public:
  explicit CountedCalls(benchmark::State &state, size_t calls = 1)
      : state_(state), calls_(calls), before_(allocations()) {}
  ~CountedCalls() {
    const auto all = static_cast<double>(calls_) * static_cast<double>(state_.iterations());
    state_.counters["allocations"] = static_cast<double>(allocations() - before_) / all;
    state_.counters["calls"] = static_cast<double>(calls_);
  }
  CountedCalls(const CountedCalls &) = delete;

 private:
  benchmark::State &state_;
  size_t calls_;
  int64_t before_;
};

}  // namespace klib::bench
