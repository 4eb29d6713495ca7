// Parameters inside the library: read by name, looked up, assigned.
#pragma once

#include <cstdint>

namespace klib::parameters {

// The numeric and text parameters that the library itself reads, by their number.
enum class Number : int32_t {
  kti_width = 1,
  use_nls = 2,
  time_prog = 3,
  show_progress = 4,
  show_progress_step = 5,
  show_filename = 6,
  show_start_end_abort = 7,
  single_font_group = 15,
  kti_start = 16,
  kti_step = 17,
  is_source_language = 19,
  all_languages = 20,
  logging = 31,
  debug = 52,
};
enum class Text : int32_t {
  lib_directory = 1,
  language = 2,
  source_language = 4,
  parameter_file_basename = 6,
  bin_directory = 10,
  log_pathname = 19,
  direction = 22,
};

// The value at this moment. Before the value tables exist and after they are destroyed every
// parameter has its built-in default. A text is valid until the parameter is next assigned.
[[nodiscard]] int32_t number(Number parameter);
[[nodiscard]] const char *text(Text parameter);

// Combined numbers: numeric parameter N is N, text parameter N is 63 + N.
inline constexpr int32_t numeric_count = 63;
inline constexpr int32_t text_count = 38;

// The combined number of the parameter called exactly `name`, numeric parameters first; -1 when
// there is none.
[[nodiscard]] int32_t parameter_number(const char *name);

// The type of the parameter with this combined number. Without one: a report, and 0.
[[nodiscard]] int32_t parameter_type(int32_t number);

// The name of the parameter with this combined number, which must exist.
[[nodiscard]] const char *parameter_name(int32_t number);

// Assigns a value as the command line does: a number is read from the text's start (no digits give
// 0, values beyond 32 bits the nearest 32-bit number), a text is copied. Without value tables
// nothing is stored. Result 0. May throw memory::Exhausted; the old value then stays.
int32_t store_parameter_value(int32_t number, const char *value);

// "LANGUAGE" becomes the text up to, not including, its first '-'. May throw memory::Exhausted.
void store_start_of_language(const char *language);

// Assigns a value as a parameter line does: through the parameter's own operation when it has one
// (fonts, "LANGUAGE", "DIRECTION"), else as above. The result is the operation's. May throw as
// above.
int32_t set_parameter(int32_t number, char *value);

void reset();

}  // namespace klib::parameters
