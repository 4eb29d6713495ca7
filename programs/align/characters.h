// What the aligner asks about characters, answered by the tables of ICU.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace klib::programs::align {

// The character at `position`, which moves past it; U+FFFD for bytes that are not UTF-8.
char32_t next_character(std::string_view text, size_t &position);

bool is_letter_or_digit(char32_t character);  // or a mark on one
bool is_letter(char32_t character);
bool is_invisible(char32_t character);       // controls and joiners
bool is_without_blanks(char32_t character);  // of a script that has no blanks between words
bool is_syllabic(char32_t character);        // of a script that writes syllables or whole words

// Lower case; full-width forms as the usual ones; digits of any script as 0 to 9.
char32_t folded(char32_t character);

// The mark that represents all of its sort: '"' for quotation marks of any form, '-' for dashes,
// '.' for any full stop and so on.
char32_t folded_mark(char32_t character);

// The text in small ASCII letters and digits as far as its script allows; what cannot be written in
// them is left out.
std::string in_latin(std::string_view text);

// The ends of the words of a text in scripts without blanks, as byte positions, by a dictionary.
void find_dictionary_words(std::string_view text, std::vector<size_t> &ends);

}  // namespace klib::programs::align
