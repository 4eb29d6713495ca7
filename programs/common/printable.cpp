// A terminal obeys escape sequences and directional overrides wherever they come from, so a page or
// a file's name could rewrite what a person sees. This file is the one place that decides what
// reaches a terminal.
#include "programs/common/printable.h"

#include <algorithm>
#include <iterator>

#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

constexpr const char *digits = "0123456789ABCDEF";

// Characters that a terminal obeys, or that are invisible, in ascending order. Joiners and
// variation selectors are part of words and stay.
constexpr struct {
  char32_t first, last;
} hidden[] = {
    {0x0000, 0x001F},      {0x007F, 0x009F},   {0x00AD, 0x00AD},   {0x061C, 0x061C},
    {0x115F, 0x1160},      {0x180E, 0x180E},   {0x200B, 0x200B},   {0x200E, 0x200F},
    {0x2028, 0x202E},      {0x2060, 0x206F},   {0x3164, 0x3164},   {0xD800, 0xF8FF},
    {0xFDD0, 0xFDEF},      {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},
    {0xFFFE, 0xFFFF},      {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE00FF},
    {0xE01F0, 0x7FFFFFFF},
};
static_assert(std::ranges::is_sorted(hidden, {}, [](const auto &run) { return run.first; }));

void append_hexadecimal(uint32_t number, int least_digits, std::string &text) {
  int shift = 4 * (least_digits - 1);
  while (shift < 28 && number >> (shift + 4) != 0) shift += 4;
  for (; shift >= 0; shift -= 4) text += digits[number >> shift & 0xF];
}

void append_byte(char byte, std::string &text) {
  text += '{';
  append_hexadecimal(static_cast<unsigned char>(byte), 2, text);
  text += '}';
}

}  // namespace

bool is_printable(char32_t c) {
  if (c >= ' ' && c < 0x7F) return true;
  const auto run = std::ranges::lower_bound(hidden, c, {}, [](const auto &r) { return r.last; });
  return (run == std::end(hidden) || c < run->first) && (c & 0xFFFE) != 0xFFFE;
}

std::string printable(std::string_view text) {
  std::string result;
  for (size_t i = 0; i < text.size();) {
    const size_t begin = i;
    const char32_t c = next_utf8(text, i);
    if (c == invalid_utf8) {
      append_byte(text[i++], result);
    } else if (is_printable(c)) {
      result += text.substr(begin, i - begin);
    } else {
      result += "{U+";
      append_hexadecimal(c, 4, result);
      result += '}';
    }
  }
  return result;
}

std::string readable(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    if (c >= ' ' && c <= '~')
      text += c;
    else
      append_byte(c, text);
  }
  return text;
}

void append_json(std::string_view text, std::string &json) {
  json += '"';
  for (size_t i = 0; i < text.size();) {
    const size_t begin = i;
    const char32_t c = next_utf8(text, i);
    if (c == invalid_utf8) {
      json += "\xEF\xBF\xBD";
      i++;
    } else if (c == '"' || c == '\\') {
      json += {'\\', text[begin]};
    } else if (is_printable(c) || c > 0xFFFF) {
      json += text.substr(begin, i - begin);
    } else {
      json += "\\u";
      append_hexadecimal(c, 4, json);
    }
  }
  json += '"';
}

}  // namespace klib::programs
