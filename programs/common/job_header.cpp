// The lines are
//
//   klib-sentences 2 0123456789abcdef ENGLISH [GERMAN]
//   klib-page 2 0123456789abcdef ENGLISH html UTF-8
//
// Words are one blank apart; the name of an encoding is the rest of its line.
#include "programs/common/job_header.h"

#include <charconv>

#include "programs/common/languages.h"
#include "programs/common/printable.h"

namespace klib::programs {
namespace {

constexpr std::string_view sentence_word = "klib-sentences", anchor_word = "klib-page";

// The next word of the line, which loses it and the blank after it.
std::string_view take_word(std::string_view &line) {
  const std::string_view word = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(word.size() + 1, line.size()));
  return word;
}

std::string begin_header(std::string_view word, const JobHeader &header) {
  std::string line(word);
  line.append(" ").append(std::to_string(format_version)).append(" ").append(header.mark);
  return line.append(" ").append(header.language);
}

[[noreturn]] void fail_at_header(const char *file) {
  fail(
      {file, 1}, "no-header", {},
      "the first line is not a header: the file is damaged, was not written by klib's programs, or "
      "by a version before %d",
      format_version);
}

bool is_language(const std::string &name) { return !name.empty() && language_name(name) == name; }

// Reads what both kinds of lines begin with.
JobHeader read_begin(const char *file, std::string_view word, std::string_view &line) {
  if (take_word(line) != word) fail_at_header(file);
  const std::string_view number = take_word(line);
  int version = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), version);
  if (result.ec != std::errc() || result.ptr != number.data() + number.size()) fail_at_header(file);
  if (version != format_version)
    fail({file, 1}, "wrong-version", {{"version", version}},
         "has the format of version %d, and these programs have version %d: %s", version,
         format_version,
         version < format_version ? "extract the document again" : "use those that wrote it");
  JobHeader header;
  header.mark = take_word(line);
  header.language = take_word(line);
  if (header.mark.size() != mark_size || !is_language(header.language)) fail_at_header(file);
  return header;
}

uint64_t mix(uint64_t state, uint64_t word) {
  state = (state ^ word) * 0x9E3779B97F4A7C15;
  return state ^ state >> 32;
}

// Up to eight bytes as a number, the first the lowest.
uint64_t word_of(std::string_view bytes) {
  uint64_t word = 0;
  for (size_t i = bytes.size(); i-- > 0;) word = word << 8 | static_cast<unsigned char>(bytes[i]);
  return word;
}

}  // namespace

void ContentMark::add(std::string_view bytes) {
  state_ = mix(state_, bytes.size());
  for (; bytes.size() >= 8; bytes.remove_prefix(8))
    state_ = mix(state_, word_of(bytes.substr(0, 8)));
  state_ = mix(state_, word_of(bytes));
}

std::string ContentMark::text() const {
  std::string digits;
  for (int shift = 60; shift >= 0; shift -= 4)
    digits += "0123456789abcdef"[mix(state_, 0) >> shift & 0xF];
  return digits;
}

std::string sentence_header(const JobHeader &header) {
  std::string line = begin_header(sentence_word, header);
  if (!header.target.empty()) line.append(" ").append(header.target);
  return line += '\n';
}

std::string anchor_header(const JobHeader &header) {
  std::string line = begin_header(anchor_word, header);
  return line.append(" ").append(header.kind).append(" ").append(header.encoding).append("\n");
}

size_t mark_position(std::string_view header_line) {
  return header_line.find(' ', header_line.find(' ') + 1) + 1;
}

JobHeader read_sentence_header(const char *file, std::string_view line) {
  JobHeader header = read_begin(file, sentence_word, line);
  header.target = take_word(line);
  if (!line.empty() || !(header.target.empty() || is_language(header.target))) fail_at_header(file);
  return header;
}

JobHeader read_anchor_header(const char *file, std::string_view line) {
  // The first version has nothing but the encoding after its number.
  JobHeader header = read_begin(file, anchor_word, line);
  header.kind = take_word(line);
  header.encoding = line;
  if (header.encoding.empty()) fail_at_header(file);
  return header;
}

void check_same_job(const char *sentence_file, const JobHeader &sentences, const char *anchor_file,
                    const JobHeader &anchors) {
  if (sentences.mark == anchors.mark && sentences.language == anchors.language) return;
  fail({sentence_file, 1}, "wrong-job", {},
       "does not belong to %s: it comes from another document or extraction", anchor_file);
}

std::string language_of_header(std::string_view line) {
  if (take_word(line) != sentence_word || take_word(line) != std::to_string(format_version))
    return "";
  take_word(line);
  const std::string_view source = take_word(line), target = take_word(line);
  return language_name(target.empty() ? source : target);
}

void fit_language(TextParameter name, const std::string &language, const char *file) {
  if (!skparm || parameter(name) == language) return;
  if (is_given(name))
    fail({file, 1}, "wrong-language", {}, "is in %s, but the language given is %s",
         printable(language).c_str(), parameter(name));
  set_parameter(name, language);
}

}  // namespace klib::programs
