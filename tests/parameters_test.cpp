// Parameter values, their lookups, the save slot and the command line.

#include <algorithm>
#include <vector>

#include "frame/memory.h"
#include "parameters/definitions.h"
#include "parameters/parameters.h"
#include "programs/common/program.h"
#include "tests/support.h"

namespace klib::test {

namespace {

using parameters::combined, parameters::Number, parameters::Text;

class Parameters : public Library {};

// The programs see the public header only, so they number the parameters that they read themselves.
consteval bool is(programs::TextParameter number, std::string_view name) {
  return static_cast<int32_t>(number) == parameters::textual(name);
}
consteval bool is(programs::NumberParameter number, std::string_view name) {
  return static_cast<int32_t>(number) == parameters::numeric(name);
}
static_assert(is(programs::TextParameter::lib_directory, "LIB-DIRECTORY"));
static_assert(is(programs::TextParameter::language, "LANGUAGE"));
static_assert(is(programs::TextParameter::target_language, "TARGET-LANGUAGE"));
static_assert(is(programs::TextParameter::parameter_file_basename, "PARAMETER-FILE-BASENAME"));
static_assert(is(programs::TextParameter::log_pathname, "LOG-PATHNAME"));
static_assert(is(programs::NumberParameter::kti_width, "KTI-WIDTH"));
static_assert(is(programs::NumberParameter::kti_start, "KTI-START"));
static_assert(is(programs::NumberParameter::kti_step, "KTI-STEP"));
static_assert(is(programs::NumberParameter::logging, "LOGGING"));

TEST_F(Parameters, StartAtTheirDefaults) {
  EXPECT_EQ(number_of("KTI-WIDTH"), 999999);
  EXPECT_EQ(number_of("TAB-WIDTH"), 8);
  EXPECT_EQ(number_of("ALIGN-QUALITY"), 170);
  EXPECT_STREQ(text_of("LIB-DIRECTORY"), "c:\\kavro\\dfmt");
  EXPECT_STREQ(text_of("PARAMETER-FILE-BASENAME"), "KavroParm");
  EXPECT_STREQ(text_of("BIN-DIRECTORY"), "");
  Ksourcecode_defaults_for_parms(text_of("LIB-DIRECTORY"));
  EXPECT_STREQ(text_of("LIB-DIRECTORY"), "c:\\kavro\\dfmtdfmt")
      << "a text of the old tables may be passed";
}

TEST_F(Parameters, AreFoundByTheirWholeName) {
  constexpr int32_t texts = parameters::numeric_count;  // text N is the combined number texts + N
  static const struct {
    const char *name;
    int32_t number, type;
  } rows[] = {
      {"LOGGING", 31, 0x24},
      {"LIB-DIRECTORY", texts + 1, 0x24},
      {"PC-EXDIR", texts + 38, 0x04},
      {"LEFT-MARGIN", 13, 0x21},
      {"", 19, 0x24},
      {"COLOR", 63, 0x24},
      {"logging", -1, 0},
      {"LOG", -1, 0},
      {"LOGGING ", -1, 0},
      {"INTERLEAF2", 62, 0x04},
      {"FONT", texts + 16, 0x31},
      {"DIRECTION", texts + 22, 0x04},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(parameters::parameter_number(row.name), row.number) << row.name;
    EXPECT_EQ(parameters::parameter_type(row.number), row.type) << row.name;
  }
  log();
  std::string reports;
  for (const int32_t number : {0, texts + parameters::text_count + 1, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(parameters::parameter_type(number), 0) << number;
    reports += "Cannot get parameter type of parameter " + std::to_string(number) + ".\n";
  }
  EXPECT_EQ(log(), reports);
}

TEST_F(Parameters, ReadNumbersFromTheStartOfAText) {
  static const struct {
    const char *text;
    int32_t value;
  } rows[] = {
      {"7", 7},
      {" \t\n\v\f\r+12x", 12},
      {"-5", -5},
      {"", 0},
      {"x1", 0},
      {"- 1", 0},
      {"0x10", 0},
      {"2147483647", INT32_MAX},
      {"--1", 0},
      {"1e3", 1},
      {"2147483648", INT32_MAX},
      {"-99999999999999999999", INT32_MIN},
  };
  for (const auto &row : rows) {
    parameters::store_parameter_value(combined(Number::kti_width), row.text);
    EXPECT_EQ(number_of("KTI-WIDTH"), row.value) << row.text;
  }
}

TEST_F(Parameters, SaveSlotBringsBackTheValuesSavedLast) {
  Krestore_parameter_values();  // an empty slot changes nothing
  EXPECT_EQ(number_of("TAB-WIDTH"), 8);
  number_of("TAB-WIDTH") = 4;
  Ksave_parameter_values();
  number_of("TAB-WIDTH") = 5;
  parameters::store_parameter_value(combined(Text::lib_directory), "five");
  Ksave_parameter_values();
  number_of("TAB-WIDTH") = 6;
  parameters::store_parameter_value(combined(Text::lib_directory), "six");
  Kdestroy_kparm();
  Ksave_parameter_values();
  Krestore_parameter_values();  // no tables: the slot stays filled, with the defaults
  Ksourcecode_defaults_for_parms("x");
  number_of("TAB-WIDTH") = 7;
  Krestore_parameter_values();
  EXPECT_EQ(number_of("TAB-WIDTH"), 8);
  Ksave_parameter_values();
  number_of("TAB-WIDTH") = 9;
  parameters::store_parameter_value(combined(Text::lib_directory), "nine");
  Krestore_parameter_values();
  EXPECT_EQ(number_of("TAB-WIDTH"), 8);
  EXPECT_STREQ(text_of("LIB-DIRECTORY"), "c:\\kavro\\dfmt");
  number_of("TAB-WIDTH") = 10;
  Krestore_parameter_values();
  EXPECT_EQ(number_of("TAB-WIDTH"), 10);
}

TEST_F(Parameters, LanguageAndDirectionDecideTheLanguageFlag) {
  const auto flag_after = [](int32_t number, std::string value) {
    EXPECT_EQ(parameters::set_parameter(number, value.data()), 0);
    return number_of("");
  };
  constexpr int32_t language = combined(Text::language), direction = combined(Text::direction);
  static const struct {
    int32_t number;
    const char *value;
    int32_t flag;
    const char *source;
  } rows[] = {
      {language, "ENGLISH", 0, "GERMAN"},
      {language, "NOLANGUAGE", 1, "GERMAN"},
      {language, "FRENCH", 0, "GERMAN"},
      {language, "NULL", 1, "GERMAN"},
      {language, "", 1, "GERMAN"},
      {language, "DUTCH", 0, "GERMAN"},
      {direction, "DUTCH-GERMAN-ENGLISH", 1, "DUTCH"},
      {direction, "-GERMAN", 0, ""},
      {direction, "GERMAN", 0, "GERMAN"},
      {language, "GERMAN", 1, "GERMAN"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(flag_after(row.number, row.value), row.flag) << row.value;
    EXPECT_STREQ(text_of("SOURCE-LANGUAGE"), row.source) << row.value;
  }
  EXPECT_STREQ(text_of("DIRECTION"), "GERMAN");
  number_of("") = 7;
  EXPECT_EQ(flag_after(combined(Text::language), "GERMAN"), 7)
      << "the current language again changes nothing";
  number_of("ALL-LANGUAGES") = 1;
  EXPECT_EQ(flag_after(combined(Text::language), "DUTCH"), 1)
      << "all languages count as the source language";
}

// The command line

struct CommandLine {
  std::vector<std::string> arguments;
  int32_t first;
  std::string assigned;  // "NAME=value" of what differs from the defaults
  bool usage;
};

std::string differences() {
  std::string result;
  for (const auto &row : parameters::numeric_definitions)
    if (kparm[row.number - 1] != row.default_value)
      result += std::string(row.name) + "=" + std::to_string(kparm[row.number - 1]) + " ";
  for (const auto &row : parameters::text_definitions)
    if (skparm[row.number - 1] != std::string(row.default_value))
      result += std::string(row.name) + "=" + skparm[row.number - 1] + " ";
  return result;
}

TEST_F(Parameters, CommandLineAssignsUpToTheFirstFileName) {
  const std::vector<CommandLine> rows = {
      {{}, 1, "", false},
      {{"-LOGGING", "2", "a.txt"}, 3, "LOGGING=2 ", false},
      {{"a.txt", "-LOGGING", "0"}, 1, "", false},
      {{"-logging", "1", "a.txt"}, 2, "", true},
      {{"-LOG", "1"}, 2, "", true},
      {{"-bad", "-LOGGING", "3", "x"}, 4, "LOGGING=3 ", true},
      {{"-LEFT-MARGIN", "-5"}, 3, "LEFT-MARGIN=-5 ", false},
      {{"-", "7"}, 3, "=7 ", false},
      {{"-FONT",
        "a\xFF"
        "b",
        "-LANGUAGE", "ENGLISH"},
       5,
       "LANGUAGE=ENGLISH FONT=a\xFF"
       "b ",
       false},
      {{"-LOGGING", "2", "-TASK"}, 4, "LOGGING=2 ", true},
      {{"-TASK", "", ""}, 3, "", false},
  };
  for (CommandLine row : rows) {
    std::vector<char *> argv = {nullptr};  // the program's own path is never read
    for (std::string &argument : row.arguments) argv.push_back(argument.data());
    Ksourcecode_defaults_for_parms("c:\\kavro\\");
    const auto argc = static_cast<int32_t>(argv.size());
    const std::string name = ::testing::PrintToString(row.arguments);
    EXPECT_EQ(Kparse_command_arguments(argc, argv.data()), row.first) << name;
    EXPECT_EQ(differences(), row.assigned) << name;
    EXPECT_EQ(log().find("Usage:") != std::string::npos, row.usage) << name;
  }
  for (const int32_t argc : {1, 0, -1, INT32_MIN})
    EXPECT_EQ(Kparse_command_arguments(argc, nullptr), argc);
}

TEST_F(Parameters, UsageListsEveryName) {
  Kusage(0, 0);
  const std::string usage = log();
  EXPECT_EQ(usage.substr(0, usage.find("TIME-PROG")),
            "Usage:  [-parameter value] ... filename ...\n"
            "Legal parameters are: \n"
            "KTI-WIDTH\nUSE-NLS\n");
  EXPECT_EQ(std::count(usage.begin(), usage.end(), '\n'),
            2 + (parameters::numeric_count + parameters::text_count - 1) + 1);
  EXPECT_EQ(usage.substr(usage.find("PC-EXDIR")), "PC-EXDIR\nProgram aborted.\n");
  Kusage(2, 3);
  Kusage(-1, 3);
  EXPECT_EQ(log(), "");
}

TEST_F(Parameters, StayUsableWhenMemoryIsExhausted) {
  for (int n = 1;; ++n) {
    FailingAllocation nth(n);
    std::string direction = "ENGLISH-DUTCH";
    memory::guarded(
        [&] { parameters::set_parameter(combined(Text::direction), direction.data()); });
    Ksave_parameter_values();
    Ksourcecode_defaults_for_parms("y");
    Krestore_parameter_values();
    for (int32_t i = 0; i < parameters::text_count; ++i) EXPECT_NE(skparm[i], nullptr);
    if (!nth.happened()) break;
  }
}

}  // namespace

}  // namespace klib::test
