// The operating system as klib sees it: allocation, descriptors, streams, working directory, time.
//
// Every call that can fail goes through one table of function pointers, so that a test can put its
// own function in place of any entry. Nothing here reports; callers do.
#pragma once

#include <fcntl.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace klib::platform {

struct Calls {
  // Allocation: the platform allocator's own contract.
  void *(*allocate)(size_t size);
  void *(*allocate_zeroed)(size_t elements, size_t size);
  void *(*reallocate)(void *block, size_t size);
  void (*release)(void *block);

  // Descriptors: -1 on failure; a read or write may move fewer bytes than asked for.
  int (*open)(const char *name, int flags, int mode);
  int (*close)(int descriptor);
  int64_t (*read)(int descriptor, void *buffer, size_t count);
  int64_t (*write)(int descriptor, const void *buffer, size_t count);
  int64_t (*seek)(int descriptor, int64_t offset, int whence);
  int64_t (*size)(int descriptor);  // of the open file, in bytes
  bool (*exists)(const char *name);
  bool (*is_directory)(const char *name);
  int (*unlink)(const char *name);  // never removes a directory

  // Streams.
  FILE *(*open_stream)(const char *name, const char *mode);
  int (*close_stream)(FILE *stream);
  size_t (*read_stream)(void *buffer, size_t count, FILE *stream);
  size_t (*write_stream)(const void *buffer, size_t count, FILE *stream);
  bool (*is_file_of_name)(FILE *stream, const char *name);  // one file, whatever its names

  // The rest.
  char *(*working_directory)(char *buffer, size_t size);  // null on failure, too long included
  time_t (*now)();
  bool (*local_time)(time_t time, tm *broken_down);
  void (*end_process)();  // at once, with a core image where the platform makes one
};

extern Calls calls;

// Puts the platform's own functions back; for tests.
void reset();

// Flags and modes for files that klib opens for itself: child processes do not inherit them.
inline constexpr int read_only = O_RDONLY | O_CLOEXEC;
inline constexpr char read_text[] = "re";
inline constexpr char write_text[] = "we";
inline constexpr char append_text[] = "ae";

}  // namespace klib::platform
