// Memory, messages, the abort hook, the log and the life of a program.

#include <cstdarg>
#include <functional>
#include <vector>

#include "frame/memory.h"
#include "frame/messages.h"
#include "parameters/parameters.h"
#include "platform/platform.h"
#include "tests/support.h"

namespace klib::test {

namespace {

using parameters::Number;

void set(Number parameter, int32_t value) { kparm[parameters::combined(parameter) - 1] = value; }

class Frame : public Library {};

// Memory

TEST_F(Frame, ReportsAllocationsOfNothingAndOnlyThose) {
  EXPECT_EQ(Kmalloc(0), nullptr);
  EXPECT_EQ(log(), "Internal error. Allocating 0 bytes of memory.\n");
  Kfree(nullptr);
  Kfree(Kcalloc(0, 4));
  Kfree(Kcalloc(4, 0));
  EXPECT_EQ(string_copy(nullptr), nullptr);
  EXPECT_EQ(take(string_copy("")), "");
  EXPECT_EQ(log(), "");
}

TEST_F(Frame, ReportsExhaustedMemoryAndAborts) {
  const std::string report = "NO MORE MEMORY!\nProgram aborted.\n";
  void *block = Kmalloc(1);
  const std::vector<std::pair<const char *, std::function<void *()>>> operations = {
      {"Kmalloc", [] { return Kmalloc(8); }},
      {"Kcalloc", [] { return Kcalloc(2, 4); }},
      {"Krealloc", [&] { return Krealloc(block, 8); }},
      {"string_copy", [] { return static_cast<void *>(string_copy("text")); }},
  };
  for (const auto &[name, operation] : operations) {
    {
      FailingAllocation first(1);
      EXPECT_EQ(operation(), nullptr) << name;
    }
    EXPECT_EQ(log(), report) << name;
  }
  Kfree(block);
  EXPECT_EQ(Kcalloc(0x10000, 0x10000), nullptr) << "a product beyond 32 bits does not wrap";
  EXPECT_EQ(log(), report);
}

TEST_F(Frame, EndsTheProcessWhenMemoryIsExhaustedUnderDebug) {
  static int ended = 0;
  platform::calls.end_process = [] { ++ended; };
  set(Number::debug, 1);
  FailingAllocation first(1);
  EXPECT_EQ(Kmalloc(8), nullptr);
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(read_file("test.log").substr(18),
            "NO MORE MEMORY!\n" + read_file("test.log").substr(34, 18) +
                "Dumping core for debugging purpose...Program aborted.\n");
}

TEST_F(Frame, BufferGrowsAndHandsItsTextOver) {
  memory::Buffer buffer;
  EXPECT_STREQ(buffer.text(), "");
  for (int i = 0; i < 1000; ++i) buffer.append("ab");
  buffer.append('\0');
  buffer.append("c");
  EXPECT_EQ(buffer.size(), 2002u);
  buffer.truncate(3);
  EXPECT_EQ(take(buffer.detach()), "aba");
  EXPECT_EQ(take(buffer.detach()), "") << "an empty buffer is an empty text";
}

// Messages

TEST_F(Frame, CutsMessagesThatDoNotFit) {
  for (const size_t length : {2046u, 2047u, 2048u, 5000u}) {
    const std::string text(length, 'x');
    Kmessage(1, 2, "%s", text.c_str());
    EXPECT_EQ(log(), text.substr(0, 2047)) << length;
    Kdisplay("\n");
    log();
  }
  Kdisplay("%s%d\n", "%s%n", 7);
  EXPECT_EQ(log(), "%s%n7\n") << "an argument is never a format";
}

TEST_F(Frame, AnswersForItsVersionAndCatalogue) {
  char version[6], date[25];
  klib_get_info(version, date);
  EXPECT_STREQ(version, "0.005");
  EXPECT_STREQ(date, "Fri May  9 12:53:26 2003");
  const char *text = "text";
  EXPECT_EQ(Msg(1, 2, text), text);
  open_message_catalog("catalogue");
  close_message_catalog();
  Kexplain_error(7);
  Kread_char_types();
  Kdestroy_char_types(1.5, "any");
}

// The abort hook

std::string handed_on;

int32_t note_arguments(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  char text[500];
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  handed_on = text;
  return 42;
}

TEST_F(Frame, AbortHookGetsTheVeryArguments) {
  const char *format = "%d %g %s %d %d %d %d %g %g %g %g %g %g %g %g %g %d %s";
  const auto call = [&] {
    return abort_function(format, 1, 0.5, "a", 2, 3, 4, 5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8.5,
                          9.5, 6, "end");
  };
  EXPECT_EQ(call(), 0);
  set_abort_function(reinterpret_cast<K_abort_function>(note_arguments));
  EXPECT_EQ(call(), 42);
  EXPECT_EQ(handed_on, "1 0.5 a 2 3 4 5 1.5 2.5 3.5 4.5 5.5 6.5 7.5 8.5 9.5 6 end");
  set_abort_function(nullptr);
  EXPECT_EQ(call(), 0);
}

// The log

TEST_F(Frame, StampsEachLineAtItsFirstByte) {
  static time_t now;
  now = 1047027903;  // 2003-03-07 09:05:03 UTC
  platform::calls.now = [] { return now; };
  platform::calls.local_time = [](time_t time, tm *local) {
    return gmtime_r(&time, local) != nullptr;
  };
  Klogging("a");
  now += 60;
  Klogging("b\n\nc\n");
  Klogging("");
  Klogging("d");
  Kstop_logging_file();
  Klogging("lost\n");
  Kstart_logging_file("test.xyz");
  Klogging("e\n");
  EXPECT_EQ(read_file("test.log"),
            "03/03/07 09:05:03 ab\n\n03/03/07 09:06:03 c\n03/03/07 09:06:03 de\n");
}

TEST_F(Frame, LogFollowsTheParameterLogging) {
  set(Number::logging, 0);
  Klogging("still written\n");
  Kstop_logging_file();
  Klogging("not stopped\n");
  Kstart_logging_file("other.log");
  set(Number::logging, 1);
  EXPECT_EQ(log(), "still written\nnot stopped\n");
  EXPECT_EQ(Kprobe_file("other.log"), 0);
}

TEST_F(Frame, ANewLogClosesTheOldOneAndABadOneAborts) {
  Kstart_logging_file("second.log");
  Klogging("to the second\n");
  EXPECT_EQ(read_file("second.log").substr(18), "to the second\n");
  Kstart_logging_file("");
  Kstart_logging_file("x.l");
  EXPECT_EQ(read_file("second.log").substr(32 + 18),
            "The filename 'x.l' is not long enough to give it type 'log'.\n" +
                read_file("second.log").substr(32, 18) + "Program aborted.\n");
}

// The main loop

std::string calls;

void process0() { calls += "()"; }
void process1(char *a) { calls += std::string("(") + a + ")"; }
void process2(char *a, char *b) { calls += std::string("(") + a + "," + b + ")"; }
void process4(char *a, char *b, char *c, char *d) {
  calls += std::string("(") + a + "," + b + "," + c + "," + d + ")";
}
void start_hook() { calls += "<"; }
void end_hook() { calls += ">"; }

template <class Function>
std::string run(std::vector<std::string> arguments, int32_t files_per_call, Function *process) {
  std::vector<char *> argv;
  arguments.insert(arguments.begin(), "path/of/program");
  for (std::string &argument : arguments) argv.push_back(argument.data());
  calls.clear();
  Kmain_loop(static_cast<int32_t>(argv.size()), argv.data(), "prog", "catalogue", files_per_call,
             reinterpret_cast<K_process_function>(process), start_hook, end_hook);
  return calls;
}

TEST_F(Frame, MainLoopCallsOncePerGroup) {
  EXPECT_EQ(run({}, 1, process1), "<>");
  EXPECT_EQ(run({"-LOGGING", "0"}, 1, process1), "<>");
  EXPECT_EQ(run({"a.txt", "-b.txt"}, 1, process1), "<(a.txt)(-b.txt)>");
  EXPECT_EQ(run({"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"}, 2, process2),
            "<(a.txt,b.txt)(c.txt,d.txt)>");
  EXPECT_EQ(run({"a.txt", "b.txt", "c.txt", "d.txt"}, 4, process4), "<(a.txt,b.txt,c.txt,d.txt)>");
  EXPECT_EQ(run({"a.txt", "b.txt"}, 0, process0), "<()()>");
  for (const int32_t count : {5, 2147483647, -1, INT32_MIN})
    EXPECT_EQ(run({"a.txt", "b.txt"}, count, process1), "<>") << count;
}

TEST_F(Frame, MainLoopReportsItsRun) {
  const auto messages = [&](std::vector<std::string> arguments, int32_t count) {
    arguments.insert(arguments.begin(), {"-LOG-PATHNAME", directory_ + "/test.log"});
    run(arguments, count, process2);
    return log();
  };
  Kstop_logging_file();
  EXPECT_EQ(messages({"-SHOW-FILENAME", "1", "a.txt", "b.txt", "c.txt"}, 2),
            "Program 'prog' started.\n"
            "Processing file 'a.txt'.\n"
            "Processing file 'b.txt'.\n"
            "Usage: prog [-parameter value] ... filename ...\n"
            "The number of supplied filenames is not a multiple of 2.\n"
            "Program 'prog' aborted.\n");
  EXPECT_EQ(messages({"-TIME-PROG", "1", "-SHOW-START-END-ABORT", "0"}, 2), "Run time:    1 sec\n");
  run(
      {"-LOG-PATHNAME", directory_ + "/test.log", "a.txt"}, 1,
      +[](char *) { set(Number::time_prog, 1); });
  EXPECT_EQ(log(), "Program 'prog' started.\n") << "the earlier run's start time is over";
  EXPECT_EQ(messages({"a.txt"}, -1),
            "Program 'prog' started.\n"
            "Main loop cannot handle more than 4 parameters.\n"
            "Program 'prog' aborted.\n");
}

// A parameter file takes effect from its group on, except for the names of the group itself; the
// run time needs a name; an abort closes the log after the last message.
TEST_F(Frame, KeepsTheOrderOfARun) {
  write_file("a.par", "\x96SHOW-FILENAME=1\n");
  std::vector<std::string> arguments = {
      "p", "-LOG-PATHNAME", directory_ + "/test.log", "-TIME-PROG", "1", "a.txt", "b.txt"};
  const auto run = [&](const char *program_name, K_process_function process) {
    std::vector<char *> argv;
    for (std::string &argument : arguments) argv.push_back(argument.data());
    Kstop_logging_file();
    Kmain_loop(static_cast<int32_t>(argv.size()), argv.data(), program_name, "", 1, process,
               nullptr, nullptr);
    return log();
  };
  const auto process = reinterpret_cast<K_process_function>(+[](char *) {});
  EXPECT_EQ(run(nullptr, process), "Processing file 'b.txt'.\n");
  arguments.pop_back();
  EXPECT_EQ(run("prog", reinterpret_cast<K_process_function>(+[](char *) { Kabort_prog(); })),
            "Program 'prog' started.\nProgram 'prog' aborted.\nRun time:    1 sec\n");
}

TEST_F(Frame, StartsAProgramWithoutTheLoop) {
  EXPECT_EQ(Kstart_prog("/data/", "GERMAN-ENGLISH"), 0);
  EXPECT_STREQ(text_of("LIB-DIRECTORY"), "/data/dfmt");
  EXPECT_STREQ(text_of("LANGUAGE"), "GERMAN");
  text_of("DIRECTION")[0] = 'X';
  EXPECT_EQ(Kstart_prog(text_of("LIB-DIRECTORY"), text_of("DIRECTION")), 0)
      << "texts of the old tables may be passed";
  EXPECT_STREQ(text_of("LIB-DIRECTORY"), "/data/dfmtdfmt");
  EXPECT_STREQ(text_of("LANGUAGE"), "XERMAN");
  EXPECT_EQ(Kstart_prog("", "RU"), 0);
  EXPECT_STREQ(text_of("LANGUAGE"), "RU");
  EXPECT_EQ(cprops(0xA8), 0x80040000u);
  Kend_prog();
  Kdestroy_kparm();
  Kabort_prog();  // as if every parameter had its default
  EXPECT_EQ(parameters::number(Number::kti_width), 999999);
}

}  // namespace

}  // namespace klib::test
