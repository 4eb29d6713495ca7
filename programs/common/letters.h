// What markup is about in a word, and what only stands around it.
#pragma once

namespace klib::programs {

// Whether a character is a letter, a digit or something else that markup is about, and not a mark
// that stands around it: punctuation, quotation marks, arrows, currency signs.
bool is_letter(char32_t character);

}  // namespace klib::programs
