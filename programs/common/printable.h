// Text that others have written, made harmless for terminals and for scripts.
#pragma once

#include <string>
#include <string_view>

namespace klib::programs {

// Whether a character can be shown as it is: not a control, a directional mark, override or
// isolate, not without width, and assigned to text by Unicode.
bool is_printable(char32_t character);

// UTF-8 for a terminal: what is not printable becomes {U+202E}, a byte that is not UTF-8 {9B}.
// Every text of a file, of the command line and of a file's name goes through this before it is
// shown to a person.
std::string printable(std::string_view text);

// Engine text for people: printable ASCII as it is, every other byte as {9D}.
std::string readable(std::string_view bytes);

// Appends the text as a JSON string with its quotes; a byte that is not UTF-8 becomes U+FFFD.
void append_json(std::string_view text, std::string &json);

}  // namespace klib::programs
