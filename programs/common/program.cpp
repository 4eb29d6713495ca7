// The frame of the programs around Kmain_loop.
//
// The library finds the installed parameter file only through "LIB-DIRECTORY", whose built-in
// default belongs to another platform: the start hook replaces it, unless the command line did.
// An abort closes the log for the rest of the run and parameters of one job stay for the next, so
// each job opens the log again and ends with Kcleanup_parameters.
#include "programs/common/program.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

#include "programs/common/arguments.h"

namespace klib::programs {
namespace {

constexpr const char *default_directory = "c:\\kavro\\dfmt";
constexpr int lib_directory = 1, parameter_base_name = 6, log_path_name = 19;
constexpr int logging = 31;  // numeric parameter

struct State {
  const char *name = "";
  bool failed = false;         // something was reported that makes the exit status 1
  bool line_is_shown = false;  // a progress line stands on the terminal
  std::chrono::steady_clock::time_point shown_at;
};
constinit State state;

void clear_progress() {
  if (state.line_is_shown) fputs("\r\033[K", stderr);
  state.line_is_shown = false;
}

void print(const char *file, int64_t line, const char *format, va_list arguments) {
  clear_progress();
  if (line > 0)
    fprintf(stderr, "%s:%lld: ", file, static_cast<long long>(line));
  else
    fprintf(stderr, "%s: ", file);
  vfprintf(stderr, format, arguments);
  fputc('\n', stderr);
}

// A standard stream that is closed must not become one of the files that are opened, or messages
// would go into results; and a file that grows too large is an error to report like a full disk.
void prepare_process() {
  int descriptor;
  do descriptor = open("/dev/null", O_RDONLY);
  while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
  std::signal(SIGXFSZ, SIG_IGN);
}

// The directory of the running program with ../share/klib, or an empty text.
std::string share_directory_beside_program() {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0 || length == static_cast<ssize_t>(sizeof path)) return "";
  const std::string program(path, static_cast<size_t>(length));
  return program.substr(0, program.rfind('/')) + "/../share/klib";
}

void find_share_directory() {
  char *&directory = skparm[lib_directory - 1];
  if (strcmp(directory, default_directory) != 0) return;
  std::string found = share_directory_beside_program();
  if (!Kprobe_file((found + "/" + skparm[parameter_base_name - 1]).c_str()))
    found = KLIB_SHARE_DIRECTORY;
  Kfree(directory);
  directory = string_copy(found.c_str());
}

void check_font_groups(const char *file) {
  for (const char *group : font_groups)
    if (find_named_font_group(group) < 0)
      fail(file, 0,
           "font group \"%s\" is not declared by the parameter files: is LIB-DIRECTORY %s?", group,
           skparm[lib_directory - 1]);
}

// The library has no other place for reports than the log that it could not open.
void check_log() {
  const char *path = skparm[log_path_name - 1];
  if (kparm[logging - 1] == 0 || path[0] == '\0') return;
  const std::string name = with_type(path, "log");
  const std::unique_ptr<FILE, int (*)(FILE *)> log(fopen(name.c_str(), "ae"), fclose);
  if (!log) report(name.c_str(), 0, "cannot be written: %s", strerror(errno));
}

}  // namespace

int run_program(const Program &program, int argc, char **argv) {
  prepare_process();
  state = State{};
  state.name = program.name;
  const Arguments arguments = check_arguments(program, argc, argv);
  if (arguments != Arguments::good) return arguments == Arguments::help ? 0 : 1;
  Kmain_loop(argc, argv, program.name, nullptr, program.files, program.process,
             reinterpret_cast<K_hook>(find_share_directory), nullptr);
  Kdestroy_kparm();
  clear_progress();
  return state.failed ? 1 : 0;
}

void run_job(const char *file, void (*work)(char **names), char **names) {
  try {
    check_log();
    Kstart_logging_file(skparm[log_path_name - 1]);
    check_font_groups(file);
    work(names);
  } catch (const Failed &) {  // reported where it happened
  } catch (const std::bad_alloc &) {
    report(file, 0, "not enough memory");
  }
  clear_progress();
  Kcleanup_parameters();
}

void note(const char *file, int64_t line, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  print(file, line, format, arguments);
  va_end(arguments);
}

void report(const char *file, int64_t line, const char *format, ...) {
  state.failed = true;
  va_list arguments;
  va_start(arguments, format);
  print(file, line, format, arguments);
  va_end(arguments);
}

void fail(const char *file, int64_t line, const char *format, ...) {
  state.failed = true;
  va_list arguments;
  va_start(arguments, format);
  print(file, line, format, arguments);
  va_end(arguments);
  throw Failed{};
}

std::string with_type(const char *name, const char *type) {
  const Text text(Knew_type(name, type, 0), Kfree);
  if (!text) fail(name, 0, "the name must end in a dot and a three-character type");
  return text.get();
}

std::string readable(std::string_view bytes) {
  constexpr const char *digits = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    if (c >= ' ' && c <= '~')
      text += c;
    else
      text += {'{', digits[(c >> 4) & 0xF], digits[c & 0xF], '}'};
  }
  return text;
}

void show_progress(int64_t sentences) {
  if (sentences % 256 != 0 || !isatty(STDERR_FILENO)) return;
  const auto now = std::chrono::steady_clock::now();
  if (now - state.shown_at < std::chrono::milliseconds(200)) return;
  state.shown_at = now;
  state.line_is_shown = true;
  fprintf(stderr, "\r%s: %lld sentences", state.name, static_cast<long long>(sentences));
}

}  // namespace klib::programs
