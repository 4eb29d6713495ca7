// Records and those who take them. A line of JSON is
//
//   {"program":"kmerge","severity":"problem","kind":"anchor-lost","file":"job.anc","line":1,
//    "sentence":3,"figures":{"anchor":7},"text":"anchor 7 is lost"}
//
// with "line", "sentence", "figures" and "text" only where there is one.
#include "programs/common/tell.h"

#include <unistd.h>

#include <chrono>
#include <cstdarg>
#include <utility>

#include "programs/common/printable.h"

namespace klib::programs {
namespace {

struct State {
  const char *program = "";
  bool quiet = false;
  bool is_silent = false;      // only the listener gets the records
  bool failed = false;         // a problem was reported
  bool line_is_shown = false;  // a progress line is on the terminal
  std::chrono::steady_clock::time_point shown_at;
  FILE *scripts = nullptr;
  std::function<void(const Record &)> listener;
};
State state;

void print(const Record &record) {
  clear_progress();
  std::string line = record.place.file;
  if (record.place.line > 0) line.append(":").append(std::to_string(record.place.line));
  line += ": ";
  if (record.place.sentence != no_sentence)
    line.append("sentence ").append(std::to_string(record.place.sentence)).append(": ");
  line = printable(line.append(record.text)) + "\n";
  fwrite(line.data(), 1, line.size(), stderr);
}

void append_text(const char *name, std::string_view text, std::string &json) {
  json.append(json.size() == 1 ? "\"" : ",\"").append(name).append("\":");
  append_json(text, json);
}

void append_number(const char *name, int64_t number, std::string &json) {
  json.append(json.ends_with('{') ? "\"" : ",\"").append(name).append("\":");
  json += std::to_string(number);
}

void write_json(const Record &record) {
  constexpr const char *severities[] = {"data", "note", "problem"};
  std::string json = "{";
  append_text("program", state.program, json);
  append_text("severity", severities[static_cast<int>(record.severity)], json);
  append_text("kind", record.kind, json);
  append_text("file", record.place.file, json);
  if (record.place.line > 0) append_number("line", record.place.line, json);
  if (record.place.sentence != no_sentence) append_number("sentence", record.place.sentence, json);
  if (!record.figures.empty()) json += ",\"figures\":{";
  for (const Figure &figure : record.figures) append_number(figure.name, figure.value, json);
  if (!record.figures.empty()) json += '}';
  if (!record.text.empty()) append_text("text", record.text, json);
  json += "}\n";
  fwrite(json.data(), 1, json.size(), state.scripts);
}

void tell_formatted(Severity severity, const Place &place, const char *kind,
                    std::span<const Figure> figures, const char *format, va_list arguments) {
  if (severity == Severity::problem) state.failed = true;
  va_list again;
  va_copy(again, arguments);
  const int length = vsnprintf(nullptr, 0, format, arguments);
  std::string text(static_cast<size_t>(length > 0 ? length : 0), '\0');
  vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  tell({severity, place, kind, figures, text});
}

constexpr const char *any_note = "note", *any_problem = "error";

}  // namespace

void tell(const Record &record) {
  if (record.severity == Severity::problem) state.failed = true;
  if (state.is_silent) return state.listener(record);
  if (record.severity == Severity::problem || (record.severity == Severity::note && !state.quiet))
    print(record);
  if (state.scripts) write_json(record);
  if (state.listener) state.listener(record);
}

void record(const Place &place, const char *kind, Figures figures) {
  tell({Severity::data, place, kind, figures, {}});
}

void note(const Place &place, const char *kind, Figures figures, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  tell_formatted(Severity::note, place, kind, figures, format, arguments);
  va_end(arguments);
}

void report(const Place &place, const char *kind, Figures figures, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  tell_formatted(Severity::problem, place, kind, figures, format, arguments);
  va_end(arguments);
}

void fail(const Place &place, const char *kind, Figures figures, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  tell_formatted(Severity::problem, place, kind, figures, format, arguments);
  va_end(arguments);
  throw Failed{};
}

void note(const char *file, int64_t line, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  tell_formatted(Severity::note, {file, line}, any_note, {}, format, arguments);
  va_end(arguments);
}

void report(const char *file, int64_t line, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  tell_formatted(Severity::problem, {file, line}, any_problem, {}, format, arguments);
  va_end(arguments);
}

void fail(const char *file, int64_t line, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  tell_formatted(Severity::problem, {file, line}, any_problem, {}, format, arguments);
  va_end(arguments);
  throw Failed{};
}

void show_progress(int64_t sentences) {
  if (sentences % 256 == 0) show_progress_line(std::to_string(sentences) + " sentences");
}

void show_progress_line(const std::string &line) {
  if (state.quiet || !isatty(STDERR_FILENO)) return;
  const auto now = std::chrono::steady_clock::now();
  if (now - state.shown_at < std::chrono::milliseconds(200)) return;
  state.shown_at = now;
  state.line_is_shown = true;
  fprintf(stderr, "\r\033[K%s: %s", state.program, line.c_str());
}

void clear_progress() {
  if (state.line_is_shown) fputs("\r\033[K", stderr);
  state.line_is_shown = false;
}

std::string counted(int64_t count, const char *what) {
  return std::to_string(count).append(" ").append(what).append(count == 1 ? "" : "s");
}

void start_telling(const char *program, bool quiet) {
  state = State{};
  state.program = program;
  state.quiet = quiet;
}

void tell_scripts(FILE *stream) { state.scripts = stream; }

void tell_also(std::function<void(const Record &)> listener) {
  state.listener = std::move(listener);
}

void tell_only(std::function<void(const Record &)> listener) {
  state.listener = std::move(listener);
  state.quiet = state.is_silent = true;
}

bool something_failed() { return state.failed; }

}  // namespace klib::programs
