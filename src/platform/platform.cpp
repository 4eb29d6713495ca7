// The platform's own functions, as the table of calls.

#include "platform/platform.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace klib::platform {

namespace {

int open_descriptor(const char *name, int flags, int mode) { return ::open(name, flags, mode); }

int64_t read_descriptor(int descriptor, void *buffer, size_t count) {
  return ::read(descriptor, buffer, count);
}

int64_t write_descriptor(int descriptor, const void *buffer, size_t count) {
  return ::write(descriptor, buffer, count);
}

int64_t seek_descriptor(int descriptor, int64_t offset, int whence) {
  return ::lseek(descriptor, offset, whence);
}

int64_t size_of_descriptor(int descriptor) {
  struct stat status;
  return ::fstat(descriptor, &status) == 0 ? int64_t{status.st_size} : -1;
}

bool name_exists(const char *name) {
  struct stat status;
  return ::stat(name, &status) == 0;
}

bool name_is_directory(const char *name) {
  struct stat status;
  return ::stat(name, &status) == 0 && S_ISDIR(status.st_mode);
}

bool stream_is_file_of_name(FILE *stream, const char *name) {
  struct stat open_file, named_file;
  return ::fstat(::fileno(stream), &open_file) == 0 && ::stat(name, &named_file) == 0 &&
         open_file.st_dev == named_file.st_dev && open_file.st_ino == named_file.st_ino;
}

size_t read_from_stream(void *buffer, size_t count, FILE *stream) {
  return std::fread(buffer, 1, count, stream);
}

size_t write_to_stream(const void *buffer, size_t count, FILE *stream) {
  return std::fwrite(buffer, 1, count, stream);
}

time_t now() { return std::time(nullptr); }

bool break_down_local_time(time_t time, tm *broken_down) {
  return ::localtime_r(&time, broken_down) != nullptr;
}

constexpr Calls own_calls = {
    .allocate = std::malloc,
    .allocate_zeroed = std::calloc,
    .reallocate = std::realloc,
    .release = std::free,
    .open = open_descriptor,
    .close = ::close,
    .read = read_descriptor,
    .write = write_descriptor,
    .seek = seek_descriptor,
    .size = size_of_descriptor,
    .exists = name_exists,
    .is_directory = name_is_directory,
    .unlink = ::unlink,
    .open_stream = std::fopen,
    .close_stream = std::fclose,
    .read_stream = read_from_stream,
    .write_stream = write_to_stream,
    .is_file_of_name = stream_is_file_of_name,
    .working_directory = ::getcwd,
    .now = now,
    .local_time = break_down_local_time,
    .end_process = std::abort,
};

}  // namespace

constinit Calls calls = own_calls;

void reset() { calls = own_calls; }

}  // namespace klib::platform
