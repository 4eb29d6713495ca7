// The numbers are kept in a fixed table, since a signal's handler may not allocate. A process that
// forks leaves the helpers to the one that started them.
#include "programs/system/helper_processes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iterator>

namespace klib::programs {
namespace {

constinit pid_t helpers[most_helpers] = {};  // 0: free
constinit pid_t owner = 0;

void replace_first(pid_t before, pid_t after) {
  pid_t *place = std::find(helpers, std::end(helpers), before);
  if (place != std::end(helpers)) *place = after;
}

}  // namespace

void add_helper(pid_t process) {
  owner = getpid();
  replace_first(0, process);
}

void forget_helper(pid_t process) { replace_first(process, 0); }

void end_helpers() {
  if (owner != getpid()) return;
  for (const pid_t process : helpers)
    if (process > 0) kill(process, SIGKILL);
  for (pid_t &process : helpers) {
    while (process > 0 && waitpid(process, nullptr, 0) < 0 && errno == EINTR) continue;
    process = 0;
  }
}

}  // namespace klib::programs
