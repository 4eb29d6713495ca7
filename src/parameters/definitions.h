// The fixed parameters: 63 numeric ones and 38 texts, each with its number, built-in default, name
// and type. A row's position is its number - 1, which is checked below.
//
// The type is a bit set that only programs interpret.
// The code refers to a parameter by an enumerator (parameters.h), which takes its number from the
// row with the parameter's name, so that rows can be added.
//
// The default of "LIB-DIRECTORY" is the one of a program that runs the main loop; starting a
// program replaces it by the program's own directory.
#pragma once

#include <cstdint>
#include <iterator>
#include <string_view>

namespace klib::parameters {

struct NumericDefinition {
  int32_t number;
  int32_t default_value;
  const char *name;
  int32_t type;
};

struct TextDefinition {
  int32_t number;
  const char *default_value;
  const char *name;
  int32_t type;
};

// clang-format off
inline constexpr NumericDefinition numeric_definitions[] = {
  //   default  name                           type
  { 1,  999999, "KTI-WIDTH",                    0x25},
  { 2,       1, "USE-NLS",                      0x25},
  { 3,       0, "TIME-PROG",                    0x25},
  { 4,       1, "SHOW-PROGRESS",                0x25},
  { 5,     100, "SHOW-PROGRESS-STEP",           0x25},
  { 6,       0, "SHOW-FILENAME",                0x25},
  { 7,       1, "SHOW-START-END-ABORT",         0x25},
  { 8,       1, "MARK-CONSTANTS",               0x28},
  { 9,       1, "MARK-CONSTANTS-BY-LIST",       0x28},
  {10,       1, "MARK-CONSTANTS-BY-ALGORITHM",  0x28},
  {11,       1, "TABLES",                       0x01},
  {12,       1, "FORMAT",                       0x01},
  {13,       0, "LEFT-MARGIN",                  0x21},
  {14,      72, "RIGHT-MARGIN",                 0x01},
  {15,       0, "SINGLE-FONT-GROUP",            0x31},
  {16,       0, "KTI-START",                    0x24},
  {17,       1, "KTI-STEP",                     0x24},
  {18,       1, "REMOVE-DATA-BRACKETS",         0x24},
  {19,       1, "",                             0x24},
  {20,       0, "ALL-LANGUAGES",                0x24},
  {21,       1, "START",                        0x28},
  {22,       1, "START-AFTER-CLIP",             0x28},
  {23,       1, "HYPHEN",                       0x08},
  {24,       0, "LOG-HYPHEN",                   0x2c},
  {25,       2, "PARAGRAPH",                    0x08},
  {26,       1, "GARBAGE",                      0x28},
  {27,       1, "ICP-XYZ",                      0x28},
  {28,       1, "ABBREV",                       0x28},
  {29,       1, "NUMBERS",                      0x28},
  {30,       1, "FONTS",                        0x31},
  {31,       1, "LOGGING",                      0x24},
  {32,       1, "DELETE-FILES",                 0x24},
  {33,       8, "TAB-WIDTH",                    0x24},
  {34,       3, "BALANCE-RECOVER",              0x24},
  {35,       0, "KPM-PRE",                      0x08},
  {36,       0, "KPM-POST",                     0x10},
  {37,       1, "KPM-CONST",                    0x08},
  {38,       1, "PROTECT",                      0x24},
  {39,      78, "RMDIF-WIDTH",                  0x24},
  {40,       0, "RMDIF",                        0x24},
  {41,       0, "JUSTIFY",                      0x28},
  {42,       1, "BATCH",                        0x24},
  {43,       5, "PRIORITY",                     0x04},
  {44,       0, "LP-TERM",                      0x04},
  {45,       0, "LP-PHRASAL-INDICATOR",         0x04},
  {46,       0, "LP-INCLUDE-GV-FW",             0x04},
  {47,       0, "LP-FULL-PREANALYZE",           0x04},
  {48,       0, "LP-PREFER-SECOND-PERSON",      0x04},
  {49,       0, "LP-HUMAN-PRONOUNS",            0x04},
  {50,       0, "LP-TRANSLATE-UPPER-CASE",      0x04},
  {51,       0, "LP-FRONT-CONSTANTS",           0x04},
  {52,       0, "DEBUG",                        0x24},
  {53,       0, "REMOVE-CONSTANTS",             0x24},
  {54,       0, "DOVER",                        0x24},
  {55,       1, "NOT-DELTA",                    0x24},
  {56,     170, "ALIGN-QUALITY",                0x24},
  {57,      50, "ALIGN-DISTANCE",               0x24},
  {58,       1, "CHAPTER",                      0x28},
  {59,       0, "FRAME2",                       0x04},
  {60,       0, "FRAME3",                       0x04},
  {61,       0, "INTERLEAF1",                   0x04},
  {62,       0, "INTERLEAF2",                   0x04},
  {63,       0, "COLOR",                        0x24},
};

inline constexpr TextDefinition text_definitions[] = {
  //   default             name                        type
  { 1, "c:\\kavro\\dfmt",  "LIB-DIRECTORY",             0x24},
  { 2, "GERMAN",           "LANGUAGE",                  0x08},
  { 3, "De",               "DISPLAY-LANGUAGE",          0x24},
  { 4, "GERMAN",           "SOURCE-LANGUAGE",           0x32},
  { 5, "ENGLISH",          "TARGET-LANGUAGE",           0x32},
  { 6, "KavroParm",        "PARAMETER-FILE-BASENAME",   0x24},
  { 7, "kpm",              "KPM-SUFFIX",                0x24},
  { 8, "DoSpecs",          "DO-SPECS-BASENAME",         0x24},
  { 9, "",                 "TASK",                      0x24},
  {10, "",                 "BIN-DIRECTORY",             0x24},
  {11, "",                 "FROM-FILE",                 0x24},
  {12, "",                 "TO-FILE",                   0x24},
  {13, "Kavro",            "MESSAGE-CAT",               0x24},
  {14, "",                 "DO-NOT-DELETE",             0x24},
  {15, "ASCII",            "TEXT-SOURCE",               0x04},
  {16, "",                 "FONT",                      0x31},
  {17, "",                 "FONTGROUPS",                0x31},
  {18, "",                 "FONT-PACKET",               0x31},
  {19, "",                 "LOG-PATHNAME",              0x24},
  {20, "",                 "OUT-FILETYPE",              0x24},
  {21, "",                 "PARM",                      0x24},
  {22, "GERMAN-ENGLISH",   "DIRECTION",                 0x04},
  {23, "",                 "HOST",                      0x04},
  {24, "",                 "LEFT-MARGIN",               0x04},
  {25, "",                 "CUSTOMER",                  0x04},
  {26, "",                 "PRODUCT",                   0x04},
  {27, "",                 "DIALECT",                   0x04},
  {28, "",                 "SUBJECTS",                  0x04},
  {29, "TRANSLATE",        "JOB-TYPE",                  0x24},
  {30, "unknown",          "API-TASK",                  0x04},
  {31, "",                 "DOVER-LOCAL",               0x08},
  {32, "",                 "DOVER-GLOBAL",              0x08},
  {33, "None",             "FRAME1",                    0x04},
  {34, "",                 "INTERLEAF3",                0x04},
  {35, "",                 "INTERLEAF4",                0x04},
  {36, "",                 "TEXT-FILENAME",             0x04},
  {37, "",                 "TEXT-PATHNAME",             0x04},
  {38, "",                 "PC-EXDIR",                  0x04},
};
// clang-format on

template <class Row, size_t count>
constexpr bool rows_are_in_number_order(const Row (&rows)[count]) {
  for (size_t i = 0; i < count; ++i)
    if (rows[i].number != static_cast<int32_t>(i) + 1) return false;
  return true;
}
static_assert(rows_are_in_number_order(numeric_definitions));
static_assert(rows_are_in_number_order(text_definitions));

// The number of the row with this name; without one the program does not compile.
template <class Row, size_t count>
consteval int32_t row_called(std::string_view name, const Row (&rows)[count]) {
  size_t i = 0;
  while (rows[i].name != name) ++i;
  return rows[i].number;
}

// The directory with which the main loop starts a program, and what is appended to a program's
// directory to form "LIB-DIRECTORY".
inline constexpr char start_directory[] = "c:\\kavro\\";
inline constexpr char lib_directory_end[] = "dfmt";
static_assert([] {
  const auto lib_directory = row_called("LIB-DIRECTORY", text_definitions) - 1;
  std::string_view rest = text_definitions[lib_directory].default_value;
  const bool begins = rest.starts_with(start_directory);
  rest.remove_prefix(sizeof start_directory - 1);
  return begins && rest == lib_directory_end;
}());

}  // namespace klib::parameters
