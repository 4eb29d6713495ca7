// The frame of the programs around Kmain_loop.
//
// The library finds the installed parameter file only through "LIB-DIRECTORY", whose built-in
// default belongs to another platform: the start hook replaces it, unless the command line did.
// An abort closes the log for the rest of the run and parameters of one job stay for the next, so
// each job opens the log again and ends with Kcleanup_parameters.
//
// The library knows groups of one to four names that do not begin with '-', of which the first
// leads to the parameter files. It gets such names; the job gets those of the command line. A first
// name without a three-character type, which can have no parameter file of its own, shares the one
// called after the program (kalign.par) in its directory.
#include "programs/common/program.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>

#include "programs/common/output_file.h"
#include "programs/frame/arguments.h"
#include "programs/frame/engine_parameters.h"
#include "programs/frame/job_files.h"
#include "programs/frame/parameter_files.h"
#include "programs/system/exhaustion.h"
#include "programs/system/temporary_files.h"

namespace klib::programs {
namespace {

constexpr const char *default_directory = "c:\\kavro\\dfmt";

// A run of a program.
struct Run {
  const char *program;
  const Arguments &arguments;
  size_t names_done = 0;
  bool is_ready = false;                              // what all jobs need was found
  int jobs = 0;                                       // that were begun
  bool language_given = false, target_given = false;  // in this job
  bool report_is_withheld = false;
  ParameterFilePlaces places = {};
  std::vector<std::string> parameter_files = {};  // that this job has read
};
constinit Run *run = nullptr;
constinit int ending_signal = 0;  // of the process's run, or 0

// While it lives, messages are also written for scripts.
struct ToScripts {
  explicit ToScripts(FILE *stream) { tell_scripts(stream); }
  ~ToScripts() { tell_scripts(nullptr); }
};

struct Running {
  explicit Running(Run &current) { run = &current; }
  ~Running() { run = nullptr; }
};

char *&text_parameter(TextParameter name) { return skparm[static_cast<int>(name) - 1]; }

// A standard stream that is closed must not become one of the files that are opened, or messages
// would go into results; a file that grows too large is an error to report like a full disk; and
// where the ends of processes are ignored, nobody could wait for them.
void prepare_process() {
  int descriptor;
  do descriptor = open("/dev/null", O_RDONLY);
  while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
  remove_temporary_files_on_signals();
}

// The directory of the running program with ../share/klib, or an empty text.
std::string share_directory_beside_program() {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  if (length < 0 && errno != ENOENT)
    fail("/proc/self/exe", 0, "cannot be read: %s", error_text(errno));
  if (length <= 0 || length == static_cast<ssize_t>(sizeof path)) return "";
  const std::string program(path, static_cast<size_t>(length));
  return program.substr(0, program.rfind('/')) + "/../share/klib";
}

void find_share_directory() {
  if (strcmp(parameter(TextParameter::lib_directory), default_directory) != 0) return;
  std::string found = share_directory_beside_program();
  if (!Kprobe_file((found + "/" + parameter(TextParameter::parameter_file_basename)).c_str()))
    found = KLIB_SHARE_DIRECTORY;
  set_parameter(TextParameter::lib_directory, found);
}

// Whether the program cannot go on; nothing is thrown through the library.
template <class Work>
void guarded(Work work) {
  try {
    work();
  } catch (const Failed &) {  // reported where it happened
  } catch (const std::bad_alloc &) {
    end_without_memory();
  }
}

// A language is empty while neither the command line nor a parameter file has set it.
void empty_languages_not_given() {
  for (const TextParameter name : {TextParameter::language, TextParameter::target_language}) {
    const char *argument = name == TextParameter::language ? "-LANGUAGE" : "-TARGET-LANGUAGE";
    bool given = false;
    for (size_t i = 0; i < run->arguments.parameters.size(); i += 2)
      given |= run->arguments.parameters[i] == argument;
    if (!given) set_parameter(name, "");
  }
}

void start() {
  if (!skparm) return;
  guarded([] {
    find_share_directory();
    run->places = {parameter(TextParameter::lib_directory),
                   parameter(TextParameter::parameter_file_basename)};
    empty_languages_not_given();
    run->is_ready = true;
  });
}

// Parameter files can set what the command line would have refused.
void check_parameters(const char *file) {
  for (const EngineParameter &row : engine_parameters()) {
    std::string value;
    if (row.least != INT32_MIN) {
      const NumberParameter name = strcmp(row.name, "KTI-START") == 0 ? NumberParameter::kti_start
                                                                      : NumberParameter::kti_step;
      value = std::to_string(parameter(name));
      const std::string fault = check_value(row, value);
      if (!fault.empty())
        fail(file, 0, "%s in the parameter files: '%s' %s", row.name, value.c_str(), fault.c_str());
    }
  }
  for (const TextParameter name : {TextParameter::language, TextParameter::target_language}) {
    const bool is_source = name == TextParameter::language;
    std::string value = parameter(name);
    (is_source ? run->language_given : run->target_given) = !value.empty();
    if (value.empty()) value = is_source ? "GERMAN" : "ENGLISH";
    const EngineParameter *row = find_parameter(is_source ? "LANGUAGE" : "TARGET-LANGUAGE");
    const std::string given = value, fault = check_value(*row, value);
    if (!fault.empty())
      fail(file, 0, "%s in the parameter files: '%s' is not a language", row->name, given.c_str());
    set_parameter(name, value);
  }
}

// The library has no other place for reports than the log that it could not open.
void check_log() {
  const char *path = parameter(TextParameter::log_pathname);
  if (parameter(NumberParameter::logging) == 0 || path[0] == '\0') return;
  const std::string name = with_type(path, "log");
  const std::unique_ptr<FILE, int (*)(FILE *)> log(fopen(name.c_str(), "ae"), fclose);
  if (!log) report(name.c_str(), 0, "cannot be written: %s", error_text(errno));
}

// The first name of a group as the library can take it.
std::string name_for_parameter_files(const char *program, const char *name) {
  const std::string given(name);
  if (has_type(given)) return given[0] == '-' ? std::string("./").append(given) : given;
  const size_t slash = given.rfind('/');
  return given.substr(0, slash == given.npos ? 0 : slash + 1) + program + ".par";
}

// One job, with the next names of the command line.
void do_job() {
  const Arguments &arguments = run->arguments;
  const std::span<const char *const> all(arguments.names);
  const bool takes_all = arguments.job->files == Job::any_files;
  const std::span<const char *const> names = all.subspan(
      run->names_done, takes_all ? all.size() : static_cast<size_t>(arguments.job->files));
  if (!skparm) return;  // no memory, from the beginning
  run->names_done += names.size();
  run->jobs++;
  const char *file = takes_all ? run->program : names[0];
  guarded([&] {
    if (!run->is_ready) return;
    check_own_outputs(std::vector<std::string>(names.begin(), names.end()), arguments.report);
    check_log();
    Kstart_logging_file(parameter(TextParameter::log_pathname));
    run->parameter_files = read_parameter_files(
        run->places, name_for_parameter_files(run->program, names.empty() ? "" : names[0]));
    check_parameters(file);
    if (!takes_all) check_font_groups(file);
    arguments.job->run(names);
  });
  clear_progress();
  Kcleanup_parameters();
}

// A function of `count` names for the main loop.
K_process_function process_function(size_t count) {
  using One = void (*)(char *);
  using Two = void (*)(char *, char *);
  using Three = void (*)(char *, char *, char *);
  using Four = void (*)(char *, char *, char *, char *);
  const auto any = [](auto function) {
    return reinterpret_cast<K_process_function>(reinterpret_cast<void (*)()>(function));
  };
  switch (count) {
    case 1:
      return any(One([](char *) { do_job(); }));
    case 2:
      return any(Two([](char *, char *) { do_job(); }));
    case 3:
      return any(Three([](char *, char *, char *) { do_job(); }));
    default:
      return any(Four([](char *, char *, char *, char *) { do_job(); }));
  }
}

// Runs all jobs through the main loop; returns how many there should have been.
int run_jobs(const Program &program, const Arguments &arguments) {
  const bool takes_all = arguments.job->files == Job::any_files;
  const size_t group = takes_all ? 1 : static_cast<size_t>(arguments.job->files);
  // The library ends the process when it has no memory, instead of doing without.
  std::vector<std::string> texts = {program.name, "-DEBUG", "1"};
  texts.insert(texts.end(), arguments.parameters.begin(), arguments.parameters.end());
  const size_t count = takes_all ? 1 : arguments.names.size();
  for (size_t i = 0; i < count; i++) {
    const char *name = i < arguments.names.size() ? arguments.names[i] : "";
    texts.push_back(i % group == 0 ? name_for_parameter_files(program.name, name) : name);
  }
  std::vector<char *> argv;
  argv.reserve(texts.size() + 1);
  for (std::string &text : texts) argv.push_back(text.data());
  argv.push_back(nullptr);
  Kmain_loop(static_cast<int32_t>(argv.size() - 1), argv.data(), program.name, nullptr,
             static_cast<int32_t>(group), process_function(group), start, nullptr);
  Kdestroy_kparm();
  return static_cast<int>(count / group);
}

// Runs the program with its records written to the file of --report.
void run_with_report(const Program &program, const Arguments &arguments) {
  Run current{program.name, arguments};
  const Running running(current);
  // The library opens the log before the first job.
  check_own_outputs(std::vector<std::string>(arguments.names.begin(), arguments.names.end()),
                    arguments.report);
  std::optional<OutputFile> file;
  if (arguments.report && strcmp(arguments.report, "-") != 0) file.emplace(arguments.report);
  const ToScripts to_scripts(!arguments.report ? nullptr : file ? file->stream() : stdout);
  const int jobs = run_jobs(program, arguments);
  if (current.jobs < jobs) end_without_memory();
  tell_scripts(nullptr);
  if (file && !current.report_is_withheld) file->finish(), file->publish();
  if (arguments.report && !file && (fflush(stdout) != 0 || ferror(stdout)))
    report("standard output", 0, "cannot be written: %s", error_text(errno));
}

}  // namespace

int run_program(const Program &program, int argc, char **argv) {
  prepare_process();
  ending_signal = 0;
  const EndsWithoutMemory ends(program.name);
  start_telling(program.name, false);
  Arguments arguments;
  guarded([&] {
    arguments.outcome = Arguments::bad;
    arguments = read_arguments(program, argc, argv);
    if (arguments.outcome != Arguments::run) return;
    start_telling(program.name, arguments.quiet);
    run_with_report(program, arguments);
  });
  tell_scripts(nullptr);
  clear_progress();
  if (ending_signal != 0) end_by_signal(ending_signal);
  return arguments.outcome == Arguments::bad || something_failed() ? 1 : 0;
}

void check_font_groups(const char *file) {
  for (const char *group : font_groups)
    if (find_named_font_group(group) < 0)
      fail(file, 0,
           "font group \"%s\" is not declared by the parameter files: is LIB-DIRECTORY %s?", group,
           parameter(TextParameter::lib_directory));
}

void set_parameter(TextParameter name, const std::string &value) {
  char *copy = string_copy(value.c_str());
  if (!copy) end_without_memory();
  Kfree(text_parameter(name));
  text_parameter(name) = copy;
}

const char *parameter(TextParameter name) { return text_parameter(name); }

int32_t parameter(NumberParameter name) { return kparm[static_cast<int>(name) - 1]; }

bool is_given(TextParameter language) {
  return run && (language == TextParameter::language ? run->language_given : run->target_given);
}

void end_run_by(int signal) { ending_signal = signal; }

std::vector<std::string> parameter_files() { return run->parameter_files; }

void withhold_report(const std::string &name) {
  run->report_is_withheld |= run->arguments.report && name == run->arguments.report;
}

std::vector<std::string> own_outputs() {
  std::vector<std::string> names;
  std::string log = skparm ? parameter(TextParameter::log_pathname) : "";
  for (size_t i = 0; !skparm && i < run->arguments.parameters.size(); i += 2)
    if (run->arguments.parameters[i] == "-LOG-PATHNAME") log = run->arguments.parameters[i + 1];
  if (!log.empty()) names.push_back(with_type(log.c_str(), "log"));
  if (run->arguments.report) names.push_back(run->arguments.report);
  return names;
}

bool has_type(std::string_view name) {
  name.remove_prefix(name.rfind('/') + 1);  // npos + 1 is 0
  return name.size() >= 5 && name[name.size() - 4] == '.';
}

std::string with_type(const char *name, const char *type) {
  std::string other(name);
  if (!has_type(other)) fail(name, 0, "the name must end in a dot and a three-character type");
  return other.replace(other.size() - 3, 3, type);
}

}  // namespace klib::programs
