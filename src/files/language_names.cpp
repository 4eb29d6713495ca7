// The languages of the engine: long upper-case names, as the language parameters hold them, and the
// two-letter short forms that name directories.

#include <cstring>

#include "klib.h"

namespace {

struct Language {
  const char *short_name;
  const char *long_name;
};

// clang-format off
constexpr Language languages[] = {
    {"DE", "GERMAN"},
    {"EN", "ENGLISH"},
    {"ES", "SPANISH"},
    {"NL", "DUTCH"},
    {"FR", "FRENCH"},
    {"DA", "DANISH"},
    {"IT", "ITALIAN"},
    {"AR", "ARABIC"},
    {"RU", "RUSSIAN"},
    {"CA", "CATALAN"},
    {"PT", "PORTUGUESE"},
    {"EL", "GREEK"},
    {"FI", "FINNISH"},
    {"SV", "SWEDISH"},
    {"XH", "CHINESE"},
    {"KO", "KOREAN"},
    {"JP", "JAPANESE"},
    {"HU", "HUNGARIAN"},
};
// clang-format on
static_assert(sizeof languages / sizeof languages[0] == 18);

constexpr char unknown[] = "UNKNOWN";

const char *look_up(const char *name, const char *Language::*key, const char *Language::*answer) {
  for (const Language &language : languages)
    if (std::strcmp(language.*key, name) == 0) return language.*answer;
  return unknown;
}

}  // namespace

// Exported names

const char *Klang_sh_lo(const char *short_name) {
  return look_up(short_name, &Language::short_name, &Language::long_name);
}

const char *Klang_lo_sh(const char *long_name) {
  return look_up(long_name, &Language::long_name, &Language::short_name);
}
