// Character types: a 32-bit property word for each byte of three code pages, Western (Latin-1),
// Russian (Windows Cyrillic) and Greek (ISO 8859-7), and the named types as bracket expressions.
//
// The tables are written as runs {first, last, word} and expanded at compile time. The lower half
// is the same in all of them.

#include "text/character_types.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "frame/memory.h"
#include "frame/resets.h"
#include "text/bytes.h"

namespace klib::character_types {

namespace {

struct Run {
  uint8_t first, last;
  uint32_t word;
};

// clang-format off
constexpr Run lower_half[] = {
    {0x00, 0x08, 0x04000000}, {0x09, 0x0B, 0x0C030000}, {0x0C, 0x0C, 0x04000000},
    {0x0D, 0x0D, 0x0C030000}, {0x0E, 0x1F, 0x04000000}, {0x20, 0x20, 0x0C030000},
    {0x21, 0x21, 0x04538000}, {0x22, 0x22, 0x04038000}, {0x23, 0x26, 0x040F8000},
    {0x27, 0x29, 0x04038000}, {0x2A, 0x2B, 0x04078000}, {0x2C, 0x2C, 0x04138000},
    {0x2D, 0x2D, 0x00038000}, {0x2E, 0x2E, 0x00438000}, {0x2F, 0x2F, 0x04038000},
    {0x30, 0x39, 0x20048000}, {0x3A, 0x3B, 0x04538000}, {0x3C, 0x3E, 0x040F8000},
    {0x3F, 0x3F, 0x05438000}, {0x40, 0x40, 0x040F8000}, {0x41, 0x5A, 0x80040000},
    {0x5B, 0x5F, 0x040F8000}, {0x60, 0x60, 0x04038000}, {0x61, 0x7A, 0x40040000},
    {0x7B, 0x7E, 0x040F8000}, {0x7F, 0x7F, 0x04008000},
};

constexpr Run western_half[] = {
    {0x80, 0x8F, 0x04000000}, {0x90, 0x93, 0x14030000}, {0x94, 0x9C, 0x14038000},
    {0x9D, 0x9D, 0x14008000}, {0x9E, 0x9E, 0x24038000}, {0x9F, 0x9F, 0x04038000},
    {0xA0, 0xA0, 0x0C030000}, {0xA1, 0xA1, 0x04928000}, {0xA2, 0xA7, 0x040F8000},
    {0xA8, 0xA8, 0x04038000}, {0xA9, 0xAC, 0x040F8000}, {0xAD, 0xAD, 0x04038000},
    {0xAE, 0xB1, 0x040F8000}, {0xB2, 0xB3, 0x24048000}, {0xB4, 0xB4, 0x04038000},
    {0xB5, 0xB7, 0x040F8000}, {0xB8, 0xB8, 0x04138000}, {0xB9, 0xB9, 0x24048000},
    {0xBA, 0xBB, 0x040F8000}, {0xBC, 0xBE, 0x24048000}, {0xBF, 0xBF, 0x04928000},
    {0xC0, 0xD6, 0x80040000}, {0xD7, 0xD7, 0x04078000}, {0xD8, 0xDE, 0x80040000},
    {0xDF, 0xF6, 0x40040000}, {0xF7, 0xF7, 0x04078000}, {0xF8, 0xFF, 0x40040000},
};

constexpr Run russian_half[] = {
    {0x80, 0x81, 0x80040000}, {0x82, 0x82, 0x04000000}, {0x83, 0x83, 0x40040000},
    {0x84, 0x89, 0x04000000}, {0x8A, 0x8A, 0x80040000}, {0x8B, 0x8B, 0x04000000},
    {0x8C, 0x8F, 0x80040000}, {0x90, 0x93, 0x14030000}, {0x94, 0x98, 0x14038000},
    {0x99, 0x99, 0x80040000}, {0x9A, 0x9A, 0x40040000}, {0x9B, 0x9B, 0x14038000},
    {0x9C, 0x9F, 0x40040000}, {0xA0, 0xA0, 0x0C030000}, {0xA1, 0xA1, 0x80040000},
    {0xA2, 0xA2, 0x40040000}, {0xA3, 0xA3, 0x80040000}, {0xA4, 0xA4, 0x040F8000},
    {0xA5, 0xA5, 0x80040000}, {0xA6, 0xA7, 0x040F8000}, {0xA8, 0xAA, 0x80040000},
    {0xAB, 0xAC, 0x040F8000}, {0xAD, 0xAD, 0x04038000}, {0xAE, 0xAF, 0x80040000},
    {0xB0, 0xB2, 0x040F8000}, {0xB3, 0xB5, 0x40040000}, {0xB6, 0xB7, 0x040F8000},
    {0xB8, 0xB8, 0x40040000}, {0xB9, 0xB9, 0x80040000}, {0xBA, 0xBA, 0x40040000},
    {0xBB, 0xBB, 0x040F8000}, {0xBC, 0xBC, 0x40040000}, {0xBD, 0xBD, 0x80040000},
    {0xBE, 0xBF, 0x40040000}, {0xC0, 0xDF, 0x80040000}, {0xE0, 0xE2, 0x40040000},
    {0xE3, 0xE3, 0x60040000}, {0xE4, 0xFF, 0x40040000},
};

constexpr Run greek_half[] = {
    {0x80, 0x8F, 0x04000000}, {0x90, 0x93, 0x14030000}, {0x94, 0x9C, 0x14038000},
    {0x9D, 0x9D, 0x14008000}, {0x9E, 0x9E, 0x24038000}, {0x9F, 0x9F, 0x04038000},
    {0xA0, 0xA0, 0x0C030000}, {0xA1, 0xA2, 0x04138000}, {0xA3, 0xA7, 0x040F8000},
    {0xA8, 0xA8, 0x04038000}, {0xA9, 0xA9, 0x040F8000}, {0xAA, 0xAA, 0x0C030000},
    {0xAB, 0xAC, 0x040F8000}, {0xAD, 0xAD, 0x04038000}, {0xAE, 0xB1, 0x040F8000},
    {0xB2, 0xB3, 0x24048000}, {0xB4, 0xB4, 0x04038000}, {0xB5, 0xB5, 0x040F8000},
    {0xB6, 0xB6, 0x80040000}, {0xB7, 0xB7, 0x04538000}, {0xB8, 0xBA, 0x80040000},
    {0xBB, 0xBB, 0x040F8000}, {0xBC, 0xBC, 0x80040000}, {0xBD, 0xBD, 0x24048000},
    {0xBE, 0xBF, 0x80040000}, {0xC0, 0xC0, 0x40040000}, {0xC1, 0xD1, 0x80040000},
    {0xD2, 0xD2, 0x0C030000}, {0xD3, 0xDB, 0x80040000}, {0xDC, 0xFE, 0x40040000},
    {0xFF, 0xFF, 0x40000000},
};
// clang-format on

constexpr bool gapless(std::span<const Run> runs, int first, int last) {
  int next = first;
  for (const Run &run : runs) {
    if (run.first != next || run.last < run.first) return false;
    next = run.last + 1;
  }
  return next == last + 1;
}
static_assert(gapless(lower_half, 0x00, 0x7F));
static_assert(gapless(western_half, 0x80, 0xFF));
static_assert(gapless(russian_half, 0x80, 0xFF));
static_assert(gapless(greek_half, 0x80, 0xFF));

constexpr Table expand(std::span<const Run> upper_half) {
  Table table{};
  for (const std::span<const Run> runs : {std::span<const Run>(lower_half), upper_half})
    for (const Run &run : runs)
      for (int byte = run.first; byte <= run.last; ++byte)
        table[static_cast<size_t>(byte)] = run.word;
  return table;
}

// Case mapping takes the lower-case letters of the lower half for granted.
static_assert([] {
  for (const Run &run : lower_half)
    if (((run.word & lower) != 0) != (run.first == 'a' && run.last == 'z')) return false;
  return true;
}());

}  // namespace

constexpr Table western = expand(western_half);
constexpr Table russian = expand(russian_half);
constexpr Table greek = expand(greek_half);

namespace {

// See may_be_white.
static_assert([] {
  for (const Table &table : {western, russian, greek})
    for (size_t byte = 0x21; byte < 0x80; ++byte)
      if ((table[byte] & white) != 0) return false;
  return true;
}());

// The built-in named types: what the exported arrays hold first and get back at a reset.
#define TYPE_NAMES                                                                        \
  "upper", "lower", "digit", "letter", "alphnum", "kavro", "white", "punct", "nonletter", \
      "special", "inword", ""
#define TYPE_MASKS \
  upper, lower, digit, letter, alphnum, kavro, white, punct, nonletter, special, inword, 0

bool has_type(int byte, uint32_t mask) {
  return (properties(static_cast<uint8_t>(byte)) & mask) != 0;
}

// Entries before the empty name that ends the list; a list without one ends with the array.
size_t count_named_types() {
  const auto end = std::ranges::find_if(
      ct_names, [](const char *name) { return name == nullptr || *name == '\0'; });
  return static_cast<size_t>(end - std::begin(ct_names));
}

// A bracket expression in a fixed buffer. Of four neighbouring bytes at most three are written,
// so 256 bytes hold any.
struct BracketExpression {
  char text[256] = {};
  size_t length = 0;

  void add(int byte) { text[length++] = static_cast<char>(byte); }
  void add_run(int first, int last) {
    add(first);
    if (last > first + 1) add('-');
    if (last > first) add(last);
  }
};

// The bytes of a type in increasing order as runs; ']' is literal only as the first byte and '-'
// only as the last, so neither is part of a run. Byte 0 would end the text and is left out.
BracketExpression bracket_expression(uint32_t mask, bool negated) {
  BracketExpression expression;
  expression.add('[');
  if (negated) expression.add('^');
  if (has_type(']', mask)) expression.add(']');
  int first = 0;  // of the current run, 0 outside runs
  for (int byte = 1; byte <= 256; ++byte) {
    const bool member = byte < 256 && byte != ']' && byte != '-' && has_type(byte, mask);
    if (member && first == 0) first = byte;
    if (!member && first != 0) {
      expression.add_run(first, byte - 1);
      first = 0;
    }
  }
  if (has_type('-', mask)) expression.add('-');
  expression.add(']');
  return expression;
}

}  // namespace

void reset() {
  c_t = western.data();
  c_t_len = 0;
  fc_t = nullptr;
  fc_t_len = 0;
  constexpr const char *names[] = {TYPE_NAMES};
  constexpr uint32_t masks[] = {TYPE_MASKS};
  std::ranges::copy(names, ct_names);
  std::ranges::copy(masks, ct_props);
}

}  // namespace klib::character_types

// Exported names

using namespace klib;
using namespace klib::character_types;

constinit const uint32_t *c_t = western.data();
constinit int32_t c_t_len = 0;
constinit const char *ct_names[12] = {TYPE_NAMES};
constinit uint32_t ct_props[12] = {TYPE_MASKS};
constinit const uint32_t *fc_t = nullptr;
constinit int32_t fc_t_len = 0;

void initCT(const char *language) {
  const std::string_view name = language;
  c_t = name.starts_with("RU")   ? russian.data()
        : name.starts_with("GR") ? greek.data()
                                 : western.data();
}

uint32_t cprops(int32_t c) { return properties(static_cast<uint8_t>(c)); }

uint32_t fiprops(int32_t key) {
  if (fc_t == nullptr) return 0;
  for (int32_t i = 0; fc_t_len - i >= 2; i += 2)
    if (static_cast<int32_t>(fc_t[i]) == key) return fc_t[i + 1];
  return 0;
}

char **Kcharacter_types_regex() {
  return memory::guarded<char **>(nullptr, [] {
    const size_t count = count_named_types();
    memory::TextList expressions = memory::make_text_list(count);
    for (size_t i = 0; i < count; ++i)
      expressions[i] =
          memory::copy(bracket_expression(ct_props[i], *ct_names[i] == '^').text).release();
    return expressions.release();
  });
}
