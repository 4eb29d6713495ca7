#include "programs/translate/interruption.h"

#include <csignal>
#include <cstring>
#include <ctime>
#include <iterator>

#include "programs/common/program.h"
#include "programs/system/temporary_files.h"

namespace klib::programs {
namespace {

constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP};
volatile sig_atomic_t noted = 0;
struct sigaction earlier[std::size(signals)], earlier_pipe;

volatile time_t noted_at = 0;

// One signal may come twice, to the process and to its group.
void note_signal(int signal) {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  if (noted == 0) {
    noted_at = now.tv_sec;
  } else if (now.tv_sec - noted_at >= 2) {
    end_by_signal(signal);
  }
  noted = signal;
}

}  // namespace

Interruptible::Interruptible() {
  noted = 0;
  struct sigaction action = {};
  sigemptyset(&action.sa_mask);
  action.sa_handler = note_signal;  // no SA_RESTART: calls that wait must return
  for (size_t i = 0; i < std::size(signals); i++) {
    sigaction(signals[i], nullptr, &earlier[i]);
    if (earlier[i].sa_handler != SIG_IGN) sigaction(signals[i], &action, nullptr);
  }
  action.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &action, &earlier_pipe);
}

Interruptible::~Interruptible() {
  for (size_t i = 0; i < std::size(signals); i++) sigaction(signals[i], &earlier[i], nullptr);
  sigaction(SIGPIPE, &earlier_pipe, nullptr);
}

bool is_interrupted() { return noted != 0; }

void end_if_interrupted() {
  if (noted == 0) return;
  end_run_by(noted);
  fail("ktranslate", 0, "interrupted: %s", strsignal(noted));
}

void end_at_interruptions() {
  for (size_t i = 0; i < std::size(signals); i++)
    if (earlier[i].sa_handler != SIG_IGN) std::signal(signals[i], SIG_DFL);
}

}  // namespace klib::programs
