// Code pages are made once for a job by asking iconv for the character of each byte; afterwards a
// character is one look into a table. The pages are those of the library's character tables.
#include "programs/common/code_page.h"

#include <iconv.h>

#include <cstring>

#include "programs/common/letters.h"
#include "programs/common/program.h"
#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

constexpr uint32_t white = 0x08000000;  // of cprops()

// That of the library's table: one of three, which have static names here.
constinit const char *active_language = "";

constexpr struct {
  const char *language, *page;
} pages[] = {{"RUSSIAN", "CP1251"}, {"GREEK", "ISO-8859-7"}, {"", "ISO-8859-1"}};

const auto &page_of(const char *language) {
  for (const auto &row : pages)
    if (strcmp(row.language, language) == 0) return row;
  return pages[2];
}

// Codes of the sentence format, and bytes that would split words or be lost between them.
bool comes_from_text(int byte) {
  if (byte == 0 || is_code_byte(byte)) return false;
  return byte == ' ' || !(cprops(byte) & white);
}

char32_t character_of(iconv_t converter, int byte) {
  char from = static_cast<char>(byte), *in = &from;
  unsigned char to[4];
  char *out = reinterpret_cast<char *>(to);
  size_t in_left = 1, out_left = sizeof to;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  if (iconv(converter, &in, &in_left, &out, &out_left) == static_cast<size_t>(-1)) return 0;
  if (out_left != 0) return 0;
  return static_cast<char32_t>(to[0] | to[1] << 8 | to[2] << 16) | static_cast<char32_t>(to[3])
                                                                       << 24;
}

void append_unit(unsigned unit, std::string &text) {
  constexpr const char *digits = "0123456789ABCDEF";
  text += alien_marker;
  for (int shift = 12; shift >= 0; shift -= 4) text += digits[unit >> shift & 0xF];
}

// The unit of the alien at `position`, which moves behind it; -1 when it is cut or no such number.
int alien_unit(std::string_view text, size_t &position) {
  int unit = 0;
  size_t i = position + 1;
  for (; i < position + 5 && i < text.size(); i++) {
    const char c = text[i];
    const bool is_digit = c >= '0' && c <= '9';
    if (!is_digit && !(c >= 'A' && c <= 'F')) break;
    unit = unit * 16 + (is_digit ? c - '0' : c - 'A' + 10);
  }
  const bool whole = i == position + 5;
  position = i;
  return whole ? unit : -1;
}

bool is_high(int unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool is_low(int unit) { return unit >= 0xDC00 && unit < 0xE000; }

}  // namespace

ActiveLanguage::ActiveLanguage(const char *language) : before_(active_language) {
  active_language = page_of(language).language;
  initCT(active_language);
}

ActiveLanguage::~ActiveLanguage() {
  active_language = before_;
  initCT(before_);
}

void make_code_page(const char *language, CodePage &page) {
  const ActiveLanguage active(language);  // white bytes of its table are none of the page's
  const char *name = page_of(language).page;
  const iconv_t converter = iconv_open("UTF-32LE", name);
  if (converter == reinterpret_cast<iconv_t>(-1))
    fail(name, 0, "iconv does not know this code page");
  page = CodePage{};
  for (int byte = 1; byte < 256; byte++) {
    if (!comes_from_text(byte)) continue;
    const char32_t c = character_of(converter, byte);
    if (c == 0 || c > 0xFFFF) continue;
    page.character[byte] = c;
    page.byte[c] = static_cast<unsigned char>(byte);
    page.letter[byte] = is_letter(c);
  }
  iconv_close(converter);
}

void append_alien(char32_t character, std::string &text) {
  if (character > 0xFFFF) {
    append_unit(0xD800 + ((character - 0x10000) >> 10), text);
    append_unit(0xDC00 + ((character - 0x10000) & 0x3FF), text);
  } else {
    append_unit(character, text);
  }
}

void append_character(const CodePage &page, char32_t character, std::string &text) {
  const unsigned char byte = character > 0xFFFF ? 0 : page.byte[character];
  if (byte)
    text += static_cast<char>(byte);
  else
    append_alien(character, text);
}

void append_encoded(const CodePage &page, std::string_view utf8, std::string &text) {
  const auto is_same_byte = [&](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x80 && page.byte[byte] == byte;
  };
  for (size_t begin = 0, position = 0; position < utf8.size(); begin = position) {
    while (position < utf8.size() && is_same_byte(utf8[position])) position++;
    text.append(utf8, begin, position - begin);
    if (position < utf8.size()) append_character(page, next_utf8(utf8, position), text);
  }
}

char32_t next_character(const CodePage &page, std::string_view text, size_t &position,
                        bool *alien) {
  const char first = text[position];
  if (alien) *alien = first == alien_marker;
  if (first != alien_marker) {
    position++;
    return page.character[static_cast<unsigned char>(first)];
  }
  const int unit = alien_unit(text, position);
  if (unit <= 0 || is_low(unit)) return 0;
  if (!is_high(unit)) return static_cast<char32_t>(unit);
  if (position == text.size() || text[position] != alien_marker) return 0;
  const int low = alien_unit(text, position);
  if (!is_low(low)) return 0;
  return 0x10000 + (static_cast<char32_t>(unit - 0xD800) << 10) +
         static_cast<char32_t>(low - 0xDC00);
}

}  // namespace klib::programs
