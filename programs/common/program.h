// How a program is declared and run. A program is a table:
//
//     bool train;
//     const char *model;
//     constexpr Option options[] = {
//         {"train", nullptr, &train, "learn from the files"},
//         {"model", "FILE", &model, "what has been learned"},
//     };
//     void align(const char *source, const char *target) { ... }
//     constinit const Program kalign = {
//         .name = "kalign", .files = "SOURCE TARGET ...", .purpose = "Aligns ...\n",
//         .options = options, .job = job<align, 2>};
//
// and its main() is main.cpp. The frame reads the command line, prints --help and --version, runs
// one job after the other, reports what goes wrong, and returns the exit status.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "klib.h"
#include "programs/common/codes.h"
#include "programs/common/printable.h"
#include "programs/common/tell.h"

namespace klib::programs {

// The work of a program on one group of file names.
struct Job {
  static constexpr int32_t any_files = -1;
  int32_t files;  // of a group: 1 to 4, or any_files
  void (*run)(std::span<const char *const> names);
};

// job<extract, 2>: extract(const char *, const char *) is called for every two names on the command
// line. job<train, Job::any_files>: train(std::span<const char *const>) is called once with all
// names, which may be none and need no three-character type.
template <auto work, int32_t files>
inline constexpr Job job = {files, [](std::span<const char *const> names) {
                              if constexpr (files == Job::any_files)
                                work(names);
                              else
                                [names]<size_t... i>(std::index_sequence<i...>) {
                                  work(names[i]...);
                                }
                              (std::make_index_sequence<files>{});
                            }};

// A whole number with its default and its limits, which the frame checks.
struct NumberOption {
  int64_t *value;
  int64_t otherwise, least, most;
};

// An option of a program alone: --NAME, --NAME=VALUE or --NAME VALUE. Every place is reset when a
// program starts: to false, null, nothing, or the default.
struct Option {
  const char *name;   // without the dashes
  const char *value;  // as --help calls it; null: it takes none; "[KIND]": --NAME or --NAME=KIND;
                      // "SOURCE TARGET": two values, for a list
  std::variant<bool *, const char **, NumberOption, std::vector<const char *> *> place;
  const char *help;          // lines without the line feed at the end
  const Job *job = nullptr;  // what the program does instead of its usual job, if any
};

// A parameter of the engine that matters to the program: -NAME VALUE.
struct Parameter {
  const char *name, *value, *help;
};

struct Program {
  const char *name;
  const char *files;    // for --help: the file names, a line for each form of use
  const char *purpose;  // for --help: some lines, with the line feed at the end
  std::span<const Parameter> parameters = {};  // those that --help explains
  std::span<const Option> options = {};
  Job job = {};
};

// Each is run by a main() of its own (main.cpp).
extern const Program kalign, kextract, kcarry, kmerge, kshow, ktranslate;

// Runs the program and returns its exit status: 0 when everything went well. A process may run
// programs one after the other.
int run_program(const Program &program, int argc, char **argv);

// The value of a text parameter of the engine in this job, and of a number.
enum class TextParameter {
  lib_directory = 1,
  language = 2,
  target_language = 5,
  parameter_file_basename = 6,
  log_pathname = 19
};
enum class NumberParameter { kti_width = 1, kti_start = 16, kti_step = 17, logging = 31 };
const char *parameter(TextParameter name);
int32_t parameter(NumberParameter name);
void set_parameter(TextParameter name, const std::string &value);

// Whether the command line or a parameter file has set a language of this job.
bool is_given(TextParameter language);

// Ends the job (fail()) when the parameter files do not declare the font groups: fonts would be
// lost. Jobs of a fixed number of files begin with this.
void check_font_groups(const char *file);

// The parameter files that this job has read, and what it writes beside its results: the log and
// the file of --report.
std::vector<std::string> parameter_files();
std::vector<std::string> own_outputs();

// Lets the run end by a signal that was noted, after everything was reported and cleaned up.
void end_run_by(int signal);

// Leaves a file as it is at the end of the run if it is that of --report: a job uses it, too.
void withhold_report(const std::string &name);

// A text that the library has returned.
using Text = std::unique_ptr<char, void (*)(void *)>;

// Whether the name ends in a dot and a three-character type.
bool has_type(std::string_view name);

// The name with another three-character type in the place of its own; fail() when it has none.
std::string with_type(const char *name, const char *type);

}  // namespace klib::programs
