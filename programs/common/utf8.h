// UTF-8 in and out, strictly: no overlong forms, no surrogates, nothing above 10FFFF.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace klib::programs {

constexpr char32_t invalid_utf8 = 0xFFFFFFFF;

// The character at `position`, which moves after it; invalid_utf8 when there is none, and the
// position stays. The position must be before the end.
char32_t next_utf8(std::string_view text, size_t &position);

void append_utf8(char32_t character, std::string &text);

// The length of the ASCII at the beginning of the text.
size_t ascii_length(std::string_view text);

// The position of the first byte that is not UTF-8, or npos.
size_t find_invalid_utf8(std::string_view text);

}  // namespace klib::programs
