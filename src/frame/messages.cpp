// Messages: formatted into a fixed buffer and written to the log. The library has no message
// catalogue, so the set and number of a message are accepted and not used, and the operations that
// would open, close or load external definitions do nothing.

#include "frame/messages.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr size_t message_size = 2048;  // 2047 characters at most, and the NUL
constexpr char version_text[] = "0.005";
constexpr char build_date_text[] = "Fri May  9 12:53:26 2003";

void format_and_log(const char *format, va_list arguments) {
  char message[message_size];
  if (std::vsnprintf(message, sizeof message, format, arguments) >= 0) Klogging(message);
}

}  // namespace

void klib::report_and_abort(int32_t, int32_t, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  format_and_log(format, arguments);
  va_end(arguments);
  Kabort_prog();
}

// Exported names

void Kdisplay(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  format_and_log(format, arguments);
  va_end(arguments);
}

void Kmessage(int32_t, int32_t, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  format_and_log(format, arguments);
  va_end(arguments);
}

const char *Msg(int32_t, int32_t, const char *text) { return text; }

void open_message_catalog(...) {}
void close_message_catalog(...) {}
void Kexplain_error(...) {}
void Kread_char_types(...) {}
void Kdestroy_char_types(...) {}

void klib_get_info(char *version, char *build_date) {
  std::memcpy(version, version_text, sizeof version_text);
  std::memcpy(build_date, build_date_text, sizeof build_date_text);
}
