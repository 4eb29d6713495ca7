// Sorting of text lines by their unsigned bytes.
#pragma once

#include <cstddef>

namespace klib::containers {

// Sorts `count` pointers to texts in the order of ustrcmp. The bytes from `readable` up to
// `readable_end` can all be read, so that texts inside are looked at eight bytes at a time.
void sort_lines(char **lines, size_t count, const char *readable, const char *readable_end);

}  // namespace klib::containers
