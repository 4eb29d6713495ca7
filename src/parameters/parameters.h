// Parameters inside the library: read by name, looked up, assigned.
#pragma once

#include <cstdint>

#include "parameters/definitions.h"

namespace klib::parameters {

// The numeric and text parameters that the library itself uses, by their number.
consteval int32_t numeric(std::string_view name) { return row_called(name, numeric_definitions); }
enum class Number : int32_t {
  kti_width = numeric("KTI-WIDTH"),
  use_nls = numeric("USE-NLS"),
  time_prog = numeric("TIME-PROG"),
  show_progress = numeric("SHOW-PROGRESS"),
  show_progress_step = numeric("SHOW-PROGRESS-STEP"),
  show_filename = numeric("SHOW-FILENAME"),
  show_start_end_abort = numeric("SHOW-START-END-ABORT"),
  single_font_group = numeric("SINGLE-FONT-GROUP"),
  kti_start = numeric("KTI-START"),
  kti_step = numeric("KTI-STEP"),
  is_source_language = numeric(""),
  all_languages = numeric("ALL-LANGUAGES"),
  logging = numeric("LOGGING"),
  debug = numeric("DEBUG"),
};
consteval int32_t textual(std::string_view name) { return row_called(name, text_definitions); }
enum class Text : int32_t {
  lib_directory = textual("LIB-DIRECTORY"),
  language = textual("LANGUAGE"),
  source_language = textual("SOURCE-LANGUAGE"),
  parameter_file_basename = textual("PARAMETER-FILE-BASENAME"),
  bin_directory = textual("BIN-DIRECTORY"),
  font = textual("FONT"),
  fontgroups = textual("FONTGROUPS"),
  font_packet = textual("FONT-PACKET"),
  log_pathname = textual("LOG-PATHNAME"),
  direction = textual("DIRECTION"),
};

// The value at this moment. Before the value tables exist and after they are destroyed every
// parameter has its built-in default. A text is valid until the parameter is next assigned.
[[nodiscard]] int32_t number(Number parameter);
[[nodiscard]] const char *text(Text parameter);

// Combined numbers: numeric parameter N is N, text parameter N is N more than there are numeric
// ones.
inline constexpr int32_t numeric_count = std::size(numeric_definitions);
inline constexpr int32_t text_count = std::size(text_definitions);
[[nodiscard]] constexpr int32_t combined(Number parameter) {
  return static_cast<int32_t>(parameter);
}
[[nodiscard]] constexpr int32_t combined(Text parameter) {
  return numeric_count + static_cast<int32_t>(parameter);
}

// The combined number of the parameter called exactly `name`, numeric parameters first; -1 when
// there is none.
[[nodiscard]] int32_t parameter_number(const char *name);

// The type of the parameter with this combined number. Without one: a report, and 0.
[[nodiscard]] int32_t parameter_type(int32_t number);

// The name of the parameter with this combined number, which must exist.
[[nodiscard]] const char *parameter_name(int32_t number);

// Assigns a value as the command line does: a number is read from the start of the text (0 without
// digits, the nearest 32-bit number beyond 32 bits), a text is copied. Without value tables nothing
// is stored. Result 0. May throw memory::Exhausted; the old value then stays.
int32_t store_parameter_value(int32_t number, const char *value);

// The text up to, not including, its first '-': of "GERMAN-ENGLISH" the source language.
[[nodiscard]] std::string_view start_of_language(std::string_view language);

// Assigns "LANGUAGE" alone. May throw memory::Exhausted.
void store_language(std::string_view language);

// Assigns a value as a parameter line does: through the parameter's own operation when it has one
// (fonts, "LANGUAGE", "DIRECTION"), else as above. The result is the operation's. May throw as
// above.
int32_t set_parameter(int32_t number, char *value);

}  // namespace klib::parameters
