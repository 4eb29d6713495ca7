// The format codes of a text: which bytes open and close them, under which kind they are read, and
// what they do to the real position, the position of what a reader sees.
//
//     {94}17{95}        anchor               {1E}some text{1F}  segment
//     {98}Bold{99}      font code            {9B}some text{9C}  pair without a name
//     {90}12 text{91}   sentence             {9D}00E9           alien character, U+00E9
//     {96}text{0A}      rest of the line     {1D}               mark
//     text{97}text{0A}  the whole line
//
// Every other byte is text.
#pragma once

#include <array>
#include <cstdint>

#include "klib.h"

namespace klib::codes {

enum class Effect : uint8_t {
  none,
  newline,
  mark,           // takes no room
  visible_open,   // takes no room; what follows does
  visible_close,  // takes no room
  hidden_open,    // starts a stretch that takes no room
  hidden_close,   // ends it
  hidden_line,    // starts one that the newline ends
  alien,          // takes one column together with its four digits
};

struct Code {
  uint8_t open;
  uint8_t close;  // the byte that ends the body; 0: the code has no closing byte
  int32_t kind;
  bool nests;  // a further opening byte in the body needs a closing byte of its own
  Effect at_open, at_close;
};

// clang-format off
inline constexpr Code table[] = {
    // open close kind        nests  effect of the opening byte, of the closing byte
    {0x94, 0x95, P_ANCHOR,    true,  Effect::hidden_open,  Effect::hidden_close},
    {0x90, 0x91, P_SENTENCE,  true,  Effect::visible_open, Effect::visible_close},
    {0x1E, 0x1F, P_CODE_1E,   true,  Effect::visible_open, Effect::visible_close},
    {0x96, 0x0A, P_TO_EOL,    false, Effect::hidden_line,  Effect::newline},
    {0x97, 0x0A, P_CODE_LINE, false, Effect::none,         Effect::newline},
    {0x98, 0x99, P_FONT,      true,  Effect::hidden_open,  Effect::hidden_close},
    {0x9B, 0x9C, P_CODE_9B,   true,  Effect::visible_open, Effect::visible_close},
    {0x1D, 0x00, P_MARK_1D,   false, Effect::mark,         Effect::none},
    {0x9D, 0x00, P_ALIEN,     false, Effect::alien,        Effect::none},
};
// clang-format on

inline constexpr int alien_digits = 4;

// The code of a kind.
[[nodiscard]] constexpr const Code &of(int32_t kind) {
  const Code *code = table;
  while (code->kind != kind) ++code;
  return *code;
}

// What a byte is to the parser. `stops` holds the kinds that it opens or closes (P_LINE for the
// newline), P_COUNT when it moves a position by anything but one column, and `text_end` for NUL: a
// reader asks for the bits that concern it and may skip every byte that has none of them.
struct Role {
  uint16_t stops;
  uint8_t opens;  // index in the table, plus 1; 0: opens nothing
  Effect effect;
};
inline constexpr uint16_t text_end = 0x8000;

inline constexpr std::array<Role, 256> roles = [] {
  std::array<Role, 256> result{};
  for (uint8_t i = 0; const Code &code : table) {
    const auto kind = static_cast<uint16_t>(code.kind);
    result[code.open] = {kind, ++i, code.at_open};
    if (code.close != 0 && code.nests) result[code.close] = {kind, 0, code.at_close};
  }
  result['\n'] = {P_LINE, 0, Effect::newline};
  for (Role &role : result)
    if (role.effect != Effect::none) role.stops |= P_COUNT;
  result[0].stops = text_end;
  return result;
}();

// All bytes with a role lie in 00-1F and 80-9F, so a reader may skip other bytes unseen.
static_assert([] {
  for (size_t byte = 0; byte < roles.size(); ++byte)
    if (roles[byte].stops != 0 && (byte & 0x60) != 0) return false;
  return true;
}());

}  // namespace klib::codes
