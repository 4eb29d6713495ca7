// Unicode's properties come from ICU; those of the first characters, which are nearly all that most
// texts have, are kept in a table.
#include "programs/carry/characters.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <array>

namespace klib::programs {
namespace {

bool is_unspaced(char32_t c) {
  UErrorCode error = U_ZERO_ERROR;
  switch (uscript_getScript(static_cast<UChar32>(c), &error)) {
    case USCRIPT_HAN:
    case USCRIPT_HIRAGANA:
    case USCRIPT_KATAKANA:
    case USCRIPT_HANGUL:
    case USCRIPT_BOPOMOFO:
    case USCRIPT_THAI:
    case USCRIPT_LAO:
    case USCRIPT_KHMER:
    case USCRIPT_MYANMAR:
    case USCRIPT_TIBETAN:
      return true;
    default:
      return c == 0x30FC || c == 0xFF70;  // the sign for a long vowel
  }
}

CharKind find_kind(char32_t c) {
  const auto type = U_MASK(u_charType(static_cast<UChar32>(c)));
  if ((type & U_GC_Z_MASK) != 0 || (c >= '\t' && c <= '\r')) return CharKind::blank;
  if ((type & U_GC_N_MASK) != 0) return CharKind::digit;
  if ((type & (U_GC_L_MASK | U_GC_M_MASK)) == 0) return CharKind::mark;
  if (is_unspaced(c)) return CharKind::unspaced;
  return (type & U_GC_LU_MASK) != 0 ? CharKind::upper : CharKind::letter;
}

char32_t find_fold(char32_t c) {
  switch (c) {
    case '"':
    case '\'':
    case '`':
      return '"';
    case '!':
    case '?':
    case '.':
    case ':':
    case ';':
    case U'\u2026':
    case U'\u3002':
    case U'\uFF01':
    case U'\uFF1F':
    case U'\uFF1A':
    case U'\uFF1B':
      return '.';
    case U'\u3001':
    case U'\uFF0C':
      return ',';
    case U'\u2212':
      return '-';
    case U'\u201A':
    case U'\u201E':
    case U'\u300C':  // corner brackets quote
    case U'\u300D':
    case U'\u300E':
    case U'\u300F':
      return '"';
    default:
      break;
  }
  const auto type = U_MASK(u_charType(static_cast<UChar32>(c)));
  if ((type & (U_GC_PI_MASK | U_GC_PF_MASK)) != 0) return '"';
  if ((type & U_GC_PS_MASK) != 0) return '(';
  if ((type & U_GC_PE_MASK) != 0) return ')';
  if ((type & U_GC_PD_MASK) != 0) return '-';
  return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
}

template <typename Value>
std::array<Value, common_characters> table_of(Value (*find)(char32_t)) {
  std::array<Value, common_characters> table{};
  for (char32_t c = 0; c < common_characters; c++) table[c] = find(c);
  return table;
}

}  // namespace

const CharKind *kinds_of_common_characters() {
  static const auto table = table_of(find_kind);
  return table.data();
}

CharKind kind_of(char32_t c) {
  return c < common_characters ? kinds_of_common_characters()[c] : find_kind(c);
}

char32_t fold(char32_t c) {
  static const auto table = table_of(find_fold);
  return c < common_characters ? table[c] : find_fold(c);
}

}  // namespace klib::programs
