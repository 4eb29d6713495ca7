// The programs write to the streams of the C library, which are replaced while one runs: reports of
// the sanitizers and the fuzzer bypass them.

#include "fuzz/page_jobs.h"

#include <iconv.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "programs/common/line_reader.h"

namespace klib::fuzz {

std::string any_language(Input &input) {
  static const char *const languages[] = {"ENGLISH", "GERMAN", "RUSSIAN", "GREEK"};
  return languages[input.below(4)];
}

Outcome run(const programs::Program &program, const std::vector<std::string> &arguments) {
  std::vector<std::string> all = {program.name, "-LIB-DIRECTORY", PROGRAMS_SHARE};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::vector<char *> argv;
  for (std::string &argument : all) argv.push_back(argument.data());
  fresh_library();

  static FILE *const nowhere = fopen("/dev/null", "w");
  char *messages = nullptr;
  size_t size = 0;
  FILE *const output = stdout, *const errors = stderr;
  stdout = nowhere;
  stderr = open_memstream(&messages, &size);
  const int status = run_program(program, static_cast<int>(argv.size()), argv.data());
  fclose(stderr);
  stdout = output;
  stderr = errors;
  const Outcome outcome{status == 0, std::string(messages, size)};
  free(messages);
  require(status == 0 || !outcome.messages.empty(), "what went wrong is reported");
  return outcome;
}

void clear_scratch() {
  fresh_library();
  for (const auto &entry : std::filesystem::directory_iterator("."))
    std::filesystem::remove(entry.path());
}

std::string scratch_files() {
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator("."))
    names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  std::string list;
  for (const std::string &name : names) list += name + " ";
  return list;
}

bool has_scratch(const std::string &name) { return std::filesystem::exists(name); }

std::vector<std::string> words_of(const std::string &line) {
  std::vector<std::string> words;
  size_t position = 0;
  for (std::string_view word; !(word = programs::next_word(line, position)).empty();)
    words.emplace_back(word);
  return words;
}

std::string to_utf8(const std::string &bytes, const std::string &encoding) {
  std::string from = bytes, to(4 * bytes.size() + 16, '\0');
  char *in = from.data(), *out = to.data();
  size_t in_left = from.size(), out_left = to.size();
  const iconv_t converter = iconv_open("UTF-8", encoding.c_str());
  const size_t result = iconv(converter, &in, &in_left, &out, &out_left);
  require(result != static_cast<size_t>(-1), "the page is valid in its encoding");
  iconv(converter, nullptr, nullptr, &out, &out_left);
  iconv_close(converter);
  to.resize(to.size() - out_left);
  return to;
}

}  // namespace klib::fuzz
