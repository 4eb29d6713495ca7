// Signals that ask a long run to end: it ends at the next safe place, where temporary files are
// removed and what is to be kept is saved, and then by that signal. Another one two seconds later
// ends it at once.
#pragma once

namespace klib::programs {

// While it lives, SIGINT, SIGTERM and SIGHUP are noted, and writing to a pipe that nobody reads is
// an error, not a signal.
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
