// Line and column of the raw bytes, and the real position, in which codes take no room.
//
// One signed counter, `p_open_codes`, serves two kinds of codes. A hidden stretch raises it while
// it lasts; when the counter returns to 0, so does the real position to where the stretch began. A
// pair with a visible body lowers it while it lasts, so a stretch that is hidden inside such a pair
// never starts from 0 and counts as visible.
//
// All numbers are 32 bits wide and wrap around.

#include "format/positions.h"

#include <algorithm>

#include "format/codes.h"
#include "format/parser.h"
#include "text/bytes.h"
#include "text/character_types.h"

namespace klib::parser {

namespace {

using codes::Effect;

void add(int32_t &number, int32_t amount) {
  number = static_cast<int32_t>(static_cast<uint32_t>(number) + static_cast<uint32_t>(amount));
}

// Reading counts with d = -1, taking back with d = 1.
enum Direction : int32_t { reading = -1, taking_back = 1 };

// `n` above 0 ends a hidden stretch, else one begins.
void hidden_step(parser_frame &frame, int32_t n) {
  if (n > 0) {
    add(state.p_open_codes, -1);
    if (state.p_open_codes != 0) return;
    frame.real_line = frame.hidden_real_line;
    frame.real_column = frame.hidden_real_column;
  } else {
    add(state.p_open_codes, 1);
    if (state.p_open_codes != 1) return;
    frame.hidden_real_line = frame.real_line;
    frame.hidden_real_column = frame.real_column;
  }
}

template <Direction d>
void move_over_newline(parser_frame &frame) {
  if (d == reading) {
    frame.last_line_columns = frame.column;
    frame.last_line_real_columns = frame.real_column;
    frame.column = frame.real_column = 1;
  } else {
    frame.column = frame.last_line_columns;
    frame.real_column = frame.last_line_real_columns;
  }
  add(frame.line, -d);
  add(frame.real_line, -d);
}

// What a byte does apart from taking its place.
template <Direction d>
void apply_effect(parser_frame &frame, Effect effect) {
  switch (effect) {
    case Effect::none:
      break;
    case Effect::newline:
      if (state.p_eol_pending != 0) hidden_step(frame, -d);
      state.p_eol_pending = 0;
      break;
    case Effect::mark:
      add(frame.real_column, d);
      break;
    case Effect::visible_open:
      add(state.p_open_codes, d);
      add(frame.real_column, d);
      break;
    case Effect::visible_close:
      add(state.p_open_codes, -d);
      add(frame.real_column, d);
      break;
    case Effect::hidden_open:
      add(frame.real_column, d);
      hidden_step(frame, d);
      break;
    case Effect::hidden_close:
      hidden_step(frame, -d);
      break;
    case Effect::hidden_line:
      add(state.p_eol_pending, -d);
      add(frame.real_column, d);
      hidden_step(frame, d);
      break;
    case Effect::alien:
      add(frame.real_column, codes::alien_digits * d);
      break;
  }
}

bool is_printing(char byte) {
  using namespace character_types;
  return (properties(u8(byte)) & (white | kavro)) == 0;
}

// Records that a printing byte ends before `real_column`.
void track(parser_frame &frame, int32_t real_column) {
  const int32_t column = real_column - 1;
  frame.max_real_column = std::max(frame.max_real_column, column);
  frame.min_real_column = std::min(frame.min_real_column, column);
}

template <Direction d>
void count_either_way(parser_frame &frame, uint8_t byte) {
  if (byte == '\n') {
    move_over_newline<d>(frame);
  } else {
    add(frame.column, -d);
    add(frame.real_column, -d);
  }
  apply_effect<d>(frame, codes::roles[byte].effect);
  if (state.p_tracking != 0 && is_printing(static_cast<char>(byte)))
    track(frame, frame.real_column);
}

}  // namespace

void count_byte(parser_frame &frame, uint8_t byte) { count_either_way<reading>(frame, byte); }

void uncount_byte(parser_frame &frame, uint8_t byte) { count_either_way<taking_back>(frame, byte); }

void count_run(parser_frame &frame, const char *bytes, size_t length) {
  const int32_t before = frame.real_column;
  add(frame.column, static_cast<int32_t>(length));
  add(frame.real_column, static_cast<int32_t>(length));
  if (state.p_tracking == 0) return;
  // Columns rise along a run: only its first and its last printing byte can be outermost.
  const char *end = bytes + length;
  const char *first = std::find_if(bytes, end, is_printing);
  if (first == end) return;
  while (!is_printing(end[-1])) --end;
  track(frame, before + static_cast<int32_t>(first - bytes) + 1);
  track(frame, before + static_cast<int32_t>(end - bytes));
}

}  // namespace klib::parser
