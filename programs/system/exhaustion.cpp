// The message is written without any allocation.
#include "programs/system/exhaustion.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>

#include "programs/system/temporary_files.h"

namespace klib::programs {
namespace {

constinit const char *program_name = "";
constinit std::new_handler earlier_handler = nullptr;
struct sigaction earlier_abort;

void write_text(const char *text) {
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, strlen(text));
}

void end_after_abort(int) { end_without_memory(); }

}  // namespace

void end_without_memory() {
  write_text(program_name);
  write_text(": not enough memory\n");
  remove_all_temporary_files();
  _exit(1);
}

EndsWithoutMemory::EndsWithoutMemory(const char *program) {
  program_name = program;
  earlier_handler = std::set_new_handler(end_without_memory);
  sigaction(SIGABRT, nullptr, &earlier_abort);
  if (earlier_abort.sa_handler != SIG_DFL) return;
  struct sigaction action = {};
  action.sa_handler = end_after_abort;
  sigaction(SIGABRT, &action, nullptr);
}

EndsWithoutMemory::~EndsWithoutMemory() {
  std::set_new_handler(earlier_handler);
  sigaction(SIGABRT, &earlier_abort, nullptr);
}

const char *error_text(int error) {
  return error == ENOMEM ? "not enough memory" : strerror(error);
}

}  // namespace klib::programs
