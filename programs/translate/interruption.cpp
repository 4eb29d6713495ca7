#include "programs/translate/interruption.h"

#include <csignal>
#include <cstring>
#include <iterator>

#include "programs/common/tell.h"

namespace klib::programs {
namespace {

constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP};
volatile sig_atomic_t noted = 0;
struct sigaction earlier[std::size(signals)], earlier_pipe;

void note_signal(int signal) {
  if (noted != 0) {
    std::signal(signal, SIG_DFL);
    raise(signal);
  }
  noted = signal;
}

}  // namespace

Interruptible::Interruptible() {
  noted = 0;
  struct sigaction action = {};
  sigemptyset(&action.sa_mask);
  action.sa_handler = note_signal;  // no SA_RESTART: what waits is to look
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
  if (noted != 0) fail("ktranslate", 0, "interrupted: %s", strsignal(noted));
}

void ignore_interruptions() {
  for (const int signal : signals) std::signal(signal, SIG_IGN);
}

}  // namespace klib::programs
