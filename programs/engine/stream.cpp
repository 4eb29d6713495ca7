// A command between two pipes. Neither end may block: the command can read everything before it
// answers, or answer before it reads, so one loop waits for whichever pipe is ready.
//
// When all lines are sent, the end of its input is held back for a moment: a command that ends
// before it has seen that end has stopped early, and its answers belong to the first lines.
#include "programs/engine/stream.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iterator>

#include "programs/system/exhaustion.h"

extern char **environ;

namespace klib::programs {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr size_t block_size = 65536;
constexpr milliseconds tick(100);

class Descriptor {
 public:
  Descriptor() = default;
  ~Descriptor() { reset(); }
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;
  void reset(int number = -1) {
    if (number_ >= 0) close(number_);
    number_ = number;
  }
  int get() const { return number_; }

 private:
  int number_ = -1;
};

// The signals that end a program end the command with it.
constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP};
volatile sig_atomic_t running_group = 0;
struct sigaction earlier_actions[std::size(ending_signals)];

void end_group_and_program(int signal) {
  const int error = errno;
  if (running_group > 0) kill(-static_cast<pid_t>(running_group), SIGTERM);
  for (size_t i = 0; i < std::size(ending_signals); i++)
    if (ending_signals[i] == signal) sigaction(signal, &earlier_actions[i], nullptr);
  raise(signal);  // takes effect when this handler returns
  errno = error;
}

// While it lives: signals reach the command, and a pipe without reader is an error, no signal.
struct SignalActions {
  struct sigaction pipe, child;

  SignalActions() {
    struct sigaction action = {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = SIG_DFL;  // an inherited SIG_IGN would take the status away
    sigaction(SIGCHLD, &action, &child);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, &pipe);
    action.sa_handler = end_group_and_program;
    for (size_t i = 0; i < std::size(ending_signals); i++) {
      sigaction(ending_signals[i], nullptr, &earlier_actions[i]);
      if (earlier_actions[i].sa_handler != SIG_IGN) sigaction(ending_signals[i], &action, nullptr);
    }
  }
  ~SignalActions() {
    for (size_t i = 0; i < std::size(ending_signals); i++)
      sigaction(ending_signals[i], &earlier_actions[i], nullptr);
    sigaction(SIGPIPE, &pipe, nullptr);
    sigaction(SIGCHLD, &child, nullptr);
  }
  SignalActions(const SignalActions &) = delete;
  SignalActions &operator=(const SignalActions &) = delete;
};

struct Stream {
  const StreamCommand &command;
  const std::function<bool(std::string &)> &next;
  const std::function<bool(std::string_view)> &take;
  SignalActions actions;
  Descriptor input, output;  // of the command
  pid_t process = -1;
  bool has_ended = false;  // its status is known
  int status = 0;
  bool was_over = false;  // it had ended in the last turn, with nothing to read
  bool all_is_sent = false;
  std::string outgoing, incoming;
  size_t written = 0;  // of outgoing
  int unread = -1;     // bytes in the command's input when they were last counted
  Clock::time_point moved_at = Clock::now();
  StreamEnd end;

  Stream(const StreamCommand &c, const std::function<bool(std::string &)> &n,
         const std::function<bool(std::string_view)> &t)
      : command(c), next(n), take(t) {}
  ~Stream();
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;
};

// Whether the process has ended; it stays a zombie, and its group's number taken, until `reap`.
bool look_for_end(Stream &stream) {
  if (stream.has_ended) return true;
  siginfo_t info = {};
  int result;
  do result = waitid(P_PID, static_cast<id_t>(stream.process), &info, WEXITED | WNOHANG | WNOWAIT);
  while (result < 0 && errno == EINTR);
  return result < 0 || info.si_pid != 0;
}

void reap(Stream &stream) {
  running_group = 0;
  pid_t result;
  do result = waitpid(stream.process, &stream.status, 0);
  while (result < 0 && errno == EINTR);
  stream.has_ended = true;
}

Stream::~Stream() {
  if (process < 0 || has_ended) return;
  input.reset();
  kill(-process, SIGTERM);
  for (int i = 0; i < 20 && !look_for_end(*this); i++) poll(nullptr, 0, 50);
  kill(-process, SIGKILL);
  reap(*this);
}

bool stop(Stream &stream, StreamEnd::Kind kind, std::string reason) {
  stream.end.kind = kind;
  stream.end.reason = std::move(reason);
  return false;
}

bool make_pipe(Descriptor &reading, Descriptor &writing) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  reading.reset(ends[0]);
  writing.reset(ends[1]);
  return true;
}

// Standard output and input of the child become the pipes, and its signals what they usually are.
int spawn(Stream &stream, int reading, int writing) {
  posix_spawn_file_actions_t files;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&files);
  int error = posix_spawn_file_actions_adddup2(&files, reading, STDIN_FILENO);
  if (error == 0) error = posix_spawn_file_actions_adddup2(&files, writing, STDOUT_FILENO);
  posix_spawnattr_init(&attributes);
  sigset_t all, none;
  sigfillset(&all);
  sigemptyset(&none);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setsigmask(&attributes, &none);
  std::string text = stream.command.command;
  char shell[] = "/bin/sh", option[] = "-c", end_of_options[] = "--";
  char *arguments[] = {shell, option, end_of_options, text.data(), nullptr};
  if (error == 0)
    error = posix_spawn(&stream.process, shell, &files, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return error;
}

bool start(Stream &stream) {
  Descriptor reading, writing;
  if (!make_pipe(reading, stream.input) || !make_pipe(stream.output, writing))
    return stop(stream, StreamEnd::not_started,
                std::string("cannot be started: ") + error_text(errno));
  const int error = spawn(stream, reading.get(), writing.get());
  if (error != 0) {
    stream.process = -1;
    return stop(stream, StreamEnd::not_started,
                std::string("cannot be started: ") + error_text(error));
  }
  running_group = stream.process;
  for (const int pipe : {stream.input.get(), stream.output.get()})
    fcntl(pipe, F_SETFL, fcntl(pipe, F_GETFL) | O_NONBLOCK);
  return true;
}

// Fills the block that goes out next; whole lines, and at least one of any length.
void fill(Stream &stream) {
  stream.outgoing.clear();
  stream.written = 0;
  std::string line;
  while (!stream.all_is_sent && stream.outgoing.size() < block_size) {
    line.clear();
    if (!stream.next(line)) {
      stream.all_is_sent = true;
      break;
    }
    stream.outgoing.append(line) += stream.command.line_end;
    stream.end.sent++;
  }
}

// Writes what the pipe takes. A command that has closed its input may still answer.
void send(Stream &stream) {
  if (stream.written == stream.outgoing.size()) fill(stream);
  if (stream.outgoing.empty()) return;
  const ssize_t count = write(stream.input.get(), stream.outgoing.data() + stream.written,
                              std::min(stream.outgoing.size() - stream.written, block_size));
  if (count > 0) {
    stream.written += static_cast<size_t>(count);
    stream.moved_at = Clock::now();
  } else if (count < 0 && errno != EAGAIN && errno != EINTR) {
    stream.input.reset();
  }
}

bool take_line(Stream &stream, std::string_view line) {
  if (stream.end.answered == stream.end.sent)
    return stop(stream, StreamEnd::too_many, "has answered more lines than it was sent");
  if (!stream.take(line)) return stop(stream, StreamEnd::refused, "");
  stream.end.answered++;
  return true;
}

// Takes the whole lines among what has come; what is left is the beginning of one.
bool take_lines(Stream &stream, size_t looked_at) {
  std::string &text = stream.incoming;
  size_t begin = 0;
  for (size_t end;
       (end = text.find(stream.command.line_end, std::max(begin, looked_at))) != text.npos;
       begin = end + 1)
    if (!take_line(stream, std::string_view(text).substr(begin, end - begin))) return false;
  text.erase(0, begin);
  if (text.size() > longest_answer)
    return stop(
        stream, StreamEnd::too_long,
        "has answered with a line of more than " + std::to_string(longest_answer >> 20) + " MiB");
  return true;
}

// Reads what is there; the output is closed at its end. False: the stream is over.
bool receive(Stream &stream) {
  char block[block_size];
  const ssize_t count = read(stream.output.get(), block, sizeof block);
  if (count > 0) {
    stream.moved_at = Clock::now();
    const size_t before = stream.incoming.size();
    stream.incoming.append(block, static_cast<size_t>(count));
    return take_lines(stream, before);
  }
  if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
    stream.output.reset();
    if (!stream.incoming.empty()) return take_line(stream, stream.incoming);
  }
  return true;
}

bool everything_is_written(const Stream &stream) {
  return stream.all_is_sent && stream.written == stream.outgoing.size();
}

// Closes the command's input when nothing is left to send, and either all is answered or the moment
// is over in which a command that does not wait for the end would have ended. The moment begins
// when the command has read everything.
void close_input_in_time(Stream &stream, Clock::duration quiet) {
  if (stream.input.get() < 0 || !everything_is_written(stream)) return;
  int unread = 0;
  if (ioctl(stream.input.get(), FIONREAD, &unread) == 0 && unread != stream.unread) {
    stream.unread = unread;
    stream.moved_at = Clock::now();
    quiet = {};
  }
  if (unread > 0 && stream.end.answered < stream.end.sent) return;
  if (stream.end.answered == stream.end.sent || quiet >= stream.command.end_is_held_back)
    stream.input.reset();
}

bool check_time(Stream &stream, Clock::duration quiet) {
  const std::chrono::seconds limit(stream.command.timeout);
  if (limit.count() == 0 || quiet < limit) return true;
  return stop(stream, StreamEnd::timed_out,
              "has not answered for " + std::to_string(limit.count()) +
                  (limit.count() == 1 ? " second" : " seconds"));
}

// Waits until a pipe is ready or a moment has passed, and does what can be done. False: the stream
// is over, with the reason in `end`.
bool turn(Stream &stream) {
  pollfd pipes[2] = {{stream.output.get(), POLLIN, 0},
                     {everything_is_written(stream) ? -1 : stream.input.get(), POLLOUT, 0}};
  const int ready = poll(pipes, 2, static_cast<int>(tick.count()));
  if (ready > 0 && pipes[0].revents != 0 && !receive(stream)) return false;
  if (ready > 0 && pipes[1].revents != 0) send(stream);
  const Clock::duration quiet = Clock::now() - stream.moved_at;
  close_input_in_time(stream, quiet);
  // A child of the command that lives on may hold its output open. What the command itself has
  // written is there before its end, so it is looked for once more after that.
  const bool is_over = ready == 0 && quiet >= tick && look_for_end(stream);
  if (is_over && stream.was_over) stream.output.reset();
  stream.was_over = is_over;
  return check_time(stream, quiet);
}

// Waits for the end of a command that has closed its output.
bool wait_for_end(Stream &stream) {
  while (!look_for_end(stream)) {
    poll(nullptr, 0, 10);
    const Clock::duration quiet = Clock::now() - stream.moved_at;
    close_input_in_time(stream, quiet);
    // Without output it cannot answer any more, so the rest is not sent.
    if (quiet >= stream.command.end_is_held_back) stream.input.reset();
    if (!check_time(stream, quiet)) return false;
  }
  return true;
}

// Why the command ended as it did, once its status is known.
void judge(Stream &stream, bool input_was_open) {
  const StreamEnd &end = stream.end;
  if (WIFSIGNALED(stream.status)) {
    const int signal = WTERMSIG(stream.status);
    stop(stream, StreamEnd::bad_status, std::string("was ended by a signal: ") + strsignal(signal));
  } else if (WEXITSTATUS(stream.status) != 0) {
    stop(stream, StreamEnd::bad_status,
         "ended with status " + std::to_string(WEXITSTATUS(stream.status)));
  } else if (input_was_open && (end.answered < end.sent || !stream.all_is_sent)) {
    stop(stream, StreamEnd::early, "ended before its input did");
  } else if (end.answered < end.sent) {
    stop(stream, StreamEnd::too_few,
         "has answered " + std::to_string(end.answered) + " lines, but was sent " +
             std::to_string(end.sent));
  }
}

}  // namespace

StreamEnd run_stream(const StreamCommand &command, const std::function<bool(std::string &)> &next,
                     const std::function<bool(std::string_view)> &take) {
  Stream stream(command, next, take);
  if (!start(stream)) return stream.end;
  fill(stream);
  bool going = true;
  while (going && stream.output.get() >= 0) going = turn(stream);
  const bool input_was_open = stream.input.get() >= 0 || !everything_is_written(stream);
  if (going) going = wait_for_end(stream);
  if (!going) return stream.end;
  reap(stream);
  judge(stream, input_was_open);
  return stream.end;
}

}  // namespace klib::programs
