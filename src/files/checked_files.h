// What the library's own file code shares beyond the exported operations.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace klib::files {

// Reads with one call of the platform, made again only when a signal interrupted it before any byte
// was moved. The bytes read, -1 on an error; reports nothing.
[[nodiscard]] int64_t read_once(int32_t descriptor, void *buffer, size_t count);

// Kfclose for a stream that was copied from or to: a transfer that stayed incomplete is reported
// as a file that could not be closed, so that a half-written file is never taken for a whole one.
void close_stream(FILE *stream, bool complete);

}  // namespace klib::files
