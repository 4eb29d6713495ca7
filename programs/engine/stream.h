// A command that is fed lines and answers each with a line, as one stream.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace klib::programs {

struct StreamCommand {
  std::string command;  // for sh -c
  int timeout = 0;      // seconds in which nothing moves that end the command; 0: none
  // What ends a line, on both ways: a byte that no line contains.
  char line_end = '\n';
  // How long its input stays open after it has read everything: ending meanwhile is stopping early.
  std::chrono::milliseconds end_is_held_back{500};
};

// How a command ended.
struct StreamEnd {
  enum Kind {
    good,         // status 0, as many answers as lines
    not_started,  // there was no process, no pipe
    early,        // it ended or closed its output before its input ended
    too_few,      // it read to the end of its input and answered too few lines
    too_many,     // it answered more lines than it was sent
    bad_status,   // it ended with a status other than 0 or by a signal
    timed_out,
    too_long,  // a line of more than longest_answer bytes
    refused    // `take` returned false
  };
  Kind kind = good;
  int64_t sent = 0;      // lines
  int64_t answered = 0;  // lines
  std::string reason;    // for people: "ended with status 3"; empty when good

  // The first answers are known to belong to the first lines. That holds for a command that stopped
  // on its way. When a line is missing or extra at the end of everything, nobody can say which
  // one is missing, or which does not belong there.
  bool answers_are_in_order() const { return kind != too_few && kind != too_many; }
};

constexpr size_t longest_answer = size_t{64} << 20;

// Starts the command and sends it lines until `next` returns false, while its answers go to `take`
// in order, without their line end. Holds no more than the line that is being sent and the one that
// is being read, whatever the command buffers. The command's standard error is the caller's.
// A command that has not ended by itself when this returns is ended, with all its children that
// stayed in its process group. SIGINT, SIGTERM and SIGHUP end it, too, before they do what they did
// without it.
//
// A last answer without line end counts. What `next` and `take` throw passes through.
StreamEnd run_stream(const StreamCommand &command, const std::function<bool(std::string &)> &next,
                     const std::function<bool(std::string_view)> &take);

}  // namespace klib::programs
