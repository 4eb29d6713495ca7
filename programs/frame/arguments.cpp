// The library takes parameters before file names only, and reports what is wrong into a log that is
// not open yet; so the command line is read and checked here, and the library gets what it knows.
#include "programs/frame/arguments.h"

#include <charconv>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "programs/frame/engine_parameters.h"
#include "programs/frame/help.h"

namespace klib::programs {
namespace {

// What is being read.
struct Reading {
  const Program &program;
  int argc;
  char **argv;
  Arguments arguments;
  int next = 1;  // of the arguments
};

// Reports what is wrong with the arguments, in any bytes.
KLIB_PRINTF(2, 3) bool bad(const Reading &reading, const char *format, ...) {
  char message[512];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(message, sizeof message, format, arguments);
  va_end(arguments);
  fprintf(stderr, "%s: %s\nTry '%s --help'.\n", reading.program.name, printable(message).c_str(),
          reading.program.name);
  return false;
}

// What is wrong with a value may have lines of its own.
bool bad_value(const Reading &reading, const char *argument, const char *value,
               const std::string &fault) {
  fprintf(stderr, "%s: %s: '%s' %s\n", reading.program.name, argument, printable(value).c_str(),
          fault.c_str());
  if (fault.find('\n') == fault.npos) fprintf(stderr, "Try '%s --help'.\n", reading.program.name);
  return false;
}

bool store_number(const Reading &reading, const Option &option, const char *value) {
  const NumberOption &place = std::get<NumberOption>(option.place);
  const char *end = value + strlen(value);
  const auto result = std::from_chars(value, end, *place.value);
  if (result.ec == std::errc() && result.ptr == end && *place.value >= place.least &&
      *place.value <= place.most)
    return true;
  return bad(reading, "--%s: '%s' is not a whole number from %lld to %lld", option.name, value,
             static_cast<long long>(place.least), static_cast<long long>(place.most));
}

bool store(Reading &reading, const Option &option, const char *value) {
  if (option.job) reading.arguments.job = option.job;
  if (std::holds_alternative<bool *>(option.place))
    *std::get<bool *>(option.place) = true;
  else if (std::holds_alternative<const char **>(option.place))
    *std::get<const char **>(option.place) = value;
  else if (std::holds_alternative<NumberOption>(option.place))
    return store_number(reading, option, value);
  else
    std::get<std::vector<const char *> *>(option.place)->push_back(value);
  return true;
}

void reset(const Option &option) {
  if (std::holds_alternative<bool *>(option.place))
    *std::get<bool *>(option.place) = false;
  else if (std::holds_alternative<const char **>(option.place))
    *std::get<const char **>(option.place) = nullptr;
  else if (std::holds_alternative<NumberOption>(option.place))
    *std::get<NumberOption>(option.place).value = std::get<NumberOption>(option.place).otherwise;
  else
    std::get<std::vector<const char *> *>(option.place)->clear();
}

const Option *find_option(std::span<const Option> options, std::string_view name) {
  for (const Option &option : options)
    if (name == option.name) return &option;
  return nullptr;
}

// Reads "--NAME", "--NAME=VALUE" or "--NAME" "VALUE".
bool read_option(Reading &reading, std::span<const Option> common) {
  const char *argument = reading.argv[reading.next++];
  const char *equals = strchr(argument, '=');
  const std::string name = equals ? std::string(argument + 2, equals) : std::string(argument + 2);
  const Option *option = find_option(reading.program.options, name);
  if (!option) option = find_option(common, name);
  if (!option) return bad(reading, "unknown option: --%s", name.c_str());
  const bool may_be_left_out = option->value && option->value[0] == '[';
  const char *value = equals ? equals + 1 : "";
  if (!option->value && equals) return bad(reading, "--%s takes no value", name.c_str());
  if (option->value && !may_be_left_out && !equals) {
    if (reading.next == reading.argc) return bad(reading, "a value is missing after %s", argument);
    value = reading.argv[reading.next++];
  }
  if (!store(reading, *option, value)) return false;
  if (!option->value || !strchr(option->value, ' ')) return true;
  if (reading.next == reading.argc) return bad(reading, "two values must follow %s", argument);
  return store(reading, *option, reading.argv[reading.next++]);
}

bool read_parameter(Reading &reading) {
  const char *argument = reading.argv[reading.next++];
  const EngineParameter *parameter = find_parameter(argument + 1);
  if (!parameter) return bad(reading, "unknown parameter: %s", argument);
  if (reading.next == reading.argc) return bad(reading, "a value is missing after %s", argument);
  reading.arguments.parameters.emplace_back(argument);
  reading.arguments.parameters.emplace_back(reading.argv[reading.next++]);
  return true;
}

// Values are looked at when all arguments have been read, so that --help always helps.
bool check_values(Reading &reading) {
  std::vector<std::string> &parameters = reading.arguments.parameters;
  for (size_t i = 0; i < parameters.size(); i += 2) {
    const std::string given = parameters[i + 1];
    const std::string fault =
        check_value(*find_parameter(parameters[i].c_str() + 1), parameters[i + 1]);
    if (!fault.empty()) return bad_value(reading, parameters[i].c_str(), given.c_str(), fault);
  }
  return true;
}

bool check_names(const Reading &reading) {
  const std::vector<const char *> &names = reading.arguments.names;
  const int32_t files = reading.arguments.job->files;
  for (const char *name : names)
    if (name[0] == '\0') return bad(reading, "a file name is empty");
  for (const char *name : names)
    if (strlen(name) >= PATH_MAX)
      return bad(reading, "a file name has %zu bytes, too many", strlen(name));
  if (files == Job::any_files) return true;
  const auto group = static_cast<size_t>(files);
  if (names.empty()) return bad(reading, "no file names");
  if (names.size() % group != 0)
    return bad(reading, "%zu file name%s, but each job takes %zu", names.size(),
               names.size() == 1 ? "" : "s", group);
  for (size_t i = 0; i < names.size(); i += group)
    if (!has_type(names[i]) && strcmp(names[i], "-") != 0)
      return bad(reading, "the name must end in a dot and a three-character type: %s", names[i]);
  return true;
}

bool read_all(Reading &reading, std::span<const Option> common, const bool &help,
              const bool &version) {
  bool only_names = false;
  while (reading.next < reading.argc) {
    const std::string_view argument = reading.argv[reading.next];
    if (only_names || argument == "-" || !argument.starts_with('-')) {
      reading.arguments.names.push_back(reading.argv[reading.next++]);
    } else if (argument == "--") {
      only_names = true;
      reading.next++;
    } else if (argument == "-h") {
      reading.next = reading.argc;
      return print_help(reading.program, common);
    } else if (!(argument.starts_with("--") ? read_option(reading, common)
                                            : read_parameter(reading))) {
      return false;
    }
    if (help) return print_help(reading.program, common);
    if (version) return print_version(reading.program);
  }
  return check_values(reading) && check_names(reading);
}

}  // namespace

Arguments read_arguments(const Program &program, int argc, char **argv) {
  Reading reading{program, argc, argv, {}};
  Arguments &arguments = reading.arguments;
  arguments.job = &program.job;
  bool help = false, version = false;
  const Option common[] = {
      {"report", "FILE", &arguments.report,
       "write the messages and totals to FILE as lines of JSON"},
      {"quiet", nullptr, &arguments.quiet, "print problems only"},
      {"help", nullptr, &help, "print this text"},
      {"version", nullptr, &version, "print the version"},
  };
  for (const Option &option : program.options) reset(option);
  const bool good = read_all(reading, common, help, version);
  arguments.outcome = !good ? Arguments::bad : help || version ? Arguments::done : Arguments::run;
  return arguments;
}

}  // namespace klib::programs
