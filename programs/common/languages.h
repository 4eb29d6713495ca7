// Names of languages: what a user may write, and the name in the library and in files.
#pragma once

#include <string>
#include <string_view>

namespace klib::programs {

// A language of the library has its long name (GERMAN); any other, which the library treats as
// Western, its standard code (cs). Neither holds white space, so both can be written to files.
//
// Understood in any case: the library's long names and short forms (German, DE), standard codes
// with or without a region (de, deu, pt-BR), and the English names of other languages (Czech).
// "jp" and "xh" are the library's short forms for Japanese and Chinese. Empty for anything else.
std::string language_name(std::string_view given);

// The standard code of a language, such as "de" for GERMAN; for any other text, the text itself.
std::string language_code(std::string_view name);

// Whether the language is written from right to left.
bool is_right_to_left(std::string_view name);

// The 18 languages of the library with their short forms and codes, on indented lines of at most
// 80 columns, for people.
std::string list_of_languages();

}  // namespace klib::programs
