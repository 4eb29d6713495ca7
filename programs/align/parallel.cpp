// Threads take the next part from a common counter until there are no more.
#include "programs/align/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace klib::programs::align {

void in_parallel(int jobs, size_t parts, const std::function<void(size_t part, int worker)> &work) {
  std::atomic<size_t> next = 0;
  std::vector<std::exception_ptr> errors(static_cast<size_t>(std::max(jobs, 1)));
  const auto run = [&](int worker) noexcept {
    try {
      for (size_t part; (part = next++) < parts;) work(part, worker);
    } catch (...) {
      errors[static_cast<size_t>(worker)] = std::current_exception();
      next = parts;
    }
  };
  std::vector<std::thread> threads;
  threads.reserve(errors.size());
  try {
    for (int worker = 1; worker < jobs && static_cast<size_t>(worker) < parts; worker++)
      threads.emplace_back(run, worker);
  } catch (const std::system_error &) {
    // Those that run do the work.
  } catch (...) {
    errors[0] = std::current_exception();
    next = parts;
  }
  run(0);
  for (std::thread &thread : threads) thread.join();
  for (const std::exception_ptr &error : errors)
    if (error) std::rethrow_exception(error);
}

}  // namespace klib::programs::align
