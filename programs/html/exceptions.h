// The sentence exceptions of a language: regular expressions for texts after whose last mark no
// sentence ends ("\<Dr\.$").
#pragma once

namespace klib::programs {

// Loads those of the language in use from its language files, if there are any.
void load_sentence_exceptions();
void free_sentence_exceptions();
bool has_sentence_exceptions();

// Whether one of them matches a text.
bool is_sentence_exception(const char *text);

}  // namespace klib::programs
