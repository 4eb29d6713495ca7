// Characters by ICU. ASCII, most of what there is, is answered without it.
#include "programs/align/characters.h"

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utrans.h>

#include <memory>
#include <new>

#include "programs/common/utf8.h"
#include "programs/system/icu_memory.h"

namespace klib::programs::align {
namespace {

constexpr char32_t replacement = 0xFFFD;

UChar32 icu(char32_t character) { return static_cast<UChar32>(character); }

void check(UErrorCode error) {
  if (U_FAILURE(error))
    throw std::bad_alloc();  // what is asked is valid: memory or data is missing
}

UScriptCode script_of(char32_t character) {
  UErrorCode error = U_ZERO_ERROR;
  const UScriptCode script = uscript_getScript(icu(character), &error);
  return U_SUCCESS(error) ? script : USCRIPT_UNKNOWN;
}

std::u16string in_utf16(std::string_view text) {
  std::u16string result;
  for (size_t position = 0; position < text.size();) {
    const UChar32 character = icu(next_character(text, position));
    if (character > 0xFFFF) result += static_cast<char16_t>(U16_LEAD(character));
    result += static_cast<char16_t>(character > 0xFFFF ? U16_TRAIL(character) : character);
  }
  return result;
}

struct CloseTransliterator {
  void operator()(UTransliterator *transliterator) const { utrans_close(transliterator); }
};
struct CloseBreaks {
  void operator()(UBreakIterator *breaks) const { ubrk_close(breaks); }
};

UTransliterator *to_ascii() {
  static const std::unique_ptr<UTransliterator, CloseTransliterator> transliterator = [] {
    constexpr std::u16string_view id = u"Any-Latin; Latin-ASCII; Lower";
    UErrorCode error = U_ZERO_ERROR;
    guard_icu_memory();
    UTransliterator *const opened = utrans_openU(id.data(), static_cast<int32_t>(id.size()),
                                                 UTRANS_FORWARD, nullptr, 0, nullptr, &error);
    check(error);
    return std::unique_ptr<UTransliterator, CloseTransliterator>(opened);
  }();
  return transliterator.get();
}

UBreakIterator *word_breaks() {
  static const std::unique_ptr<UBreakIterator, CloseBreaks> breaks = [] {
    UErrorCode error = U_ZERO_ERROR;
    guard_icu_memory();
    UBreakIterator *const opened = ubrk_open(UBRK_WORD, "", nullptr, 0, &error);
    check(error);
    return std::unique_ptr<UBreakIterator, CloseBreaks>(opened);
  }();
  return breaks.get();
}

// Chinese characters would become syllables of one of their readings, which says nothing.
bool has_sound(char32_t character) {
  const UScriptCode script = script_of(character);
  return script != USCRIPT_HAN && script != USCRIPT_HIRAGANA;
}

void append_ascii(char32_t character, std::string &text) {
  if (character >= 'A' && character <= 'Z') character += 'a' - 'A';
  if ((character >= 'a' && character <= 'z') || (character >= '0' && character <= '9'))
    text += static_cast<char>(character);
}

}  // namespace

char32_t next_character(std::string_view text, size_t &position) {
  const char32_t character = next_utf8(text, position);
  if (character != invalid_utf8) return character;
  position++;
  return replacement;
}

bool is_letter(char32_t character) { return u_isalpha(icu(character)); }

bool is_letter_or_digit(char32_t character) {
  if (character < 0x80)
    return (character >= '0' && character <= '9') ||
           ((character | 0x20) >= 'a' && (character | 0x20) <= 'z');
  constexpr uint32_t wanted = U_GC_L_MASK | U_GC_N_MASK | U_GC_M_MASK;
  return (U_GET_GC_MASK(icu(character)) & wanted) != 0;
}

bool is_invisible(char32_t character) {
  if (character < 0x80) return character < 0x20 || character == 0x7F;
  return (U_GET_GC_MASK(icu(character)) & (U_GC_CC_MASK | U_GC_CF_MASK)) != 0;
}

bool is_without_blanks(char32_t character) {
  constexpr char32_t first = 0x0E00, long_vowel = 0x30FC;
  if (character < first) return false;
  if (character == long_vowel) return true;
  switch (script_of(character)) {
    case USCRIPT_HAN:
    case USCRIPT_HIRAGANA:
    case USCRIPT_KATAKANA:
    case USCRIPT_THAI:
    case USCRIPT_LAO:
    case USCRIPT_KHMER:
    case USCRIPT_MYANMAR:
      return true;
    default:
      return false;
  }
}

bool is_syllabic(char32_t character) {
  constexpr char32_t first = 0x1100;
  if (character < first) return false;
  const UScriptCode script = script_of(character);
  return script == USCRIPT_HANGUL || script == USCRIPT_HAN || script == USCRIPT_HIRAGANA;
}

char32_t folded(char32_t character) {
  if (character < 0x80) return character >= 'A' && character <= 'Z' ? character | 0x20 : character;
  constexpr char32_t full_width_first = 0xFF01, full_width_last = 0xFF5E, distance = 0xFEE0;
  if (character >= full_width_first && character <= full_width_last)
    return folded(character - distance);
  const int32_t digit = u_charDigitValue(icu(character));
  if (digit >= 0 && u_charType(icu(character)) == U_DECIMAL_DIGIT_NUMBER)
    return static_cast<char32_t>('0' + digit);
  return static_cast<char32_t>(u_tolower(icu(character)));
}

char32_t folded_mark(char32_t character) {
  character = folded(character);
  switch (character) {
    case '\'':
    case '`':
    case 0x201A:  // low single quotation mark
    case 0x201E:  // low double quotation mark
    case 0x300C:  // corner brackets
    case 0x300D:
    case 0x300E:
    case 0x300F:
      return '"';
    case 0x3002:  // ideographic full stop
    case 0x06D4:  // Arabic full stop
    case 0x0964:
      return '.';  // danda
    case 0x3001:   // ideographic comma
    case 0x060C:
      return ',';
    case 0x061F:
      return '?';
    case 0x061B:
      return ';';
    case 0x3010:  // lenticular and tortoise shell brackets
    case 0x3014:
      return '(';
    case 0x3011:
    case 0x3015:
      return ')';
    default:
      break;
  }
  switch (u_charType(icu(character))) {
    case U_INITIAL_PUNCTUATION:
    case U_FINAL_PUNCTUATION:
      return '"';
    case U_DASH_PUNCTUATION:
      return '-';
    default:
      return character;
  }
}

std::string in_latin(std::string_view text) {
  std::string result;
  std::string foreign;
  for (size_t position = 0; position < text.size();) {
    const char32_t character = next_character(text, position);
    if (character < 0x80)
      append_ascii(character, foreign.empty() ? result : foreign);
    else if (has_sound(character))
      append_utf8(character, foreign);
  }
  if (foreign.empty()) return result;
  std::u16string buffer = in_utf16(foreign);
  auto length = static_cast<int32_t>(buffer.size());
  int32_t limit = length;
  buffer.resize(16 * buffer.size() + 64);
  UErrorCode error = U_ZERO_ERROR;
  utrans_transUChars(to_ascii(), buffer.data(), &length, static_cast<int32_t>(buffer.size()), 0,
                     &limit, &error);
  if (error == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
  if (U_FAILURE(error)) return result;
  for (int32_t i = 0; i < limit; i++) append_ascii(buffer[static_cast<size_t>(i)], result);
  return result;
}

void find_dictionary_words(std::string_view text, std::vector<size_t> &ends) {
  ends.clear();
  const std::u16string wide = in_utf16(text);
  UBreakIterator *const breaks = word_breaks();
  UErrorCode error = U_ZERO_ERROR;
  ubrk_setText(breaks, wide.data(), static_cast<int32_t>(wide.size()), &error);
  check(error);
  size_t position = 0;
  int32_t units = 0;
  ubrk_first(breaks);
  for (int32_t end; (end = ubrk_next(breaks)) != UBRK_DONE;) {
    while (units < end) units += next_character(text, position) > 0xFFFF ? 2 : 1;
    ends.push_back(position);
  }
}

}  // namespace klib::programs::align
