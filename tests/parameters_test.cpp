// Parameter values, their lookups, the save slot and the command line.

#include <algorithm>
#include <vector>

#include "frame/memory.h"
#include "parameters/definitions.h"
#include "parameters/parameters.h"
#include "tests/support.h"

namespace klib::test {

namespace {

class Parameters : public Library {};

TEST_F(Parameters, StartAtTheirDefaults) {
  EXPECT_EQ(kparm[0], 999999);
  EXPECT_EQ(kparm[32], 8);
  EXPECT_EQ(kparm[55], 170);
  EXPECT_STREQ(skparm[0], "c:\\kavro\\dfmt");
  EXPECT_STREQ(skparm[5], "KavroParm");
  EXPECT_STREQ(skparm[9], "");
  Ksourcecode_defaults_for_parms(skparm[0]);
  EXPECT_STREQ(skparm[0], "c:\\kavro\\dfmtdfmt") << "a text of the old tables may be passed";
}

TEST_F(Parameters, AreFoundByTheirWholeName) {
  static const struct {
    const char *name;
    int32_t number, type;
  } rows[] = {
      {"LOGGING", 31, 0x24},   {"LIB-DIRECTORY", 64, 0x24},
      {"PC-EXDIR", 101, 0x04}, {"LEFT-MARGIN", 13, 0x21},
      {"", 19, 0x24},          {"COLOR", 63, 0x24},
      {"logging", -1, 0},      {"LOG", -1, 0},
      {"LOGGING ", -1, 0},     {"INTERLEAF2", 62, 0x04},
      {"FONT", 79, 0x31},      {"DIRECTION", 85, 0x04},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(parameters::parameter_number(row.name), row.number) << row.name;
    EXPECT_EQ(parameters::parameter_type(row.number), row.type) << row.name;
  }
  log();
  for (const int32_t number : {0, 102, INT32_MIN, INT32_MAX})
    EXPECT_EQ(parameters::parameter_type(number), 0) << number;
  EXPECT_EQ(log(),
            "Cannot get parameter type of parameter 0.\n"
            "Cannot get parameter type of parameter 102.\n"
            "Cannot get parameter type of parameter -2147483648.\n"
            "Cannot get parameter type of parameter 2147483647.\n");
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
    parameters::store_parameter_value(1, row.text);
    EXPECT_EQ(kparm[0], row.value) << row.text;
  }
}

TEST_F(Parameters, SaveSlotBringsBackTheValuesSavedLast) {
  Krestore_parameter_values();  // an empty slot changes nothing
  EXPECT_EQ(kparm[32], 8);
  kparm[32] = 4;
  Ksave_parameter_values();
  kparm[32] = 5;
  parameters::store_parameter_value(64, "five");
  Ksave_parameter_values();
  kparm[32] = 6;
  parameters::store_parameter_value(64, "six");
  Kdestroy_kparm();
  Ksave_parameter_values();
  Krestore_parameter_values();  // no tables: the slot stays filled, with the defaults
  Ksourcecode_defaults_for_parms("x");
  kparm[32] = 7;
  Krestore_parameter_values();
  EXPECT_EQ(kparm[32], 8);
  Ksave_parameter_values();
  kparm[32] = 9;
  parameters::store_parameter_value(64, "nine");
  Krestore_parameter_values();
  EXPECT_EQ(kparm[32], 8);
  EXPECT_STREQ(skparm[0], "c:\\kavro\\dfmt");
  kparm[32] = 10;
  Krestore_parameter_values();
  EXPECT_EQ(kparm[32], 10);
}

TEST_F(Parameters, LanguageAndDirectionDecideTheLanguageFlag) {
  const auto flag_after = [](int32_t number, std::string value) {
    EXPECT_EQ(parameters::set_parameter(number, value.data()), 0);
    return kparm[18];
  };
  static const struct {
    int32_t number;
    const char *value;
    int32_t flag;
    const char *source;
  } rows[] = {
      {65, "ENGLISH", 0, "GERMAN"},
      {65, "NOLANGUAGE", 1, "GERMAN"},
      {65, "FRENCH", 0, "GERMAN"},
      {65, "NULL", 1, "GERMAN"},
      {65, "", 1, "GERMAN"},
      {65, "DUTCH", 0, "GERMAN"},
      {85, "DUTCH-GERMAN", 1, "DUTCH"},
      {85, "-GERMAN", 0, ""},
      {85, "GERMAN", 0, "GERMAN"},
      {65, "GERMAN", 1, "GERMAN"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(flag_after(row.number, row.value), row.flag) << row.value;
    EXPECT_STREQ(skparm[3], row.source) << row.value;
  }
  EXPECT_STREQ(skparm[21], "GERMAN");
  kparm[18] = 7;
  EXPECT_EQ(flag_after(65, "GERMAN"), 7) << "the current language again changes nothing";
  kparm[19] = 1;
  EXPECT_EQ(flag_after(65, "DUTCH"), 1) << "all languages count as the source language";
}

// The command line

struct CommandLine {
  std::vector<std::string> arguments;
  int32_t first;
  std::string assigned;  // "number=value" of what differs from the defaults
  bool usage;
};

std::string differences() {
  std::string result;
  for (const auto &row : parameters::numeric_definitions)
    if (kparm[row.number - 1] != row.default_value)
      result += std::to_string(row.number) + "=" + std::to_string(kparm[row.number - 1]) + " ";
  for (const auto &row : parameters::text_definitions)
    if (skparm[row.number - 1] != std::string(row.default_value))
      result += std::to_string(63 + row.number) + "=" + skparm[row.number - 1] + " ";
  return result;
}

TEST_F(Parameters, CommandLineAssignsUpToTheFirstFileName) {
  const std::vector<CommandLine> rows = {
      {{}, 1, "", false},
      {{"-LOGGING", "2", "a.txt"}, 3, "31=2 ", false},
      {{"a.txt", "-LOGGING", "0"}, 1, "", false},
      {{"-logging", "1", "a.txt"}, 2, "", true},
      {{"-LOG", "1"}, 2, "", true},
      {{"-bad", "-LOGGING", "3", "x"}, 4, "31=3 ", true},
      {{"-LEFT-MARGIN", "-5"}, 3, "13=-5 ", false},
      {{"-", "7"}, 3, "19=7 ", false},
      {{"-FONT",
        "a\xFF"
        "b",
        "-LANGUAGE", "ENGLISH"},
       5,
       "65=ENGLISH 79=a\xFF"
       "b ",
       false},
      {{"-LOGGING", "2", "-TASK"}, 4, "31=2 ", true},
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
  EXPECT_EQ(std::count(usage.begin(), usage.end(), '\n'), 2 + 100 + 1);
  EXPECT_EQ(usage.substr(usage.find("PC-EXDIR")), "PC-EXDIR\nProgram aborted.\n");
  Kusage(2, 3);
  Kusage(-1, 3);
  EXPECT_EQ(log(), "");
}

TEST_F(Parameters, StayUsableWhenMemoryIsExhausted) {
  for (int n = 1;; n++) {
    FailingAllocation nth(n);
    std::string direction = "ENGLISH-DUTCH";
    memory::guarded([&] { parameters::set_parameter(85, direction.data()); });
    Ksave_parameter_values();
    Ksourcecode_defaults_for_parms("y");
    Krestore_parameter_values();
    for (int32_t i = 0; i < parameters::text_count; i++) EXPECT_NE(skparm[i], nullptr);
    if (!nth.happened()) break;
  }
}

}  // namespace

}  // namespace klib::test
