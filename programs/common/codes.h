// The bytes of the format codes, and the font groups: the one place that knows them.
//
//   frame   {90} number blank sentence {91}
//   anchor  {94} number {95}
//   font    {98} group {FF} number {99}
//   alien   {9D} and four upper-case hexadecimal digits
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace klib::programs {

constexpr char frame_begin = '\x90', frame_end = '\x91';
constexpr char anchor_begin = '\x94', anchor_end = '\x95';
constexpr char font_begin = '\x98', font_separator = '\xFF', font_end = '\x99';
constexpr char alien_marker = '\x9D';

// Whether the parser takes the byte for a code, so that it never comes from text.
constexpr bool is_code_byte(int byte) {
  return (byte >= 0x1D && byte <= 0x1F) || (byte >= 0x90 && byte <= 0x9D);
}

// The font groups, in the order of their declaration: the one list of them. The parameter file
// declares the same names, and a job ends with a message while it does not.
namespace groups {
enum : int { none = -1, weight, slant, face, line, height, count };
}
constexpr int font_group_count = groups::count;
constexpr const char *font_groups[font_group_count] = {"weight", "slant", "face", "line", "height"};
static_assert(font_groups[font_group_count - 1] != nullptr, "every group has a name");

// The number in font_groups of the group of `length` bytes at `name`, or -1.
inline int font_group(const char *name, size_t length) {
  for (int i = 0; i < font_group_count; i++)
    if (strlen(font_groups[i]) == length && memcmp(font_groups[i], name, length) == 0) return i;
  return -1;
}

// Appends a code to the text of a frame.
void append_anchor(int32_t number, std::string &text);
void append_font(int group, int32_t number, std::string &text);

}  // namespace klib::programs
