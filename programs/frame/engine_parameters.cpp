// The names of the library's parameters. It writes them only to its log, so they are repeated here,
// and a test compares both.
#include "programs/frame/engine_parameters.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "programs/common/languages.h"
#include "programs/common/program.h"

namespace klib::programs {
namespace {

// clang-format off
constexpr EngineParameter all_parameters[] = {
    {"KTI-WIDTH", true}, {"USE-NLS", true}, {"TIME-PROG", true}, {"SHOW-PROGRESS", true},
    {"SHOW-PROGRESS-STEP", true}, {"SHOW-FILENAME", true}, {"SHOW-START-END-ABORT", true},
    {"MARK-CONSTANTS", true}, {"MARK-CONSTANTS-BY-LIST", true},
    {"MARK-CONSTANTS-BY-ALGORITHM", true}, {"TABLES", true}, {"FORMAT", true},
    {"LEFT-MARGIN", true}, {"RIGHT-MARGIN", true}, {"SINGLE-FONT-GROUP", true},
    {"KTI-START", true, 0}, {"KTI-STEP", true, 1}, {"REMOVE-DATA-BRACKETS", true},
    {"ALL-LANGUAGES", true}, {"START", true}, {"START-AFTER-CLIP", true}, {"HYPHEN", true},
    {"LOG-HYPHEN", true}, {"PARAGRAPH", true}, {"GARBAGE", true}, {"ICP-XYZ", true},
    {"ABBREV", true}, {"NUMBERS", true}, {"FONTS", true}, {"LOGGING", true}, {"DELETE-FILES", true},
    {"TAB-WIDTH", true}, {"BALANCE-RECOVER", true}, {"KPM-PRE", true}, {"KPM-POST", true},
    {"KPM-CONST", true}, {"PROTECT", true}, {"RMDIF-WIDTH", true}, {"RMDIF", true},
    {"JUSTIFY", true}, {"BATCH", true}, {"PRIORITY", true}, {"LP-TERM", true},
    {"LP-PHRASAL-INDICATOR", true}, {"LP-INCLUDE-GV-FW", true}, {"LP-FULL-PREANALYZE", true},
    {"LP-PREFER-SECOND-PERSON", true}, {"LP-HUMAN-PRONOUNS", true},
    {"LP-TRANSLATE-UPPER-CASE", true}, {"LP-FRONT-CONSTANTS", true}, {"DEBUG", true},
    {"REMOVE-CONSTANTS", true}, {"DOVER", true}, {"NOT-DELTA", true}, {"ALIGN-QUALITY", true},
    {"ALIGN-DISTANCE", true}, {"CHAPTER", true}, {"FRAME2", true}, {"FRAME3", true},
    {"INTERLEAF1", true}, {"INTERLEAF2", true}, {"COLOR", true}, {"LIB-DIRECTORY", false},
    {"LANGUAGE", false}, {"DISPLAY-LANGUAGE", false}, {"SOURCE-LANGUAGE", false},
    {"TARGET-LANGUAGE", false}, {"PARAMETER-FILE-BASENAME", false}, {"KPM-SUFFIX", false},
    {"DO-SPECS-BASENAME", false}, {"TASK", false}, {"BIN-DIRECTORY", false}, {"FROM-FILE", false},
    {"TO-FILE", false}, {"MESSAGE-CAT", false}, {"DO-NOT-DELETE", false}, {"TEXT-SOURCE", false},
    {"FONT", false}, {"FONTGROUPS", false}, {"FONT-PACKET", false}, {"LOG-PATHNAME", false},
    {"OUT-FILETYPE", false}, {"PARM", false}, {"DIRECTION", false}, {"HOST", false},
    {"CUSTOMER", false}, {"PRODUCT", false}, {"DIALECT", false}, {"SUBJECTS", false},
    {"JOB-TYPE", false}, {"API-TASK", false}, {"DOVER-LOCAL", false}, {"DOVER-GLOBAL", false},
    {"FRAME1", false}, {"INTERLEAF3", false}, {"INTERLEAF4", false}, {"TEXT-FILENAME", false},
    {"TEXT-PATHNAME", false}, {"PC-EXDIR", false},
};
// clang-format on

std::string check_number(const EngineParameter &parameter, std::string_view value) {
  int32_t number = 0;
  const char *end = value.data() + value.size();
  const auto result = std::from_chars(value.data(), end, number);
  if (result.ec == std::errc::result_out_of_range) return "has more than 32 bits";
  if (result.ec != std::errc() || result.ptr != end) return "is not a whole number";
  if (number < parameter.least)
    return "is less than " + std::to_string(parameter.least) + ", the least that works";
  return "";
}

}  // namespace

std::span<const EngineParameter> engine_parameters() { return all_parameters; }

const EngineParameter *find_parameter(const char *name) {
  for (const EngineParameter &row : all_parameters)
    if (strcmp(row.name, name) == 0) return &row;
  return nullptr;
}

std::string check_value(const EngineParameter &parameter, std::string &value) {
  const std::string_view name(parameter.name);
  if (parameter.is_number) return check_number(parameter, value);
  if (name == "LANGUAGE" || name == "SOURCE-LANGUAGE" || name == "TARGET-LANGUAGE") {
    const std::string language = language_name(value);
    if (language.empty()) return "is not a language; languages are\n" + list_of_languages();
    value = language;
  }
  if (name == "LOG-PATHNAME" && !value.empty() && !has_type(value))
    return "is not a name for a log: it must end in a dot and a three-character type";
  return "";
}

}  // namespace klib::programs
