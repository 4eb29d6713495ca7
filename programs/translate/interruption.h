// Signals that ask a long run to end: it ends at the next good place, where temporary files are
// removed and what is kept is saved, and then by that signal. Another one two seconds later ends it
// at once.
#pragma once

namespace klib::programs {

// While it lives SIGINT, SIGTERM and SIGHUP are noted, and nobody to read what is
// written is an error, no signal.
class Interruptible {
 public:
  Interruptible();
  ~Interruptible();
  Interruptible(const Interruptible &) = delete;
  Interruptible &operator=(const Interruptible &) = delete;
};

bool is_interrupted();

// Ends the job (fail()) when a signal has come.
void end_if_interrupted();

// For a process that works for the run: a signal simply ends it.
void end_at_interruptions();

}  // namespace klib::programs
