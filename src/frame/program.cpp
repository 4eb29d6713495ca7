// The life of a program: start, the main loop over groups of file names, the end with the run time,
// and the one abort path, which reports, closes the log and returns.
//
// Parameters are read at the moment they are needed, since a group's parameter files may change
// them.

#include "frame/program.h"

#include <algorithm>
#include <ctime>

#include "frame/memory.h"
#include "frame/messages.h"
#include "frame/resets.h"
#include "klib.h"
#include "parameters/parameters.h"
#include "platform/platform.h"

namespace klib::program {

namespace {

using parameters::Number;
using parameters::Text;

struct State {
  const char *program_name = nullptr;  // the caller's text
  time_t start_time = 0;               // meaningful once it was taken
  bool start_time_taken = false;
};
constinit State state;

bool is_set(Number parameter) { return parameters::number(parameter) != 0; }

void report_run_time() {
  if (!is_set(Number::time_prog) || !state.start_time_taken) return;
  const time_t end_time = platform::calls.now();
  const auto seconds = static_cast<long>(end_time - state.start_time);
  Kmessage(MESSAGE_RUN_TIME, std::max(seconds, 1L));
}

// Returns the index of the first file name.
int32_t init_program(int32_t argc, char **argv, const char *program_name, const char *catalog) {
  state = State{};  // the name and the start time of an earlier run are not this one's
  Ksourcecode_defaults_for_parms(parameters::start_directory);
  const int32_t first = argc != 0 ? Kparse_command_arguments(argc, argv) : 0;
  if (is_set(Number::logging)) Kstart_logging_file(parameters::text(Text::log_pathname));
  if (is_set(Number::time_prog) && program_name != nullptr) {
    state.start_time = platform::calls.now();
    state.start_time_taken = true;
  }
  if (is_set(Number::use_nls)) open_message_catalog(catalog);
  state.program_name = program_name;
  if (is_set(Number::show_start_end_abort) && program_name != nullptr)
    Kmessage(MESSAGE_PROGRAM_STARTED, program_name);
  return first;
}

// Calls the processing function with `count` separate file names; false when there are too many.
bool call_process(K_process_function process, int32_t count, char **names) {
  using Text0 = void (*)();
  using Text1 = void (*)(char *);
  using Text2 = void (*)(char *, char *);
  using Text3 = void (*)(char *, char *, char *);
  using Text4 = void (*)(char *, char *, char *, char *);
  switch (count) {
    case 0:
      reinterpret_cast<Text0>(process)();
      return true;
    case 1:
      reinterpret_cast<Text1>(process)(names[0]);
      return true;
    case 2:
      reinterpret_cast<Text2>(process)(names[0], names[1]);
      return true;
    case 3:
      reinterpret_cast<Text3>(process)(names[0], names[1], names[2]);
      return true;
    case 4:
      reinterpret_cast<Text4>(process)(names[0], names[1], names[2], names[3]);
      return true;
    default:
      return false;
  }
}

// Processes one group of file names; false when the loop is to stop.
bool process_group(int32_t count, char **names, int32_t names_left, K_process_function process) {
  if (count > names_left) {
    Kusage(1, count);
    return false;
  }
  for (int32_t i = 0; i < count; ++i) Kprocess(names[i]);
  Kinit_parameters();
  Kread_all_parameter_files(names[0]);
  if (call_process(process, count, names)) return true;
  Kdisplay(MESSAGE_TOO_MANY_FILES_PER_CALL);
  Kabort_prog();
  return false;
}

}  // namespace

const char *name() { return state.program_name; }

void reset() { state = State{}; }

}  // namespace klib::program

// Exported names

using namespace klib;
using namespace klib::program;

void Kmain_loop(int32_t argc, char **argv, const char *program_name, const char *catalog,
                int32_t files_per_call, K_process_function process, K_hook start_hook,
                K_hook end_hook) {
  int32_t first = init_program(argc, argv, program_name, catalog);
  if (start_hook != nullptr) start_hook();
  // A program that takes no file names is called once for each of them, so that the loop advances.
  const int32_t step = std::max(files_per_call, 1);
  while (first < argc && process_group(files_per_call, argv + first, argc - first, process))
    first += step;
  if (end_hook != nullptr) end_hook();
  Kend_prog();
}

int32_t Kstart_prog(const char *directory, const char *language) {
  const std::string_view start = parameters::start_of_language(language);
  initCT(language);
  memory::guarded([&] {
    // Copied, since the language may be a text of the tables that are replaced.
    const memory::Text kept = memory::copy(start);
    Ksourcecode_defaults_for_parms(directory);
    parameters::store_language(kept.get());
  });
  return 0;
}

void Kend_prog() {
  report_run_time();
  if (is_set(Number::use_nls)) close_message_catalog();
  if (is_set(Number::logging)) Kstop_logging_file();
}

void Kabort_prog() {
  if (is_set(Number::show_start_end_abort)) {
    if (state.program_name != nullptr)
      Kmessage(MESSAGE_NAMED_PROGRAM_ABORTED, state.program_name);
    else
      Kmessage(MESSAGE_PROGRAM_ABORTED);
  }
  report_run_time();
  if (is_set(Number::logging)) Kstop_logging_file();
  if (is_set(Number::use_nls)) close_message_catalog();
}

void Kprocess(const char *file_name) {
  if (is_set(Number::show_filename)) Kmessage(MESSAGE_PROCESSING_FILE, file_name);
}
