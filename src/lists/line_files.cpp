// Whole files as arrays of lines: one buffer with the file and a final NUL, and one array with the
// start of every line in it. Two kinds of file:
//
//   text file         LF and NUL end a line; a CR becomes NUL and so cuts its line short without
//                     starting another: "a{0D}b{0A}c" is "a" and "c"
//   NUL-separated     NUL ends an entry, no other byte is special
//
// Empty lines at the end are not counted. The buffer is split in place in two passes: one counts
// the separators, so that the array is allocated once, the other writes the array.

#include <algorithm>
#include <bit>
#include <cstring>

#include "files/checked_files.h"
#include "frame/memory.h"
#include "frame/messages.h"
#include "klib.h"
#include "platform/platform.h"
#include "text/byte_blocks.h"

namespace klib::containers {

namespace {

constexpr size_t fetch_ahead = 2048;  // bytes: the walk waits for memory otherwise

enum class Kind { text, nul_separated };

struct Descriptor {
  int32_t number;
  explicit Descriptor(int32_t opened) : number(opened) {}
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;
  ~Descriptor() {
    if (number >= 0) Kclose(number, 0);
  }
};

// The file's `size` bytes and a NUL. What cannot be read is reported and stays NUL.
memory::Text read_whole(const char *name, int32_t descriptor, int32_t size) {
  const size_t bytes = static_cast<size_t>(size);
  memory::Text buffer = memory::allocate_array<char>(bytes + 1);
  const int64_t read = files::read_once(descriptor, buffer.get(), bytes);
  const size_t arrived = static_cast<size_t>(std::max<int64_t>(read, 0));
  std::memset(buffer.get() + arrived, 0, bytes + 1 - arrived);
  if (read < size) {
    report_and_abort(MESSAGE_LIST_FILE_READ_SHORT, name, static_cast<int32_t>(read), size);
  }
  return buffer;
}

// Which of a block's bytes end a line, and which become NUL.
struct Marks {
  uint64_t separators;
  uint64_t cleared;
};

template <Kind kind>
Marks marks_of(const char *block) {
  const uint64_t nuls = bytes_equal_to('\0', block);
  if (kind == Kind::nul_separated) return {nuls, 0};
  const uint64_t line_feeds = bytes_equal_to('\n', block);
  return {nuls | line_feeds, line_feeds | bytes_equal_to('\r', block)};
}

// Calls `visit` with every block that may contain a marked byte, and its address in the text. The
// last one is padded with plain bytes.
template <class Visit>
void for_each_block(char *bytes, size_t size, Visit visit) {
  for (; size >= block_size; bytes += block_size, size -= block_size) {
    __builtin_prefetch(bytes + fetch_ahead);
    if (lowest_at_most('\r', bytes)) visit(bytes, bytes);
  }
  char rest[block_size];
  std::memset(rest, 'x', sizeof rest);
  std::memcpy(rest, bytes, size);
  visit(rest, bytes);
}

template <Kind kind>
size_t count_separators(char *bytes, size_t size) {
  size_t count = 0;
  for_each_block(bytes, size, [&](const char *block, char *) {
    count += static_cast<size_t>(std::popcount(marks_of<kind>(block).separators));
  });
  return count;
}

template <Kind kind>
void split(char *bytes, size_t size, char **lines) {
  *lines++ = bytes;
  for_each_block(bytes, size, [&](const char *block, char *at) {
    Marks marks = marks_of<kind>(block);
    for (; marks.cleared != 0; marks.cleared &= marks.cleared - 1)
      at[std::countr_zero(marks.cleared)] = '\0';
    for (; marks.separators != 0; marks.separators &= marks.separators - 1)
      *lines++ = at + std::countr_zero(marks.separators) + 1;
  });
}

// The number of lines without the empty ones at the end.
int32_t count_lines(char **lines, size_t count) {
  while (count > 0 && *lines[count - 1] == '\0') --count;
  return static_cast<int32_t>(count);
}

template <Kind kind>
char **read_lines(const char *name, int32_t *count) {
  *count = 0;
  return memory::guarded<char **>(nullptr, [&]() -> char ** {
    const Descriptor file(Kopen(name, platform::read_only));
    if (file.number < 0) return nullptr;
    const int32_t size = Kfile_size(file.number);
    if (size == 0) {
      if (kind == Kind::text) Kmessage(MESSAGE_EMPTY_LIST_FILE, name);
      return nullptr;
    }
    memory::Text buffer = read_whole(name, file.number, size);
    const size_t bytes = static_cast<size_t>(size);
    const size_t starts = count_separators<kind>(buffer.get(), bytes) + 1;
    auto lines = memory::allocate_array<char *>(starts);
    split<kind>(buffer.get(), bytes, lines.get());
    *count = count_lines(lines.get(), starts);
    buffer.release();  // the caller's through the first line
    return lines.release();
  });
}

}  // namespace

}  // namespace klib::containers

// Exported names

using namespace klib;
using namespace klib::containers;

char **Kfile_to_array(const char *name, int32_t *count) {
  return read_lines<Kind::text>(name, count);
}

char **Kndxfile_to_array(const char *name, int32_t *count) {
  return read_lines<Kind::nul_separated>(name, count);
}
