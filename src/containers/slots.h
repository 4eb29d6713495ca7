// Who uses which numbered container. Array slots, byte stacks and counters are process-wide and
// shared by number; what is not listed here is free for programs.
#pragma once

#include <cstdint>

namespace klib::slots {

// String-array slots (20 in all)
inline constexpr int32_t double_stack_texts = 7;  // init_double_stack to free_double_stack
inline constexpr int32_t double_stack_tags = 8;   // as above
inline constexpr int32_t selected_font = 10;      // P_init_fonts to P_cleanup_fonts
inline constexpr int32_t font_groups = 11;        // as above
inline constexpr int32_t named_group_names = 12;  // as above
inline constexpr int32_t named_group_fonts = 13;  // as above
inline constexpr int32_t font_scratch = 14;       // one list of the font code, perhaps a caller's
inline constexpr int32_t font_packets = 15;       // P_init_fonts to P_cleanup_fonts

// Byte stacks (10 in all)
inline constexpr int32_t parser_token = 4;     // first init_parser to last exit_parser
inline constexpr int32_t parser_pushback = 5;  // as above

// Counters (16 in all)
inline constexpr int32_t sentence_counter = 0;  // sentence numbers and progress

}  // namespace klib::slots
