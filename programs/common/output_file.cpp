// Output files under temporary names.
#include "programs/common/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "programs/common/program.h"
#include "programs/system/exhaustion.h"
#include "programs/system/temporary_files.h"

namespace klib::programs {
namespace {

// A new file has the permissions that the process's mask leaves; one that replaces another keeps
// those of the old one, and its owner where that is allowed. mkstemp's own are for its owner alone.
void give_permissions(int descriptor, const struct stat *old) {
  if (old) {
    [[maybe_unused]] const int owner = fchown(descriptor, old->st_uid, old->st_gid);
    (void)fchmod(descriptor, old->st_mode & 07777);
    return;
  }
  const mode_t mask = umask(0);
  umask(mask);
  (void)fchmod(descriptor, 0666 & ~mask);
}

// Whether nobody may write the file; this binds the superuser, too, who could.
bool is_protected(const char *name, const struct stat &status) {
  return (status.st_mode & 0222) == 0 || access(name, W_OK) != 0;
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

constexpr size_t block_size = 65536;

// False with errno when not all of it can be written.
bool write_bytes(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return false;
    bytes.remove_prefix(static_cast<size_t>(std::max<ssize_t>(written, 0)));
  }
  return true;
}

}  // namespace

// What the stream calls instead of writing; fewer bytes than `count` are an error of the stream.
ssize_t OutputFile::take(void *file, const char *bytes, size_t count) {
  OutputFile &output = *static_cast<OutputFile *>(file);
  if (output.block_.size() + count > block_size && !output.write_out()) return 0;
  if (count > block_size)
    return write_bytes(output.descriptor_, {bytes, count}) ? static_cast<ssize_t>(count) : 0;
  output.block_.append(bytes, count);
  return static_cast<ssize_t>(count);
}

bool OutputFile::write_out() {
  const bool written = write_bytes(descriptor_, block_);
  block_.clear();
  return written;
}

OutputFile::OutputFile(const std::string &name)
    : name_(name == "-" ? "standard output" : name), target_(name) {
  struct stat status;
  const bool exists = name != "-" && stat(name.c_str(), &status) == 0;
  if (exists && S_ISDIR(status.st_mode)) fail(name_.c_str(), 0, "is a directory");
  block_.reserve(block_size);
  if (name == "-") {
    descriptor_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  } else if (exists && (!S_ISREG(status.st_mode) || is_device_name(name))) {
    descriptor_ = open(name.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  } else {
    if (exists && is_protected(name.c_str(), status))
      fail(name_.c_str(), 0, "is write-protected: it is not replaced");
    if (exists) target_ = behind_links(name);
    descriptor_ = make_temporary_file(target_, temporary_);
    if (descriptor_ < 0) temporary_.clear();
    if (descriptor_ >= 0) give_permissions(descriptor_, exists ? &status : nullptr);
  }
  if (descriptor_ >= 0) stream_ = fopencookie(this, "wb", {nullptr, take, nullptr, nullptr});
  if (stream_) setvbuf(stream_, nullptr, _IONBF, 0);  // what it writes is collected here
  if (!stream_) {
    const int error = errno;
    if (descriptor_ >= 0) close(descriptor_);
    if (!temporary_.empty()) remove_temporary_file(temporary_);
    fail(name_.c_str(), 0, "cannot be written: %s", error_text(error));
  }
}

OutputFile::~OutputFile() {
  if (stream_) fclose(stream_);
  if (descriptor_ >= 0) close(descriptor_);
  if (!temporary_.empty()) remove_temporary_file(temporary_);
}

void OutputFile::write(std::string_view text) {
  if (take(this, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    fail(name_.c_str(), 0, "could not be written: %s", error_text(errno));
}

void OutputFile::check() {
  if (ferror(stream_)) fail(name_.c_str(), 0, "could not be written: %s", error_text(errno));
}

void OutputFile::replace(size_t position, std::string_view bytes) {
  fflush(stream_);
  check();
  if (!write_out() || pwrite(descriptor_, bytes.data(), bytes.size(),
                             static_cast<off_t>(position)) != static_cast<ssize_t>(bytes.size()))
    fail(name_.c_str(), 0, "could not be written: %s", error_text(errno));
}

void OutputFile::finish() {
  fflush(stream_);
  check();
  if (!write_out() || close(std::exchange(descriptor_, -1)) != 0)
    fail(name_.c_str(), 0, "could not be written: %s", error_text(errno));
}

void OutputFile::remove_old() {
  if (temporary_.empty() || unlink(target_.c_str()) == 0 || errno == ENOENT) return;
  fail(name_.c_str(), 0, "cannot be replaced: %s", error_text(errno));
}

void OutputFile::publish() {
  if (temporary_.empty()) return;
  if (!keep_temporary_file(temporary_, target_))
    fail(name_.c_str(), 0, "cannot be replaced: %s", error_text(errno));
  temporary_.clear();
  is_published_ = true;
}

void publish_all(std::span<OutputFile *const> files) {
  try {
    for (OutputFile *file : files) file->publish();
  } catch (const Failed &) {
    for (const OutputFile *file : files)
      if (file->is_published_) unlink(file->target_.c_str());
    throw;
  }
}

}  // namespace klib::programs
