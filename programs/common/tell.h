// The messages of a program: each is a record, passed to one place, which prints it for people on
// standard error and writes it for scripts, as a line of JSON, to the file of --report.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "klib.h"

namespace klib::programs {

constexpr int64_t no_sentence = -1;

struct Place {
  const char *file;
  int64_t line = 0;  // from 1; 0: no line
  int64_t sentence = no_sentence;
};

// A number of a record, under its name: {"anchor", 7}.
struct Figure {
  const char *name;
  int64_t value;
};

enum class Severity {
  data,    // for scripts alone
  note,    // for people, too, unless --quiet
  problem  // makes the exit status 1
};

struct Record {
  Severity severity;
  Place place;
  const char *kind;  // in a word or three, for scripts: "anchor-lost"
  std::span<const Figure> figures;
  std::string_view text;  // for people, without the place; any bytes; none in data
};

// Passes the record to everyone who wants it.
void tell(const Record &record);

// Thrown by fail() and caught by the frame of the programs: the job is over.
struct Failed {};

// "FILE:LINE: sentence N: text" on standard error, and the record with its figures for scripts.
// note() only informs; report() and fail() make the exit status 1, and fail() ends the job;
// record() is for scripts alone. The text follows printf's rules; it may contain any bytes, which
// are made printable.
using Figures = std::initializer_list<Figure>;
void record(const Place &place, const char *kind, Figures figures);
void note(const Place &place, const char *kind, Figures figures, const char *format, ...)
    KLIB_PRINTF(4, 5);
void report(const Place &place, const char *kind, Figures figures, const char *format, ...)
    KLIB_PRINTF(4, 5);
[[noreturn]] void fail(const Place &place, const char *kind, Figures figures, const char *format,
                       ...) KLIB_PRINTF(4, 5);

// The same for what has no figures and no kind of its own: the kind is "note" or "error".
void note(const char *file, int64_t line, const char *format, ...) KLIB_PRINTF(3, 4);
void report(const char *file, int64_t line, const char *format, ...) KLIB_PRINTF(3, 4);
[[noreturn]] void fail(const char *file, int64_t line, const char *format, ...) KLIB_PRINTF(3, 4);

// "1 font", "2 fonts".
std::string counted(int64_t count, const char *what);

// Shows on a terminal's standard error how far the job is; call it as often as you like.
void show_progress(int64_t sentences);
void show_progress_line(const std::string &line);  // the same with other words
void clear_progress();

// Where the records of a run go; start_telling() begins a run.
void start_telling(const char *program, bool quiet);
void tell_scripts(FILE *stream);                               // null: no more
void tell_also(std::function<void(const Record &)> listener);  // such as a report; null: no more
// From now on only the listener gets them, and no progress is shown: for a process that works for
// another one.
void tell_only(std::function<void(const Record &)> listener);
bool something_failed();  // a problem was reported in this run

}  // namespace klib::programs
