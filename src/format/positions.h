// Counting of positions, see positions.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

#include "klib.h"

namespace klib::parser {

// Counts a byte that is read. Taking it back is the mirror of that, which is not always its
// undoing.
void count_byte(parser_frame &frame, uint8_t byte);
void uncount_byte(parser_frame &frame, uint8_t byte);

// Counts bytes that move no position but by one column each.
void count_run(parser_frame &frame, const char *bytes, size_t length);

}  // namespace klib::parser
