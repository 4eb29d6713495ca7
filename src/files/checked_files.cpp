// Checked file operations: the platform's descriptor and stream calls with the library's reports.
//
// Two policies. Failures to open, create, close and size a descriptor are reported and tolerated:
// the caller goes on with -1, 0 or nothing. Failures to open a stream, to read, to write and to
// delete are reported and take the abort path, which closes the log and returns; then the operation
// returns its failure result. A read or write of less than the full count is a failure.

#include "files/checked_files.h"

#include <algorithm>
#include <cerrno>
#include <limits>

#include "frame/messages.h"
#include "klib.h"
#include "platform/platform.h"

namespace klib::files {

namespace {

constexpr size_t copy_block = 65536;
constexpr size_t largest_move = 0x7FFFF000;
constexpr int mode_of_new_files = 0666;  // less what the process masks out

// A call of the platform, made again for as long as a signal interrupts it before it does anything.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

// Moves `count` bytes with one call of the platform, `call(from, count)`, and with another for the
// last bytes of almost 2 GiB, of which the platform moves no more than `largest_move` at a time.
// The bytes moved, or -1.
template <class Call>
int64_t move_bytes(size_t count, Call call) {
  int64_t moved = uninterrupted([&] { return call(0, count); });
  if (moved == largest_move && count > largest_move) {
    const auto rest = [&] { return call(largest_move, count - largest_move); };
    moved += std::max<int64_t>(uninterrupted(rest), 0);
  }
  return moved;
}

// The same for reading from a stream; the bytes that did arrive are valid. Writing to a stream is
// never repeated: what its buffer contained when a signal interrupted it is lost.
size_t read_stream(void *buffer, size_t count, FILE *stream) {
  for (size_t moved = 0;;) {
    errno = 0;
    moved +=
        platform::calls.read_stream(static_cast<char *>(buffer) + moved, count - moved, stream);
    if (moved == count || errno != EINTR || std::ferror(stream) == 0) return moved;
    std::clearerr(stream);
  }
}

int open_file(const char *name, int flags, int mode) {
  return uninterrupted([&] { return platform::calls.open(name, flags, mode); });
}

int32_t checked_read(int32_t count, int64_t moved) {
  if (count < 0 || moved != count)
    report_and_abort(MESSAGE_SHORT_READ, count, static_cast<int32_t>(moved));
  return static_cast<int32_t>(moved);
}

int32_t checked_write(int32_t count, int64_t moved) {
  if (count < 0 || moved != count)
    report_and_abort(MESSAGE_SHORT_WRITE, count, static_cast<int32_t>(moved));
  return static_cast<int32_t>(moved);
}

}  // namespace

int64_t read_once(int32_t descriptor, void *buffer, size_t count) {
  return move_bytes(count, [&](size_t from, size_t size) {
    return platform::calls.read(descriptor, static_cast<char *>(buffer) + from, size);
  });
}

void close_stream(FILE *stream, bool complete) {
  const bool closed = stream != nullptr && platform::calls.close_stream(stream) == 0;
  if (!closed || !complete) Kmessage(MESSAGE_FILE_NOT_CLOSED);
}

}  // namespace klib::files

// Exported names

using namespace klib;
using namespace klib::files;

int32_t Kopen(const char *name, int32_t flags) {
  const int descriptor = open_file(name, flags, mode_of_new_files);
  if (descriptor >= 0) return descriptor;
  const int error = errno;
  Kmessage(MESSAGE_FILE_NOT_OPENED, name);
  Kexplain_error(error);
  return -1;
}

int32_t Kcreat(const char *name, int32_t mode) {
  const int descriptor = open_file(name, O_WRONLY | O_CREAT | O_TRUNC, mode);
  if (descriptor >= 0) return descriptor;
  const int error = errno;
  Kmessage(MESSAGE_FILE_NOT_CREATED, name);
  Kexplain_error(error);
  return -1;
}

FILE *Kfopen(const char *name, const char *mode) { return Kfopen_i(name, mode, 1); }

FILE *Kfopen2(const char *name, const char *mode) { return Kfopen_i(name, mode, 0); }

FILE *Kfopen_i(const char *name, const char *mode, int32_t) {
  FILE *stream = platform::calls.open_stream(name, mode);
  while (stream == nullptr && errno == EINTR) stream = platform::calls.open_stream(name, mode);
  if (stream != nullptr) return stream;
  const int error = errno;
  Kmessage(MESSAGE_FILE_NOT_OPENED, name);
  Kexplain_error(error);
  Kabort_prog();
  return nullptr;
}

void Kclose(int32_t descriptor, int32_t) {
  if (platform::calls.close(descriptor) != 0) Kmessage(MESSAGE_FILE_NOT_CLOSED);
}

void Kfclose(FILE *stream, int32_t) { close_stream(stream, true); }

int32_t Kfile_size(int32_t descriptor) {
  const int64_t size = platform::calls.size(descriptor);
  if (size >= 0 && size <= std::numeric_limits<int32_t>::max()) return static_cast<int32_t>(size);
  Kmessage(MESSAGE_NO_FILE_LENGTH);
  return 0;
}

int32_t Kread(int32_t descriptor, void *buffer, int32_t count) {
  const int64_t moved = count < 0 ? -1 : read_once(descriptor, buffer, static_cast<size_t>(count));
  return checked_read(count, moved);
}

int32_t Kwrite(int32_t descriptor, const void *buffer, int32_t count) {
  int64_t moved = -1;
  if (count >= 0)
    moved = move_bytes(static_cast<size_t>(count), [&](size_t from, size_t size) {
      return platform::calls.write(descriptor, static_cast<const char *>(buffer) + from, size);
    });
  return checked_write(count, moved);
}

int32_t Kfread(FILE *stream, void *buffer, int32_t count) {
  size_t moved = 0;
  if (stream != nullptr && buffer != nullptr && count > 0)
    moved = read_stream(buffer, static_cast<size_t>(count), stream);
  return checked_read(count, static_cast<int64_t>(moved));
}

int32_t Kfwrite(FILE *stream, const void *buffer, int32_t count) {
  size_t moved = 0;
  if (stream != nullptr && buffer != nullptr && count > 0)
    moved = platform::calls.write_stream(buffer, static_cast<size_t>(count), stream);
  return checked_write(count, static_cast<int64_t>(moved));
}

int32_t Kprobe_file(const char *name) { return platform::calls.exists(name) ? 1 : 0; }

void Kdelete_file(const char *name) {
  if (platform::calls.unlink(name) == 0) return;
  const int error = errno;
  Kmessage(MESSAGE_FILE_NOT_DELETED, name);
  Kexplain_error(error);
  Kabort_prog();
}

void Kcopy_file(const char *source, const char *target) {
  // The source first: when it cannot be opened, or is a directory, the target is not touched.
  FILE *from = Kfopen2(source, platform::read_text);
  if (from == nullptr) return;
  char block[copy_block];
  size_t size = read_stream(block, sizeof block, from);
  const bool readable = size > 0 || std::ferror(from) == 0;
  // Opening the target would empty the source when both are one file.
  const bool copies = readable && !platform::calls.is_file_of_name(from, target);
  FILE *to = copies ? Kfopen2(target, platform::write_text) : nullptr;
  bool written = true;
  while (to != nullptr && written && size > 0) {
    written = platform::calls.write_stream(block, size, to) == size;
    size = read_stream(block, sizeof block, from);
  }
  if (std::ferror(from) != 0) Kdisplay(MESSAGE_FILE_NOT_READ, source);
  close_stream(from, true);
  if (to != nullptr) close_stream(to, written);
}
