// UTF-8 in and out. Well-formed sequences are those of the Unicode standard's table: the length
// follows from the first byte, and the second byte's range from the first where it is narrower.
#include "programs/common/utf8.h"

#include <cstdint>
#include <cstring>

namespace klib::programs {
namespace {

bool is_surrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

}  // namespace

char32_t next_utf8(std::string_view text, size_t &position) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(position);
  if (first < 0x80) {
    position++;
    return first;
  }
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || length > text.size() - position) return invalid_utf8;
  char32_t c = first & (0x7F >> length);
  for (size_t i = 1; i < length; i++) {
    if ((byte(position + i) & 0xC0) != 0x80) return invalid_utf8;
    c = c << 6 | (byte(position + i) & 0x3F);
  }
  constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (c < smallest[length] || c > 0x10FFFF || is_surrogate(c)) return invalid_utf8;
  position += length;
  return c;
}

void append_utf8(char32_t c, std::string &text) {
  const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (c >> shift & 0x3F)); };
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += static_cast<char>(0xC0 | c >> 6);
    tail(0);
  } else if (c < 0x10000) {
    text += static_cast<char>(0xE0 | c >> 12);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | c >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

size_t ascii_length(std::string_view text) {
  size_t length = 0;
  for (uint64_t eight; length + sizeof eight <= text.size(); length += sizeof eight) {
    memcpy(&eight, text.data() + length, sizeof eight);
    if ((eight & 0x8080808080808080) != 0) break;
  }
  while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80) length++;
  return length;
}

size_t find_invalid_utf8(std::string_view text) {
  for (size_t position = 0;;) {
    position += ascii_length(text.substr(position));
    if (position == text.size()) return std::string_view::npos;
    if (next_utf8(text, position) == invalid_utf8) return position;
  }
}

}  // namespace klib::programs
