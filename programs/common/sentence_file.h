// A sentence file, read frame by frame.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "programs/common/input_file.h"
#include "programs/common/job_header.h"

namespace klib::programs {

// Reads through the library's parser, of which it keeps one level open while it lives. The language
// of the file becomes "LANGUAGE" (fit_language()). Failures (no file, no header, another language,
// a NUL, a frame that is cut off or is inside another, text between frames, an anchor without a
// number) end the job (fail()).
class SentenceFile {
 public:
  enum Kind { end, frame, anchor };

  // With the language of the file as it is, whatever "LANGUAGE" is, if not `fits_language`.
  explicit SentenceFile(const char *name, bool fits_language = true);
  ~SentenceFile();
  SentenceFile(const SentenceFile &) = delete;
  SentenceFile &operator=(const SentenceFile &) = delete;

  // The next frame, or the next anchor between frames.
  Kind next();
  const std::string &text() const { return text_; }  // of the frame; line ends are blanks
  int32_t number() const { return number_; }         // of the frame or the anchor
  int64_t line() const { return line_; }             // where the frame or anchor begins, from 1
  const char *name() const { return name_.c_str(); }
  const JobHeader &header() const { return header_; }

 private:
  void read_header();
  void take_frame(char *code);

  std::string name_, text_;
  InputFile stream_;
  JobHeader header_;
  int32_t number_ = 0;
  int64_t line_ = 2, next_line_ = 2;
};

}  // namespace klib::programs
