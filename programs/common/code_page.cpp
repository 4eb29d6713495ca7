// Code pages are made once for a job; a character is then one look-up in a table. The pages are
// those of the library's character tables.
#include "programs/common/code_page.h"

#include <algorithm>
#include <cstring>

#include "programs/common/program.h"
#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

constexpr uint32_t white = 0x08000000;  // of cprops()

// The characters of the bytes from 80 on; 0: the byte has none.
using UpperHalf = char16_t[128];

// clang-format off
constexpr UpperHalf russian = {  // CP1251
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021,
    0x20AC, 0x2030, 0x0409, 0x2039, 0x040A, 0x040C, 0x040B, 0x040F,
    0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x0000, 0x2122, 0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F,
    0x00A0, 0x040E, 0x045E, 0x0408, 0x00A4, 0x0490, 0x00A6, 0x00A7,
    0x0401, 0x00A9, 0x0404, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x0407,
    0x00B0, 0x00B1, 0x0406, 0x0456, 0x0491, 0x00B5, 0x00B6, 0x00B7,
    0x0451, 0x2116, 0x0454, 0x00BB, 0x0458, 0x0405, 0x0455, 0x0457,
    0x0410, 0x0411, 0x0412, 0x0413, 0x0414, 0x0415, 0x0416, 0x0417,
    0x0418, 0x0419, 0x041A, 0x041B, 0x041C, 0x041D, 0x041E, 0x041F,
    0x0420, 0x0421, 0x0422, 0x0423, 0x0424, 0x0425, 0x0426, 0x0427,
    0x0428, 0x0429, 0x042A, 0x042B, 0x042C, 0x042D, 0x042E, 0x042F,
    0x0430, 0x0431, 0x0432, 0x0433, 0x0434, 0x0435, 0x0436, 0x0437,
    0x0438, 0x0439, 0x043A, 0x043B, 0x043C, 0x043D, 0x043E, 0x043F,
    0x0440, 0x0441, 0x0442, 0x0443, 0x0444, 0x0445, 0x0446, 0x0447,
    0x0448, 0x0449, 0x044A, 0x044B, 0x044C, 0x044D, 0x044E, 0x044F,
};

constexpr UpperHalf greek = {  // ISO-8859-7
    0x0080, 0x0081, 0x0082, 0x0083, 0x0084, 0x0085, 0x0086, 0x0087,
    0x0088, 0x0089, 0x008A, 0x008B, 0x008C, 0x008D, 0x008E, 0x008F,
    0x0090, 0x0091, 0x0092, 0x0093, 0x0094, 0x0095, 0x0096, 0x0097,
    0x0098, 0x0099, 0x009A, 0x009B, 0x009C, 0x009D, 0x009E, 0x009F,
    0x00A0, 0x2018, 0x2019, 0x00A3, 0x20AC, 0x20AF, 0x00A6, 0x00A7,
    0x00A8, 0x00A9, 0x037A, 0x00AB, 0x00AC, 0x00AD, 0x0000, 0x2015,
    0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x0384, 0x0385, 0x0386, 0x00B7,
    0x0388, 0x0389, 0x038A, 0x00BB, 0x038C, 0x00BD, 0x038E, 0x038F,
    0x0390, 0x0391, 0x0392, 0x0393, 0x0394, 0x0395, 0x0396, 0x0397,
    0x0398, 0x0399, 0x039A, 0x039B, 0x039C, 0x039D, 0x039E, 0x039F,
    0x03A0, 0x03A1, 0x0000, 0x03A3, 0x03A4, 0x03A5, 0x03A6, 0x03A7,
    0x03A8, 0x03A9, 0x03AA, 0x03AB, 0x03AC, 0x03AD, 0x03AE, 0x03AF,
    0x03B0, 0x03B1, 0x03B2, 0x03B3, 0x03B4, 0x03B5, 0x03B6, 0x03B7,
    0x03B8, 0x03B9, 0x03BA, 0x03BB, 0x03BC, 0x03BD, 0x03BE, 0x03BF,
    0x03C0, 0x03C1, 0x03C2, 0x03C3, 0x03C4, 0x03C5, 0x03C6, 0x03C7,
    0x03C8, 0x03C9, 0x03CA, 0x03CB, 0x03CC, 0x03CD, 0x03CE, 0x0000,
};
// clang-format on

// A language of the library's character tables: all others are Western, ISO-8859-1.
struct Page {
  const char *language;
  const UpperHalf *upper_half;  // null: the characters are the bytes
};
constexpr Page western = {"", nullptr};
constexpr Page pages[] = {{"RUSSIAN", &russian}, {"GREEK", &greek}};
static_assert(std::ranges::max(russian) < sizeof CodePage::byte &&
              std::ranges::max(greek) < sizeof CodePage::byte);

const Page &page_of(const char *language) {
  for (const Page &row : pages)
    if (strcmp(row.language, language) == 0) return row;
  return western;
}

// That of the library's table.
constinit const char *active_language = western.language;

// Codes of the sentence format, and bytes that would split words or be lost between them.
bool comes_from_text(int byte) {
  if (byte == 0 || is_code_byte(byte)) return false;
  return byte == ' ' || !(cprops(byte) & white);
}

char32_t character_of(const Page &page, int byte) {
  return byte < 0x80 || !page.upper_half ? static_cast<char32_t>(byte)
                                         : (*page.upper_half)[byte - 0x80];
}

void append_unit(unsigned unit, std::string &text) {
  constexpr const char *digits = "0123456789ABCDEF";
  text += alien_marker;
  for (int shift = 12; shift >= 0; shift -= 4) text += digits[unit >> shift & 0xF];
}

// The unit of the alien at `position`, which moves after it; -1 when it is cut or no such number.
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
  const Page &own = page_of(language);
  page = CodePage{};
  for (int byte = 1; byte < 256; byte++) {
    if (!comes_from_text(byte)) continue;
    const char32_t c = character_of(own, byte);
    if (c == 0) continue;
    page.character[byte] = c;
    page.byte[c] = static_cast<unsigned char>(byte);
  }
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
  if (const unsigned char byte = byte_of(page, character))
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
