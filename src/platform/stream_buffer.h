// The unread bytes of a stream's buffer, for readers that process runs of bytes and yet read no
// further than single calls of getc would. Where the runtime does not expose its buffers, they seem
// empty and readers use getc.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace klib::platform {

#if defined(__GLIBC__)

// The pointers that the runtime's own getc_unlocked uses in every program that is compiled with it.
inline std::string_view buffered_bytes(const FILE *stream) {
  const char *const next = stream->_IO_read_ptr;
  return {next, next < stream->_IO_read_end ? static_cast<size_t>(stream->_IO_read_end - next) : 0};
}

// As if this many of them had been read.
inline void skip_buffered_bytes(FILE *stream, size_t length) { stream->_IO_read_ptr += length; }

#else

inline std::string_view buffered_bytes(const FILE *) { return {}; }
inline void skip_buffered_bytes(FILE *, size_t) {}

#endif

}  // namespace klib::platform
