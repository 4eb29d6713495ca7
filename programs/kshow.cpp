// kshow shows a file with format codes to a person, a token a line. Bytes are shown as characters
// of the language's code page where they are visible ones, else in braces: {94} is the byte 0x94.
// A sentence is shown with the tokens inside it; so every byte of the file is shown once.
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "programs/common/code_page.h"
#include "programs/common/input_file.h"
#include "programs/common/job_header.h"
#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/common/utf8.h"
#include "programs/frame/job_files.h"
#include "programs/report/notes.h"
#include "programs/system/exhaustion.h"

namespace klib::programs {
namespace {

constexpr struct {
  int32_t kind;
  const char *name;
  char close;  // the byte that ends a code, or 0
} kinds[] = {
    {P_TEXT, "text", 0},
    {P_ANCHOR, "anchor", anchor_end},
    {P_SENTENCE, "sentence", frame_end},
    {P_CODE_1E, "segment", '\x1F'},
    {P_TO_EOL, "to-eol", '\n'},
    {P_CODE_LINE, "code-line", '\n'},
    {P_FONT, "font", font_end},
    {P_CODE_9B, "code", '\x9C'},
    {P_MARK_1D, "mark", 0},
    {P_ALIEN, "alien", 0},
    {P_LINE, "line", 0},
};

constexpr int32_t codes_in_sentences = P_COUNT | P_ANCHOR | P_CODE_1E | P_TO_EOL | P_CODE_LINE |
                                       P_FONT | P_CODE_9B | P_MARK_1D | P_ALIEN | P_LINE;

constexpr size_t alien_size = 5;

// A place in the file, lines and columns from 1.
struct Place {
  int64_t line = 1, column = 1, real_line = 1, real_column = 1;
};

// What is being shown.
struct Show {
  CodePage page;
  Place base;  // where the text of the current parser level begins
  // The library counts codes inside a sentence as visible, so that what follows on its last line
  // comes out too far to the right.
  int64_t shifted_line = 0, shift = 0;
  int64_t cut = 0;   // codes that do not end
  std::string rows;  // not printed yet
};

Place token_place(const Show &job) {
  const parser_frame &frame = p_root[parser_level];
  const Place &base = job.base;
  Place place;
  place.line = base.line + frame.token_line - 1;
  place.column = (frame.token_line == 1 ? base.column - 1 : 0) + frame.token_column;
  place.real_line = base.real_line + frame.token_real_line - 1;
  place.real_column =
      (frame.token_real_line == 1 ? base.real_column - 1 : 0) + frame.token_real_column;
  if (place.real_line == job.shifted_line) place.real_column += job.shift;
  return place;
}

// The no-break space looks like a blank, and braces are those of bytes.
bool is_visible(char32_t c) { return is_printable(c) && c != 0xA0 && c != '{' && c != '}'; }

void append_readable(const Show &job, std::string_view bytes, bool is_code, std::string &row) {
  constexpr const char *digits = "0123456789ABCDEF";
  for (const char c : bytes) {
    const char32_t character = job.page.character[static_cast<unsigned char>(c)];
    if (is_visible(character) && !(is_code && character > 0x7F))
      append_utf8(character, row);
    else
      row.append("{").append({digits[c >> 4 & 0xF], digits[c & 0xF]}).append("}");
  }
}

void print_rows(Show &job) {
  fwrite(job.rows.data(), 1, job.rows.size(), stdout);
  job.rows.clear();
}

// Appends blanks up to the width of a column that begins at `begin`, and one more.
void end_column(size_t begin, size_t width, std::string &rows) {
  const size_t used = rows.size() - begin;
  rows.append(used < width ? width - used + 1 : 1, ' ');
}

void append_number(int64_t number, std::string &rows) {
  char digits[24];
  rows.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

void append_place(int64_t line, int64_t column, std::string &rows) {
  append_number(line, rows);
  rows += ':';
  append_number(column, rows);
}

void print_row(Show &job, const Place &place, const char *kind, size_t depth,
               const std::string &text) {
  constexpr size_t width = 9, enough = 65536;
  std::string &rows = job.rows;
  size_t begin = rows.size();
  append_place(place.line, place.column, rows);
  end_column(begin, width, rows);
  begin = rows.size();
  append_place(place.real_line, place.real_column, rows);
  end_column(begin, width, rows);
  begin = rows.size();
  rows.append(depth, ' ').append(kind);
  end_column(begin, width, rows);
  rows.append(text).append("\n");
  if (rows.size() > enough) print_rows(job);
}

const auto &description(int32_t kind) {
  for (const auto &row : kinds)
    if (row.kind == kind) return row;
  return kinds[0];
}

void show_token(Show &job, int32_t kind, size_t depth) {
  const auto &[number, name, close] = description(kind);
  const std::string_view token(p_root[parser_level].token);
  std::string text;
  append_readable(job, token, kind == P_ANCHOR || kind == P_FONT, text);
  if (kind == P_ALIEN && token.size() == alien_size) {
    const char32_t c = static_cast<char32_t>(Kparse_alien(p_root[parser_level].token));
    if (is_visible(c)) append_utf8(c, text.append("  "));
  }
  if (kind == P_ALIEN ? token.size() < alien_size : close != 0 && token.back() != close) {
    text += "  (cut off)";
    job.cut++;
  }
  print_row(job, token_place(job), name, depth, text);
}

// Shows the tokens of a sentence's text, which begins at `base`, and returns the place of its end.
Place show_inside(Show &job, const Place &base, const char *text) {
  job.base = base;
  init_parser(codes_in_sentences);
  parse_from_string(text);
  for (int32_t kind; (kind = parse(nullptr)) != P_END;) show_token(job, kind, 2);
  const Place end = token_place(job);
  exit_parser();
  job.base = {};
  return end;
}

// Shows the sentence at the current token: its opening byte and number, the tokens of its text, its
// closing byte.
void show_sentence(Show &job) {
  std::string token(p_root[parser_level].token), opening;
  size_t begin = std::min(token.find_first_not_of("0123456789", 1), token.size());
  if (begin < token.size() && token[begin] == ' ') begin++;
  const bool is_cut = token.size() < 2 || token.back() != frame_end;
  if (!is_cut) token.pop_back();
  begin = std::min(begin, token.size());
  append_readable(job, std::string_view(token).substr(0, begin), true, opening);
  if (is_cut) opening += "  (cut off)";
  if (is_cut) job.cut++;
  Place base = token_place(job);
  print_row(job, base, "sentence", 0, opening);
  base.column += static_cast<int64_t>(begin);
  base.real_column += static_cast<int64_t>(begin) - 1;
  const Place end = show_inside(job, base, token.c_str() + begin);
  if (!is_cut) print_row(job, end, "sentence", 0, "{91}");
  job.shift = end.real_column - p_root[parser_level].real_column;
  job.shifted_line = end.real_line;
}

// The first line of a sentence file says its language, which need not be given then.
void take_header(Show &job) {
  std::string_view line(p_root[parser_level].token);
  if (line.ends_with('\n')) line.remove_suffix(1);
  const std::string language = language_of_header(line);
  if (!language.empty() && !is_given(TextParameter::language))
    make_code_page(language.c_str(), job.page);
}

void show_tokens(Show &job, FILE *stream) {
  init_parser(codes_in_sentences | P_SENTENCE);
  for (bool first = true;; first = false) {
    const int32_t kind = parse(stream);
    if (first && (kind == P_TEXT || kind == P_LINE)) take_header(job);
    if (kind == P_SENTENCE)
      show_sentence(job);
    else if (kind != P_END)
      show_token(job, kind, 0);
    else if (feof(stream) || ferror(stream))
      break;
    else
      print_row(job, token_place(job), "NUL", 0, "{00}");
  }
  exit_parser();
}

void show(const char *given_name) {
  const InputFile stream = open_input(given_name);
  const char *name = input_name(given_name);
  const auto job = std::make_unique<Show>();
  make_code_page(parameter(TextParameter::language), job->page);
  job->rows = "raw       real      kind      text\n";
  show_tokens(*job, stream.get());
  print_rows(*job);
  if (ferror(stream.get())) report(name, 0, "cannot be read: %s", error_text(errno));
  errno = 0;
  if (fflush(stdout) != 0 || ferror(stdout))
    fail("standard output", 0, "cannot be written: %s",
         errno != 0 ? error_text(errno) : "an earlier write failed");
  if (job->cut > 0)
    report({name}, "cut-off", {{"codes", job->cut}},
           job->cut == 1 ? "%lld code is cut off" : "%lld codes are cut off",
           static_cast<long long>(job->cut));
}

// The values of options.
const char *html, *result, *alignment, *notes, *source_tokens, *target_tokens;

// The anchor file beside a sentence file, if there is one.
std::string anchors_beside(const char *name) {
  if (!has_type(name)) return {};
  const std::string anchors = with_type(name, "anc");
  return is_there(anchors) ? anchors : std::string();
}

// Writes a report of sentence files, the first one with its result and alignment.
void show_as_report(std::span<const char *const> names) {
  if (names.empty()) fail("kshow", 0, "no file names");
  if (names.size() > 1 && (result || alignment || source_tokens || target_tokens))
    fail("kshow", 0, "--result, --alignment and the tokens are for one FILE");
  std::vector<std::string> inputs(names.begin(), names.end());
  for (const char *name : {result, alignment, notes, source_tokens, target_tokens})
    if (name) inputs.push_back(name);
  const std::string outputs[] = {html};
  check_job_files(inputs, outputs);
  check_replaced(html, is_report, "is no report of sentences");
  OutputFile file(html);
  std::string body;
  ReportTotals totals;
  for (const char *name : names) {
    ReportPage page;
    page.name = page.coded = name;
    page.anchors = anchors_beside(name);
    if (result) page.result_name = page.carried = result;
    if (alignment) page.alignment = alignment;
    if (source_tokens) page.source_tokens = source_tokens;
    if (target_tokens) page.target_tokens = target_tokens;
    const std::string own_names[] = {page.name};
    if (notes)
      page.notes = read_notes(notes, names.size() > 1 ? std::span<const std::string>(own_names)
                                                      : std::span<const std::string>());
    append_page(page, body, totals);
  }
  file.write(report_begin(names.size() == 1 ? names[0] : "Sentences", totals));
  file.write(body);
  file.write(report_end());
  file.finish();
  file.publish();
}

constexpr const char *purpose =
    "Shows a file with format codes on standard output, a token a line: where it\n"
    "begins, as LINE:COLUMN of the bytes (raw) and of what a reader would see (real),\n"
    "its kind and its text. With '-' for FILE, standard input is read.\n";

constexpr Parameter parameters[] = {
    {"LANGUAGE", "NAME", "the language of FILE (GERMAN)"},
    {"TARGET-LANGUAGE", "NAME", "that of the file of --result (ENGLISH)"},
};

constexpr Job report_job = job<show_as_report, Job::any_files>;
constexpr Option options[] = {
    {"html", "REPORT", &html, "write the sentences as an HTML page for people", &report_job},
    {"result", "OUT.kti", &result, "with --html: the translated sentences beside them"},
    {"alignment", "FILE", &alignment, "with --html: the pairs i-j between both"},
    {"source-tokens", "FILE", &source_tokens,
     "with --alignment: it counts the tokens of these lines, not\nthe words of the sentences"},
    {"target-tokens", "FILE", &target_tokens, "the same for the result"},
    {"notes", "FILE", &notes, "with --html: messages to show, a file that --report has written"},
};

}  // namespace

const Program kshow = {.name = "kshow",
                       .files = "FILE ...\n--html REPORT FILE ...",
                       .purpose = purpose,
                       .parameters = parameters,
                       .options = options,
                       .job = job<show, 1>};

}  // namespace klib::programs
