// Every operation that calls the platform, with its first, second, third, ... such call failing,
// until it succeeds: the result, the report, the contents of the file, no descriptor or block left
// over, and the same operation then works.

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <regex>

#include "parameters/parameters.h"
#include "platform/platform.h"
#include "tests/support.h"

namespace klib::test {

namespace {

enum Way { failing, moving_one_byte, interrupted };

struct {
  Way way = failing;
  int until_failure = 0;  // the call that brings this to 0 fails
  std::string call;       // the one that did
} plan;
FILE *test_log;  // its writes always succeed
platform::Calls own;

bool fails_now(const std::string &call) {
  static constexpr std::string_view concerned[] = {"", "read write",
                                                   "open open_stream read read_stream write"};
  if (plan.way != failing && concerned[plan.way].find(call) == std::string_view::npos) return false;
  if (plan.until_failure == 0 || --plan.until_failure != 0) return false;
  errno = plan.way == interrupted ? EINTR : EIO;
  plan.call = call;
  return true;
}

template <class Result, class... Arguments>
Result attempt(const char *call, Result (*function)(Arguments...),
               std::type_identity_t<Result> failure, auto... values) {
  return fails_now(call) ? failure : function(values...);
}

int64_t move(const char *call, auto function, int file, auto bytes, size_t size) {
  if (!fails_now(call)) return function(file, bytes, size);
  return plan.way == moving_one_byte ? function(file, bytes, 1) : -1;
}

// A stream's error mark is set by what the stream was not opened for; errno stays.
size_t mark_as_failed(FILE *stream, bool for_writing, size_t moved) {
  const int error = errno;
  for_writing ? std::fgetc(stream) : std::fputc('x', stream);
  errno = error;
  return moved;
}

void put_in_failing_calls() {
  platform::Calls &calls = platform::calls;
  own = calls;
  calls.open = [](auto... a) { return attempt("open", own.open, -1, a...); };
  calls.close = [](int file) { return own.close(file) | (fails_now("close") ? -1 : 0); };
  calls.read = [](auto... a) { return move("read", own.read, a...); };
  calls.write = [](auto... a) { return move("write", own.write, a...); };
  calls.seek = [](auto... a) { return attempt("seek", own.seek, -1, a...); };
  calls.size = [](auto... a) { return attempt("size", own.size, -1, a...); };
  calls.exists = [](auto... a) { return attempt("exists", own.exists, false, a...); };
  calls.unlink = [](auto... a) { return attempt("unlink", own.unlink, -1, a...); };
  calls.open_stream = [](const char *name, const char *mode) {
    FILE *const stream = attempt("open_stream", own.open_stream, nullptr, name, mode);
    if (std::string_view(name).ends_with("test.log")) test_log = stream;
    return stream;
  };
  calls.close_stream = [](FILE *stream) {
    return own.close_stream(stream) | (fails_now("close_stream") ? EOF : 0);
  };
  calls.read_stream = [](void *buffer, size_t size, FILE *stream) {
    return fails_now("read_stream") ? mark_as_failed(stream, false, 0)
                                    : own.read_stream(buffer, size, stream);
  };
  calls.write_stream = [](const void *buffer, size_t size, FILE *stream) {
    return stream != test_log && fails_now("write_stream")
               ? mark_as_failed(stream, true, own.write_stream(buffer, size / 2, stream))
               : own.write_stream(buffer, size, stream);
  };
  calls.working_directory = [](auto... a) {
    return attempt("working_directory", own.working_directory, nullptr, a...);
  };
  calls.now = [] { return time_t{fails_now("now") ? -1 : 1047027903}; };
  calls.local_time = [](time_t time, tm *local) {
    return !fails_now("local_time") && gmtime_r(&time, local) != nullptr;
  };
}

std::string join(const std::vector<int64_t> &results, const char *file) {
  std::string text;
  for (const int64_t result : results) text += std::to_string(result) + " ";
  return text + show(read_file(file));
}

// The abbreviations in the rows.
const struct {
  const char *text, *sign;
} signs[] = {
    {"\n", "/"},
    {"03/03/07 09:05:03 ", "@"},
    {"(\\{00\\}){3}", "~"},
    {"Program aborted./", "!"},  // the last line of the log
    {"File '([^']*)' cannot be opened./", "<no $1>"},
    {"A file could not be closed./", "<not closed>"},
    {"Length of a file could not be determined./", "<no size>"},
    {"Tried to read (\\d+) bytes. Read only (-?\\d+) bytes./", "<read $1: $2>"},
    {"Tried to write (\\d+) bytes. Wrote (-?\\d+) bytes./", "<write $1: $2>"},
    {"Could not read all of file '(\\S*)'. Read only (-?\\d+) of (\\d+) bytes/", "<$1 $3: $2>"},
};

// Each operation's result, and how a failure changes it: a line for every call whose failure
// changes the result or is reported, "CALL: RESULT; REPORT".
const struct {
  std::string (*run)();
  const char *result, *failures;
} rows[] = {
    // Kopen Kfile_size Kread Kclose Kcreat Kwrite
    {[] {
       char bytes[] = "xyz";
       const int32_t from = Kopen("text", O_RDONLY), size = Kfile_size(from);
       const int32_t read = Kread(from, bytes, 3);
       Kclose(from, 0);
       const int32_t to = Kcreat("new", 0600), first = Kwrite(to, bytes, 2);
       const int32_t second = Kwrite(to, bytes + 2, 1);
       return own.close(to), join({size, read, first, second}, "new");
     },
     "3 3 2 1 abc",
     "open: 0 -1 2 1 xyz; <no text><no size><read 3: -1>!\nsize: 0 3 2 1 abc; <no size>\n"
     "read: 3 -1 2 1 xyz; <read 3: -1>!\nclose: 3 3 2 1 abc; <not closed>\n"
     "open: 3 3 -1 -1 old; File 'new' cannot be created./<write 2: -1>!\n"
     "write: 3 3 -1 1 c; <write 2: -1>!\nwrite: 3 3 2 -1 ab; <write 1: -1>!\n"
     "1 byte of read: 3 1 2 1 ayz; <read 3: 1>!\n1 byte of write: 3 3 1 1 ac; <write 2: 1>!\n"},
    // Kfopen2 Kfread Kfopen Kfwrite Kfclose
    {[] {
       char bytes[] = "xyz";
       FILE *from = Kfopen2("text", "r"), *to = Kfopen("new", "a");
       const int32_t read = Kfread(from, bytes, 3), first = Kfwrite(to, bytes, 2);
       const int32_t second = Kfwrite(to, bytes + 2, 1);
       Kfclose(from, 0), Kfclose(to, 0);
       return join({read, first, second}, "new");
     },
     "3 2 1 oldabc",
     "open_stream: 0 2 1 oldxyz; <no text>!\nopen_stream: 3 0 0 old; <no new>!\n"
     "read_stream: 0 2 1 oldxyz; <read 3: 0>!\nwrite_stream: 3 1 1 oldac; <write 2: 1>!\n"
     "write_stream: 3 2 0 oldab; <write 1: 0>!\nclose_stream: 3 2 1 oldabc; <not closed>\n"
     "close_stream: 3 2 1 oldabc; <not closed>\n"},
    {[] { return Kcopy_file("text", "new"), join({}, "new"); }, "abc",
     "open_stream: old; <no text>!\nread_stream: old; File 'text' cannot be read./\nopen_stream: "
     "old; <no new>!\n"
     "write_stream: a; <not closed>\nread_stream: abc; File 'text' cannot be read./\n"
     "close_stream: abc; <not closed>\nclose_stream: abc; <not closed>\n"},
    {[] { return Kdelete_file("text"), join({Kprobe_file("new")}, "text"); }, "1 ",
     "unlink: 1 abc; Could not delete file 'text'/!\nexists: 0 ; \n"},
    // Klist_in Kfile_to_array Kdump_list
    {[] {
       const int32_t result = Klist_in("list");
       Kdump_list("new");
       Kdestroy_list();
       return join({result, l_length}, "new");
     },
     "0 1 ab{0A}",
     "open: 4100 0 ; <no list>\nsize: 4100 0 ; <no size>Could not open file 'list'/\n"
     "read: 0 0 ; <list 3: -1>!\nclose: 0 1 ab{0A}; <not closed>\n"
     "open_stream: 0 1 old; <no new>!\nwrite_stream: 0 1 a; <not closed>\n"
     "close_stream: 0 1 ab{0A}; <not closed>\n"
     "1 byte of read: 0 1 a{0A}; <list 3: 1>!\n"},
    // Kread_all_parameter_files Manage_parameter_file Kpathname Kcwd
    {[] {
       Kread_all_parameter_files("a.txt");
       return join({parameters::number(parameters::Number::kti_width)}, "");
     },
     "7 ",
     "working_directory: 999999 ; Unable to get current working directory./!\nexists: 999999 ; \n"
     "open: 999999 ; <no a.par>\nsize: 999999 ; <no size>Could not open file 'a.par'/\n"
     "read: 999999 ; <a.par 13: -1>!\nclose: 7 ; <not closed>\n"
     "1 byte of read: 999999 ; <a.par 13: 1>!\n"},
    // Kmain_loop Kstart_logging_file Klogging Kend_prog; the new log reports that the old one could
    // not be closed
    {[] {
       char program[] = "p", option[] = "-LOG-PATHNAME", value[] = "b.log";
       char *argv[] = {program, option, value};
       const K_hook start = [] { Klogging("a\n"); };
       Kmain_loop(3, argv, nullptr, "", 1, nullptr, start, nullptr);
       return join({}, "b.log");
     },
     "@a{0A}",
     "open_stream: ; <no b.log>!\nclose_stream: @A file could not be closed.{0A}@a{0A}; \n"
     "now: 69/12/31 23:59:59 a{0A}; \nlocal_time: 00/01/00 00:00:00 a{0A}; \n"
     "write_stream: 03/03/07 a{0A}; \nwrite_stream: @a; \n"},
    // kti_format empty_double_stack: the stream's error mark is the report
    {[] {
       FILE *stream = own.open_stream("new", "a");
       char sentence[] = "a";
       init_kti_format(1);
       kti_format(stream, sentence, 1);
       init_double_stack();
       push_on_double_stack(0, "bc");
       empty_double_stack(stream);
       free_double_stack();
       return join({std::ferror(stream) != 0, own.close_stream(stream)}, "new");
     },
     "0 0 old{90}0 a{91}{0A}bc",
     "write_stream: 1 0 old{90}0 bc; \nwrite_stream: 1 0 old{90}0 a{91}{0A}b; \n"},
    // store_anchor finish_anchor_index_file read_anchor_indexes read_anchor
    {[] {
       const int32_t text = own.open("text", O_RDWR, 0), index = own.open("new", O_RDWR, 0);
       store_anchor(text, index, "de");
       finish_anchor_index_file(text, index);
       own.seek(index, 0, SEEK_SET);
       read_anchor_indexes(index);
       const std::string read = take(read_anchor(text, 1)) + " " + read_file("text");
       free_anchor_indexes();
       return read + " " + join({own.close(text), own.close(index)}, "new");
     },
     "de abcde 0 0 {03}~{05}~",
     "seek:  dec 0 0 {FF}{FF}{FF}{FF}{03}~; Seek error./Seek error./<read 4: 0>!\n"
     "write:  abc 0 0 {03}~{03}~; <write 2: -1>!\nwrite: (null) abcde 0 0 {05}~; <write 4: -1>!\n"
     "seek: (null) abcde 0 0 {03}~{FF}{FF}{FF}{FF}; Seek error./Internal error. Anchor #1 ends "
     "before it begins./\n"
     "write: (null) abcde 0 0 {03}~; <write 4: -1>!\n"
     "size: (null) abcde 0 0 {03}~{05}~; <no size>Internal error. There is no anchor #1./\n"
     "read: (null) abcde 0 0 {03}~{05}~; <read 8: -1>!\n"
     "seek:  abcde 0 0 {03}~{05}~; Seek error./<read 2: 0>!\n"
     "read:  abcde 0 0 {03}~{05}~; <read 2: -1>!\n"
     "1 byte of write: d abcd 0 0 {03}~{04}~; <write 2: 1>!\n"
     "1 byte of write: (null) abcde 0 0 {03}{05}~; <write 4: 1>!\n"
     "1 byte of write: (null) abcde 0 0 {03}~{05}; <write 4: 1>!\n"
     "1 byte of read: (null) abcde 0 0 {03}~{05}~; <read 8: 1>!\n"
     "1 byte of read: d abcde 0 0 {03}~{05}~; <read 2: 1>!\n"},
};

int64_t open_files() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(Library, ReportsEveryFailingCallAndLeavesTheRestIntact) {
  put_in_failing_calls();
  std::vector<std::pair<std::regex, const char *>> replaced = {{std::regex(directory_ + "/"), ""}};
  for (const auto &[text, sign] : signs) replaced.emplace_back(text, sign);
  // The result of a row with its n-th call failing in this way, and what was logged.
  const auto run = [&](auto row, Way way, int n) {
    release_modules();
    Ksourcecode_defaults_for_parms("c:\\kavro\\");
    write_file("text", "abc");
    write_file("new", "old");
    write_file("list", "ab\n");
    write_file("a.par", "\x96KTI-WIDTH=7\n");
    std::filesystem::remove("b.log");
    log();
    plan = {way, n, ""};
    std::string outcome = row.run() + "; ";
    plan.until_failure = 0;
    outcome += log();
    for (const auto &[text, sign] : replaced) outcome = std::regex_replace(outcome, text, sign);
    return outcome;
  };
  for (const auto &row : rows) {
    const std::string good = std::string(row.result) + "; ";
    std::string failures;
    for (const Way way : {failing, moving_one_byte, interrupted}) {
      bool failed = true;
      for (int n = 1; failed; ++n) {
        ASSERT_EQ(run(row, way, 0), good);
        const int64_t files = open_files(), blocks = blocks_in_use();
        const std::string outcome = run(row, way, n), line = plan.call + ": " + outcome + "\n";
        failed = !plan.call.empty();
        if (outcome != good) failures += (way == moving_one_byte ? "1 byte of " : "") + line;
        EXPECT_EQ(open_files(), files) << line;
        EXPECT_EQ(blocks_in_use(), blocks) << line;
      }
    }
    EXPECT_EQ(failures, row.failures);
  }
}

}  // namespace

}  // namespace klib::test
