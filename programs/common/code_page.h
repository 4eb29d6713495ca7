// Between Unicode and the engine's text: single bytes of the language's code page, and alien
// characters, {9D} and four hexadecimal digits, for what has no byte there.
#pragma once

#include <string>
#include <string_view>

#include "klib.h"
#include "programs/common/codes.h"

namespace klib::programs {

struct CodePage {
  char32_t character[256];     // of each byte; 0: the byte never comes from text
  unsigned char byte[0x2200];  // of each character below, which all that have one are; 0: none
};

// While it lives, the library's character table (initCT) is that of a language. The library uses it
// to find white space, split words and read expressions.
class ActiveLanguage {
 public:
  explicit ActiveLanguage(const char *language);
  ~ActiveLanguage();
  ActiveLanguage(const ActiveLanguage &) = delete;
  ActiveLanguage &operator=(const ActiveLanguage &) = delete;

 private:
  const char *before_;
};

// The code page of a language.
void make_code_page(const char *language, CodePage &page);

// The byte of a character, or 0.
inline unsigned char byte_of(const CodePage &page, char32_t character) {
  return character < sizeof page.byte ? page.byte[character] : 0;
}

// Appends the character as a byte or as one or two aliens.
void append_character(const CodePage &page, char32_t character, std::string &text);

// Appends the character as one or two aliens.
void append_alien(char32_t character, std::string &text);

// Appends UTF-8 as engine text; the text must be valid and hold no NUL.
void append_encoded(const CodePage &page, std::string_view utf8, std::string &text);

// The next character of engine text without codes; the position moves after it. 0 when the byte is
// not in the page, or when an alien is cut short or half a surrogate pair (the position moves
// after what was looked at). The position must be before the end. `*alien` says whether the
// character was an alien.
char32_t next_character(const CodePage &page, std::string_view text, size_t &position,
                        bool *alien = nullptr);

}  // namespace klib::programs
