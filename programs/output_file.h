// An output file that appears under its name only when it is complete.
#ifndef KLIB_PROGRAMS_OUTPUT_FILE_H
#define KLIB_PROGRAMS_OUTPUT_FILE_H
#include <cstdio>
#include <string>
#include <string_view>

namespace klib::programs {

// Opened under a temporary name beside the final one. finish() completes the file, and the rename
// of publish() gives it its name; a file that is not published disappears with the object. What
// exists under the name and is no regular file, such as a pipe, or is one only by a name in /dev,
// is written directly. Failures end the job (fail()).
class OutputFile {
 public:
  explicit OutputFile(const std::string &name);
  ~OutputFile();
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;

  FILE *stream() { return stream_; }
  int descriptor() { return fileno(stream_); }
  void write(std::string_view text);
  void check();    // for what others have written to the stream
  void finish();   // writes everything out and closes
  void publish();  // finish() first, for all files of a job before the first is published

 private:
  std::string name_;                // as it was given
  std::string target_, temporary_;  // no temporary name: written directly
  FILE *stream_ = nullptr;
};

}  // namespace klib::programs
#endif
