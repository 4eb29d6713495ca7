// Levels of the format-code parser.
//
// Up to four can be open. One more is refused: it reads nothing but the end, and its exit closes
// nothing. The first level makes the two byte stacks and the last one releases them; what an outer
// level has taken back is set aside while an inner one is open. The counters outlive levels, but a
// level that counts starts with no open codes.

#include <algorithm>
#include <cstddef>

#include "format/input.h"
#include "format/parser.h"
#include "frame/memory.h"
#include "frame/messages.h"
#include "frame/resets.h"

// Programs read the frames: 17 numbers, then three pointers.
static_assert(offsetof(parser_frame, hidden_real_column) == 16 * sizeof(int32_t));
static_assert(offsetof(parser_frame, saved_pushback) ==
              offsetof(parser_frame, string_pos) + 2 * sizeof(char *));
static_assert(sizeof(parser_frame) == offsetof(parser_frame, saved_pushback) + sizeof(char *));

namespace klib::parser {

constinit State state;

namespace {

void release_stack(int32_t number) {
  Kfree(_stack[number].base);
  _stack[number] = {};
}

void make_stacks() {
  s_make(slots::parser_pushback, 50, 50);
  if (_stack[slots::parser_pushback].base == nullptr) throw memory::Exhausted{};
  s_make(slots::parser_token, 1000, 1000);
  if (_stack[slots::parser_token].base != nullptr) return;
  release_stack(slots::parser_pushback);
  throw memory::Exhausted{};
}

void set_pushback_aside(parser_frame &frame) {
  byte_stack &pushback = pushback_stack();
  frame.saved_pushback = memory::copy(s_stack(slots::parser_pushback)).release();
  pushback.top = pushback.base;
}

void open_level(int32_t flags) {
  if (state.refused_levels > 0 || parser_level >= deepest_level) {
    Kdisplay(MESSAGE_TOO_MANY_PARSER_LEVELS, deepest_level);
    ++state.refused_levels;
    return;
  }
  if (parser_level == 0)
    make_stacks();
  else
    set_pushback_aside(p_root[parser_level]);
  parser_frame &frame = p_root[++parser_level];
  state.checked_end[parser_level] = nullptr;
  frame.flags = flags;
  frame.counting = flags & P_COUNT;
  frame.status = 0;
  frame.token = nullptr;
  if (frame.counting == 0) return;
  frame.token_line = frame.line = frame.token_column = frame.column = 1;
  frame.token_real_line = frame.real_line = frame.token_real_column = frame.real_column = 1;
  state.p_open_codes = 0;
}

void close_level() {
  if (parser_level-- == 1) {
    release_stack(slots::parser_token);
    release_stack(slots::parser_pushback);
    return;
  }
  parser_frame &outer = p_root[parser_level];
  byte_stack &pushback = pushback_stack();
  pushback.top = pushback.base;
  if (outer.saved_pushback != nullptr) s_fill(slots::parser_pushback, outer.saved_pushback);
  Kfree(outer.saved_pushback);
  outer.saved_pushback = nullptr;
}

}  // namespace

Level::Level(int32_t flags, const char *text) {
  open_level(flags);
  parse_from_string(text);
}

void reset() {
  while (parser_level > 0) close_level();
  std::ranges::fill(p_root, parser_frame{});
  state = State{};
}

}  // namespace klib::parser

// Exported names

using namespace klib;
using namespace klib::parser;

constinit parser_frame p_root[deepest_level + 1] = {};
constinit int32_t parser_level = 0;

void init_parser(int32_t flags) {
  try {
    open_level(flags);
  } catch (const memory::Exhausted &) {
    ++state.refused_levels;
  }
}

void parse_from_string(const char *text) {
  if (!is_open()) return;
  p_root[parser_level].string_pos = text;
  state.checked_end[parser_level] = text;
}

void exit_parser() {
  if (state.refused_levels > 0)
    --state.refused_levels;
  else if (is_open())
    close_level();
  else
    Kdisplay(MESSAGE_NO_PARSER_LEVEL);
}
