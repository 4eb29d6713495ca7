// An output file that appears under its name only when it is complete.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace klib::programs {

// Opened under a temporary name beside the final one. finish() completes the file, and the rename
// of publish() gives it its name; a file that is not published disappears with the object. What
// exists under the name and is no regular file, such as a pipe, or is one only by a name in /dev,
// is written directly, and so is standard output, "-". Failures end the job (fail()).
//
// The library flushes its stream after every sentence. As nobody reads the file before it is
// complete, what the stream writes is collected and written in blocks.
class OutputFile {
 public:
  explicit OutputFile(const std::string &name);
  ~OutputFile();
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;

  const char *name() const { return name_.c_str(); }
  FILE *stream() { return stream_; }
  int descriptor() { return descriptor_; }  // for a file that is written without the stream
  void write(std::string_view text);
  void check();  // for what others have written to the stream
  void replace(size_t position, std::string_view bytes);  // in what has been written
  void finish();                                          // writes everything out and closes
  // Removes what has the name now, for a job of several files of which this must not be beside new
  // ones.
  void remove_old();
  void publish();  // finish() first, for all files of a job before the first is published

 private:
  friend void publish_all(std::span<OutputFile *const> files);
  static ssize_t take(void *file, const char *bytes, size_t count);
  bool write_out();

  std::string name_;                // as it was given
  std::string target_, temporary_;  // no temporary name: written directly
  int descriptor_ = -1;
  FILE *stream_ = nullptr;
  bool is_published_ = false;  // under a name that was a temporary one's
  std::string block_;          // what the stream has written and the file does not have yet
};

// Publishes the files in this order: all, or none when one of them cannot be.
void publish_all(std::span<OutputFile *const> files);

}  // namespace klib::programs
