// Starting and ending a whole program, with and without the library's frame.

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>

extern char **environ;

namespace {

void run(benchmark::State &state, const char *program) {
  for (auto _ : state) {
    char *arguments[] = {const_cast<char *>(program), nullptr};
    pid_t child;
    int status = 0;
    if (posix_spawn(&child, program, nullptr, nullptr, arguments, environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0)
      state.SkipWithError("the program did not run");
  }
}
BENCHMARK_CAPTURE(run, frame, FRAME_PROGRAM)->Name("start and end a program/klib")->UseRealTime();
BENCHMARK_CAPTURE(run, empty, EMPTY_PROGRAM)
    ->Name("start and end a program/empty program")
    ->UseRealTime();

}  // namespace
