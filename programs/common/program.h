// What the four programs share: arguments checked before the main loop, one job after the other
// inside it, reports on standard error, the exit status.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "klib.h"
#include "programs/common/codes.h"

namespace klib::programs {

struct Program {
  const char *name;
  const char *usage;  // what -h prints, complete
  int32_t files;      // file names of one job
  K_process_function process;
};

// Each is run by a main() of its own (main.cpp).
extern const Program kextract, kcarry, kmerge, kshow;

// Thrown by fail() and caught by run_job(): the job is over.
struct Failed {};

// Runs the program through Kmain_loop and gives its exit status: 0 when everything went well. A
// process may run programs one after the other.
int run_program(const Program &program, int argc, char **argv);

// The value for Program::process: the main loop calls it with `files` names.
template <typename... Names>
K_process_function process_function(void (*process)(Names...)) {
  return reinterpret_cast<K_process_function>(reinterpret_cast<void (*)()>(process));
}

// One job: opens the log again, makes sure that the font groups are declared, runs `work` and
// cleans the parameters up, whatever happened.
void run_job(const char *file, void (*work)(char **names), char **names);

// "FILE:LINE: message" on standard error; line 0 leaves the line out. report() and fail() make the
// exit status 1, and fail() ends the job; note() only tells.
void note(const char *file, int64_t line, const char *format, ...) KLIB_PRINTF(3, 4);
void report(const char *file, int64_t line, const char *format, ...) KLIB_PRINTF(3, 4);
[[noreturn]] void fail(const char *file, int64_t line, const char *format, ...) KLIB_PRINTF(3, 4);

// A text that the library has handed out.
using Text = std::unique_ptr<char, void (*)(void *)>;

// The name with another three-character type in the place of its own; fail() when it has none.
std::string with_type(const char *name, const char *type);

// Bytes for people: printing ASCII as it is, others as {9D}.
std::string readable(std::string_view bytes);

// Shows on a terminal's standard error how far the job is; call it as often as you like.
void show_progress(int64_t sentences);

}  // namespace klib::programs
