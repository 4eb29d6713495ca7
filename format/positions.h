// Counting of positions, see positions.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

#include "klib.h"

namespace klib::parser {

// Taking a byte back mirrors reading it.
enum class Direction : int32_t { reading = -1, taking_back = 1 };
void count_byte(parser_frame &frame, uint8_t byte, Direction direction);

// Reads bytes that move no position but by one column each.
void count_run(parser_frame &frame, const char *bytes, size_t length);

}  // namespace klib::parser
