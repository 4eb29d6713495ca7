// Output files under temporary names.
#include "programs/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "programs/program.h"

namespace klib::programs {
namespace {

// The permissions that a new file would have: mkstemp's own are for its owner alone.
void give_usual_permissions(int descriptor) {
  const mode_t mask = umask(0);
  umask(mask);
  (void)fchmod(descriptor, 0666 & ~mask);
}

// Names like /dev/stdout, which are links to whatever a program has open.
bool is_device_name(const std::string &name) {
  return name.starts_with("/dev/") || name.starts_with("/proc/");
}

// The file that a symbolic link leads to, so that the link stays one.
std::string behind_links(const std::string &name) {
  const std::unique_ptr<char, void (*)(void *)> path(realpath(name.c_str(), nullptr), free);
  return path ? path.get() : name;
}

}  // namespace

OutputFile::OutputFile(const std::string &name) : name_(name), target_(name) {
  struct stat status;
  const bool exists = stat(name.c_str(), &status) == 0;
  if (exists && S_ISDIR(status.st_mode)) fail(name.c_str(), 0, "is a directory");
  int descriptor;
  if (exists && (!S_ISREG(status.st_mode) || is_device_name(name))) {
    descriptor = open(name.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  } else {
    if (exists) target_ = behind_links(name);
    temporary_ = target_ + ".XXXXXX";
    descriptor = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor >= 0) give_usual_permissions(descriptor);
  }
  if (descriptor >= 0) stream_ = fdopen(descriptor, "wb");
  if (!stream_) {
    const int error = errno;
    if (descriptor >= 0) close(descriptor);
    if (descriptor >= 0 && !temporary_.empty()) unlink(temporary_.c_str());
    fail(name.c_str(), 0, "cannot be written: %s", strerror(error));
  }
}

OutputFile::~OutputFile() {
  if (stream_) fclose(stream_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::write(std::string_view text) {
  fwrite(text.data(), 1, text.size(), stream_);
  check();
}

void OutputFile::check() {
  if (ferror(stream_)) fail(name_.c_str(), 0, "could not be written: %s", strerror(errno));
}

void OutputFile::finish() {
  fflush(stream_);
  check();
  FILE *const stream = stream_;
  stream_ = nullptr;
  if (fclose(stream) != 0) fail(name_.c_str(), 0, "could not be written: %s", strerror(errno));
}

void OutputFile::publish() {
  if (temporary_.empty()) return;
  if (rename(temporary_.c_str(), target_.c_str()) != 0)
    fail(name_.c_str(), 0, "cannot be replaced: %s", strerror(errno));
  temporary_.clear();
}

}  // namespace klib::programs
