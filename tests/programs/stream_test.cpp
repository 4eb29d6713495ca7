// Commands that are fed as a stream: good ones, however they buffer, and every kind of bad one.
#include "programs/engine/stream.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <string>

namespace klib::programs {
namespace {

constexpr const char *kinds[] = {"good",       "not started", "early",    "too few", "too many",
                                 "bad status", "timed out",   "too long", "refused"};

// Sends `lines` numbered lines and shows how it ended, with the answers if they are few.
std::string run(const std::string &command, int lines, int timeout,
                std::chrono::milliseconds held_back) {
  int sent = 0;
  std::string answers;
  const StreamEnd end = run_stream(
      {command, timeout, '\n', held_back},
      [&](std::string &line) {
        line = "line " + std::to_string(sent);
        return sent++ < lines;
      },
      [&](std::string_view line) {
        answers.append(line).append("/");
        return true;
      });
  std::string shown = std::string(kinds[end.kind]) + " " + std::to_string(end.answered);
  if (!end.reason.empty()) shown += ": " + end.reason;
  return answers.size() < 100 ? shown + " [" + answers + "]" : shown;
}

TEST(Stream, Commands) {
  static const struct {
    const char *question, *command;
    int lines, timeout;
    const char *result;
  } rows[] = {
      {"as they come", "cat", 3, 20, "good 3 [line 0/line 1/line 2/]"},
      {"nothing to do", "cat", 0, 20, "good 0 []"},
      {"empty answers", "sed 's/.*//'", 3, 20, "good 3 [///]"},
      {"the last line end is missing", "printf 'a\\nb'; cat >/dev/null", 2, 20, "good 2 [a/b/]"},
      {"more than the pipes hold", "cat", 200000, 20, "good 200000"},
      {"everything at the end", "tac | tac", 200000, 20, "good 200000"},
      {"answers more before it reads", "seq 3; cat >/dev/null", 2, 20,
       "too many 2: has answered more lines than it was sent [1/2/]"},
      {"its input closed, the answers good", "exec <&-; seq 3", 3, 20, "good 3 [1/2/3/]"},
      {"a child lives on with its output", "cat; sleep 5 2>&- &", 2, 20, "good 2 [line 0/line 1/]"},
      {"begins with a dash", "-c", 1, 20, "bad status 0: ended with status 127 []"},
      {"not found", "exec /nonexistent", 1, 20, "bad status 0: ended with status 127 []"},
      {"a status at the end", "cat; exit 3", 2, 20,
       "bad status 2: ended with status 3 [line 0/line 1/]"},
      {"a signal", "head -n 1; kill -9 $$", 9, 20,
       "bad status 1: was ended by a signal: Killed [line 0/]"},
      {"stops early", "head -n 2", 5, 20, "early 2: ended before its input did [line 0/line 1/]"},
      {"stops early, far from the end", "head -n 2", 500000, 20,
       "early 2: ended before its input did [line 0/line 1/]"},
      {"drops a line", "grep -v 1", 3, 20,
       "too few 2: has answered 2 lines, but was sent 3 [line 0/line 2/]"},
      {"adds a line", "cat; echo more", 2, 20,
       "too many 2: has answered more lines than it was sent [line 0/line 1/]"},
      {"answers without end", "yes", 2, 20,
       "too many 2: has answered more lines than it was sent [y/y/]"},
      {"one line without end", "tr '\\n' ' ' </dev/zero", 1, 20,
       "too long 0: has answered with a line of more than 64 MiB []"},
      {"hangs", "head -n 1; sleep 1000", 2, 3,
       "timed out 1: has not answered for 3 seconds [line 0/]"},
      {"hangs with closed pipes", "exec <&- >&-; sleep 1000", 2, 1,
       "timed out 0: has not answered for 1 second []"},
      {"hangs, deaf to signals", "trap '' TERM INT HUP; cat; sleep 1000", 2, 3,
       "timed out 2: has not answered for 3 seconds [line 0/line 1/]"},
      {"may write into a broken pipe", "(yes | head -n 1); cat >/dev/null", 1, 20, "good 1 [y/]"},
  };
  for (const auto &[question, command, lines, timeout, result] : rows) {
    SCOPED_TRACE(question);
    // A busy machine may not let a command end in the usual moment.
    const bool is_early = std::string(result).starts_with("early");
    const std::chrono::milliseconds held_back(is_early ? 15000 : 500);
    EXPECT_EQ(run(command, lines, timeout, held_back), result);
  }
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST(Stream, BytesComeBack) {
  std::string big(5 << 20, 'x');
  const std::string lines[] = {std::string("a\0b", 3), "\xFF\x80\r", "", big};
  size_t sent = 0, received = 0;
  const StreamEnd end = run_stream(
      {"cat", 20},
      [&](std::string &line) {
        if (sent == std::size(lines)) return false;
        line = lines[sent++];
        return true;
      },
      [&](std::string_view line) { return line == lines[received++]; });
  EXPECT_EQ(end.kind, StreamEnd::good) << end.reason << " at " << received;
  EXPECT_EQ(received, 4u);
}

// With an engine that buffers nothing, memory does not grow with the number of lines.
TEST(Stream, LittleMemory) {
  rusage before, after;
  getrusage(RUSAGE_SELF, &before);
  int sent = 0;
  const std::string text(1000, 'x');
  const StreamEnd end = run_stream(
      {"cat", 20}, [&](std::string &line) { return line = text, sent++ < 100000; },
      [](std::string_view) { return true; });
  getrusage(RUSAGE_SELF, &after);
  EXPECT_EQ(end.answered, 100000);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 20000) << "kB";
}

TEST(Stream, RefusedAnswerEndsIt) {
  const auto started = std::chrono::steady_clock::now();
  const StreamEnd end = run_stream(
      {"yes", 20}, [](std::string &) { return true; }, [](std::string_view) { return false; });
  EXPECT_EQ(end.kind, StreamEnd::refused);
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
}

TEST(Stream, AnInterruptedProgramTakesItsCommandAlong) {
  const std::string note = testing::TempDir() + "stream_test." + std::to_string(getpid());
  const pid_t program = fork();
  if (program == 0) {
    run_stream(
        {"sleep 1000 & echo $! >" + note + "; wait", 0}, [](std::string &) { return false; },
        [](std::string_view) { return true; });
    _exit(0);
  }
  pid_t child = 0;
  for (int i = 0; i < 200 && child == 0; i++) {
    usleep(20000);
    std::ifstream(note) >> child;
  }
  ASSERT_GT(child, 0);
  kill(program, SIGTERM);
  int status = 0;
  waitpid(program, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
  int result = 0;
  for (int i = 0; i < 100 && result == 0; i++) usleep(20000), result = kill(child, 0);
  EXPECT_EQ(result, -1) << "the command's child lives on";
  unlink(note.c_str());
}

}  // namespace
}  // namespace klib::programs
