// Upper case for three code pages, Western (Latin-1), Russian (Windows Cyrillic) and Greek
// (ISO 8859-7). A table contains the upper-case form of every byte: the byte itself except in the
// runs below. The ASCII letters are the same in all tables.
//
// The active character types decide which bytes uppercase_string changes, the active upper-case
// table what they become. The two are chosen independently.

#include <array>
#include <bit>
#include <cctype>
#include <cstring>
#include <initializer_list>
#include <span>
#include <string_view>

#include "frame/resets.h"
#include "text/byte_blocks.h"
#include "text/bytes.h"
#include "text/character_types.h"

namespace klib::case_mapping {

namespace {

struct Run {
  uint8_t first, last;  // lower case
  uint8_t target;       // upper case of `first`; the others follow in order
};

constexpr Run ascii_runs[] = {{0x61, 0x7A, 0x41}};

constexpr Run western_runs[] = {{0xE0, 0xF6, 0xC0}, {0xF8, 0xFF, 0xD8}};

constexpr Run russian_runs[] = {
    {0x83, 0x83, 0x81}, {0x88, 0x88, 0x80}, {0x9A, 0x9A, 0x8A}, {0x9C, 0x9F, 0x8C},
    {0xA2, 0xA2, 0xA1}, {0xAA, 0xAA, 0xA9}, {0xB3, 0xB3, 0xB2}, {0xB4, 0xB4, 0xA5},
    {0xB8, 0xB8, 0xA8}, {0xBA, 0xBA, 0xAA}, {0xBC, 0xBC, 0xA4}, {0xBE, 0xBE, 0xBD},
    {0xBF, 0xBF, 0xAF}, {0xE0, 0xFF, 0xC0},
};

constexpr Run greek_runs[] = {
    {0xC0, 0xC0, 0xDA}, {0xDC, 0xDC, 0xB6}, {0xDD, 0xDF, 0xB8}, {0xE0, 0xE0, 0xDB},
    {0xE1, 0xF1, 0xC1}, {0xF2, 0xF2, 0xD3}, {0xF3, 0xFB, 0xD3}, {0xFC, 0xFC, 0xBC},
    {0xFD, 0xFE, 0xBE}, {0xFF, 0xFF, 0xDF},
};

using Table = std::array<uint8_t, 256>;

constexpr Table expand(std::span<const Run> upper_half) {
  Table table{};
  for (size_t byte = 0; byte < table.size(); ++byte) table[byte] = static_cast<uint8_t>(byte);
  for (const std::span<const Run> runs : {std::span<const Run>(ascii_runs), upper_half})
    for (const Run &run : runs)
      for (int i = 0; i <= run.last - run.first; ++i)
        table[static_cast<size_t>(run.first + i)] = static_cast<uint8_t>(run.target + i);
  return table;
}

constexpr bool ascending(std::span<const Run> runs, int from) {
  for (const Run &run : runs) {
    if (run.first < from || run.last < run.first) return false;
    from = run.last + 1;
  }
  return true;
}
static_assert(ascending(ascii_runs, 0x00));
static_assert(ascending(western_runs, 0x80));
static_assert(ascending(russian_runs, 0x80));
static_assert(ascending(greek_runs, 0x80));

constexpr Table western = expand(western_runs);
constexpr Table russian = expand(russian_runs);
constexpr Table greek = expand(greek_runs);

struct State {
  const uint8_t *active = western.data();  // what uppercase_string maps through
  // For a pair of built-in tables, what uppercase_string makes of every byte.
  const uint32_t *combined_types = nullptr;
  const uint8_t *combined_upper = nullptr;
  Table combined = {};
};
constinit State state;

// The byte's upper-case form if its type is "lower". Without a branch, since texts make it
// unpredictable.
uint8_t uppercase(uint8_t byte, const uint32_t *types, const uint8_t *upper) {
  constexpr int lower_bit = std::countr_zero(uint32_t{character_types::lower});
  const uint32_t is_lower = types[byte] >> lower_bit & 1;
  return static_cast<uint8_t>(byte ^ ((upper[byte] ^ byte) & -is_lower));
}

// Is the combined table that of the active tables? A program's own character types can change
// without notice and are never combined.
bool combine() {
  if (state.combined_types == c_t && state.combined_upper == state.active) return true;
  if (!character_types::is_built_in(c_t)) return false;
  for (size_t byte = 0; byte < state.combined.size(); ++byte)
    state.combined[byte] = uppercase(static_cast<uint8_t>(byte), c_t, state.active);
  state.combined_types = c_t;
  state.combined_upper = state.active;
  return true;
}

// Below 0x80 all tables map the letters a to z, which are also those of the type "lower" in all
// built-in tables of types, and no other byte.
static_assert([] {
  for (const Table &table : {western, russian, greek})
    for (size_t byte = 0; byte < 0x80; ++byte)
      if (table[byte] != (byte >= 'a' && byte <= 'z' ? byte - ('a' - 'A') : byte)) return false;
  return true;
}());

// The upper-case form of eight bytes below 0x80.
uint64_t uppercase_ascii(uint64_t bytes) {
  const uint64_t from_a = bytes + in_each_byte(0x80 - 'a');
  const uint64_t after_z = bytes + in_each_byte(0x7F - 'z');
  return bytes ^ ((from_a ^ after_z) & in_each_byte(0x80)) >> 2;  // a letter's case is its bit 0x20
}

// Through the combined table.
void uppercase_combined(char *s) {
  const auto map = [&](char *end) {
    for (; s != end; ++s) *s = static_cast<char>(state.combined[u8(*s)]);
  };
  char *const end = s + std::strlen(s);
  while (end - s >= ptrdiff_t{word_size}) {
    const uint64_t bytes = load_word(s);
    if ((bytes & in_each_byte(0x80)) != 0) {
      map(s + word_size);
    } else {
      store_word(s, uppercase_ascii(bytes));
      s += word_size;
    }
  }
  map(end);
}

}  // namespace

void reset() { state = State{}; }

}  // namespace klib::case_mapping

// Exported names

using namespace klib;
using namespace klib::case_mapping;

void initUpcase(const char *language) {
  const std::string_view text(language);
  state.active = text.starts_with("RU")   ? russian.data()
                 : text.starts_with("GR") ? greek.data()
                                          : western.data();
}

void uppercase_string(char *s) {
  if (combine()) {
    uppercase_combined(s);
  } else {
    const uint32_t *const types = c_t;
    const uint8_t *const upper = state.active;
    for (; *s != '\0'; ++s) *s = static_cast<char>(uppercase(u8(*s), types, upper));
  }
}

int32_t upcaseRu(int32_t c) { return russian[static_cast<uint8_t>(c)]; }
int32_t upcaseGr(int32_t c) { return greek[static_cast<uint8_t>(c)]; }
int32_t islowerRu(int32_t c) { return upcaseRu(c) != static_cast<uint8_t>(c); }
int32_t islowerGr(int32_t c) { return upcaseGr(c) != static_cast<uint8_t>(c); }

void s_uppercase(char *s) {
  for (; *s != '\0'; ++s)
    if (std::islower(u8(*s)) != 0) *s = static_cast<char>(std::toupper(u8(*s)));
}
