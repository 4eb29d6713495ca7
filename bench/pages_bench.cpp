// Whole programs on one page of 2,000 paragraphs, and kextract on one of 20, in their processor
// time: kextract, kmerge and kshow compared with programs that read the same page for other
// purposes. All of them are started again for every run.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "bench/inputs.h"

extern char **environ;

namespace klib::bench {

namespace {

constexpr size_t paragraphs = 2000, short_paragraphs = 20;

using Command = std::vector<std::string>;

// The processor time of the program in seconds, negative when it fails. Its output is discarded.
double run(const Command &command) {
  std::vector<char *> arguments;
  for (const std::string &part : command) arguments.push_back(const_cast<char *>(part.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child;
  const int failed =
      posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage{};
  if (failed != 0 || ::wait4(child, &status, 0, &usage) != child || status != 0) return -1;
  const auto seconds = [](const timeval &time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

const std::string &page() {
  static const std::string path = make_file("page.html", make_page(paragraphs));
  return path;
}
const std::string &short_page() {
  static const std::string path = make_file("short.html", make_page(short_paragraphs));
  return path;
}
std::string job(const char *type) { return temporary_file(std::string("job.") + type); }
std::string program(const char *name) { return std::string(PROGRAMS) + "/" + name; }

Command extract() { return {program("kextract"), "-LANGUAGE", "ENGLISH", job("kti"), page()}; }
Command extract_short() {
  return {program("kextract"), "-LANGUAGE", "ENGLISH", temporary_file("short.kti"), short_page()};
}

void time_program(benchmark::State &state, const Command &command) {
  static const bool extracted = run(extract()) >= 0;
  if (!extracted) return state.SkipWithError("the page was not taken apart");
  for (auto _ : state) {
    const double seconds = run(command);
    if (seconds < 0) return state.SkipWithError("the program failed");
    state.SetIterationTime(seconds);
  }
}

bool is_there(const std::string &name) { return std::filesystem::exists(name); }

const bool registered = [] {
  const auto add = [](const std::string &name, const Command &command) {
    benchmark::RegisterBenchmark(name.c_str(), time_program, command)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  };
  add("take a page apart/klib", extract());
  add("take a short page apart/klib", extract_short());
  add("put a page together/klib", {program("kmerge"), "-LANGUAGE", "ENGLISH", job("kti"),
                                   job("anc"), temporary_file("result.html")});
  add("show a sentence file/klib", {program("kshow"), "-LANGUAGE", "ENGLISH", job("kti")});
  const Command xmllint = {"/usr/bin/xmllint", "--html", "--noout", page()};
  if (is_there(xmllint[0])) {
    for (const char *path : {"take a page apart", "put a page together", "show a sentence file"})
      add(std::string(path) + "/xmllint", xmllint);
    add("take a short page apart/xmllint", {"/usr/bin/xmllint", "--html", "--noout", short_page()});
  }
  if (is_there("/usr/bin/apertium-deshtml")) {
    const std::string blanked = temporary_file("deformatted");
    add("take a page apart/apertium-deshtml", {"/usr/bin/apertium-deshtml", page(), blanked});
    add("take a short page apart/apertium-deshtml",
        {"/usr/bin/apertium-deshtml", short_page(), temporary_file("short")});
    run({"/usr/bin/apertium-deshtml", page(), blanked});
    add("put a page together/apertium-rehtml",
        {"/usr/bin/apertium-rehtml", blanked, temporary_file("reformatted")});
  }
#ifdef GUMBO_PROGRAM
  add("take a page apart/gumbo", {GUMBO_PROGRAM, page()});
  add("take a short page apart/gumbo", {GUMBO_PROGRAM, short_page()});
#endif
  return true;
}();

}  // namespace

}  // namespace klib::bench
