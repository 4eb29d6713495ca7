// Sorting of text lines by their unsigned bytes.
#pragma once

#include <cstddef>

#include "lists/line_keys.h"

namespace klib::containers {

// Sorts `count` pointers to texts in the order of ustrcmp; texts in `readable` are sorted fastest.
void sort_lines(char **lines, size_t count, Readable readable);

}  // namespace klib::containers
