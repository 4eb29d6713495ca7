// The first line of the files of a job: which extraction they belong to, and their languages.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "programs/common/program.h"

namespace klib::programs {

// Of all formats of the programs; a file of another version is refused.
constexpr int format_version = 2;

struct JobHeader {
  std::string mark;            // of the content, the same in all files of an extraction
  std::string language;        // of the document
  std::string target;          // of a sentence file that is a translation, else empty
  std::string kind, encoding;  // of an anchor file: what the document is

  // The language of what is in a sentence file.
  const std::string &own_language() const { return target.empty() ? language : target; }
};

// A mark is made of content, piece by piece.
class ContentMark {
 public:
  void add(std::string_view bytes);
  std::string text() const;  // 16 hexadecimal digits

 private:
  uint64_t state_ = 0;
};

// The lines, with their line feed. The mark begins at mark_position in both.
constexpr size_t mark_size = 16;
std::string sentence_header(const JobHeader &header);
std::string anchor_header(const JobHeader &header);
size_t mark_position(std::string_view header_line);

// Reads a line without its line feed; anything but a header of this version ends the job (fail()).
// `file` is the name for the message.
JobHeader read_sentence_header(const char *file, std::string_view line);
JobHeader read_anchor_header(const char *file, std::string_view line);

// Ends the job when sentences and anchors come from different extractions.
void check_same_job(const char *sentence_file, const JobHeader &sentences, const char *anchor_file,
                    const JobHeader &anchors);

// The language of what is in a sentence file that begins with this line; empty when it is no header
// of this version.
std::string language_of_header(std::string_view line);

// Sets a parameter to the language that a file names, so that it need not be given. If another one
// was given, the job ends.
void fit_language(TextParameter name, const std::string &language, const char *file);

}  // namespace klib::programs
