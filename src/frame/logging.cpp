// The log file, the library's only output for messages.
//
// Every non-empty line begins with the local date and time at which its first byte was written:
//
//     03/03/07 09:05:03 Program 'align' started.
//
// A line ends only where a message contains a line feed, so the next message continues one without.
// The file is opened for appending and flushed after every message.

#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include "frame/memory.h"
#include "frame/resets.h"
#include "klib.h"
#include "parameters/parameters.h"
#include "platform/platform.h"

namespace klib::logging {

namespace {

constexpr size_t stamp_length = sizeof "yy/mm/dd hh:mm:ss " - 1;

struct State {
  FILE *log_file = nullptr;   // null while no log is active
  bool at_line_start = true;  // kept across stopping and starting
  time_t stamped_second = 0;  // the second that `stamp` shows, once it shows one
  char stamp[stamp_length + 1] = "";
};
constinit State state;

std::string_view time_stamp() {
  const time_t now = platform::calls.now();
  if (now != state.stamped_second || state.stamp[0] == '\0') {
    tm local{};
    platform::calls.local_time(now, &local);
    const auto put = [](size_t at, int value, char end) {
      state.stamp[at] = static_cast<char>('0' + value / 10 % 10);
      state.stamp[at + 1] = static_cast<char>('0' + value % 10);
      state.stamp[at + 2] = end;
    };
    put(0, (local.tm_year + 1900) % 100, '/');
    put(3, local.tm_mon + 1, '/');
    put(6, local.tm_mday, ' ');
    put(9, local.tm_hour, ':');
    put(12, local.tm_min, ':');
    put(15, local.tm_sec, ' ');
    state.stamped_second = now;
  }
  return {state.stamp, stamp_length};
}

void write(std::string_view bytes) {
  platform::calls.write_stream(bytes.data(), bytes.size(), state.log_file);
}

void close_log() { Kfclose(std::exchange(state.log_file, nullptr), 0); }

}  // namespace

void reset() {
  if (state.log_file != nullptr) close_log();
  state = State{};
}

}  // namespace klib::logging

// Exported names

using namespace klib;
using namespace klib::logging;

void Kstart_logging_file(const char *path) {
  if (parameters::number(parameters::Number::logging) == 0 || path[0] == '\0') return;
  const memory::Text log_name(Knew_type(path, "log", 0));
  if (!log_name) return;
  FILE *log_file = Kfopen(log_name.get(), platform::append_text);
  if (log_file == nullptr) return;
  // A failure to close the old log is reported in the new one.
  FILE *const old_log = std::exchange(state.log_file, log_file);
  if (old_log != nullptr) Kfclose(old_log, 0);
}

void Kstop_logging_file() {
  if (parameters::number(parameters::Number::logging) == 0 || state.log_file == nullptr) return;
  close_log();
}

void Klogging(const char *message) {
  if (state.log_file == nullptr) return;
  for (std::string_view rest = message; !rest.empty();) {
    const size_t line_feed = rest.find('\n');
    const bool ends = line_feed != std::string_view::npos;
    const std::string_view line = rest.substr(0, ends ? line_feed + 1 : rest.size());
    if (state.at_line_start && line.front() != '\n') write(time_stamp());
    write(line);
    state.at_line_start = ends;
    rest.remove_prefix(line.size());
  }
  std::fflush(state.log_file);
}
