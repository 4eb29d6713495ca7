// The format-code parser inside the library.
//
// A level is opened, given a text or used with a stream, read token by token, and closed. Bytes
// come from the pushback stack, then from the level's text or stream, and go to the token buffer;
// both are byte stacks that all levels share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "containers/slots.h"
#include "klib.h"

namespace klib::parser {

inline constexpr int32_t deepest_level = 4;

struct State {
  // Counting, shared by all levels.
  int32_t p_open_codes = 0;   // hidden stretches open, less the visible pairs open
  int32_t p_eol_pending = 0;  // bytes 0x96 that wait for their newline
  int32_t p_tracking = 0;     // not 0 while the body of a sentence is read

  int32_t refused_levels = 0;  // opened in vain, innermost; their exits close nothing

  // The token buffer is reserved ahead of its recorded size, which grows by fixed steps. This holds
  // for exactly the recorded base, size and increment.
  byte_stack reserved_for = {};
  size_t reserved = 0;

  // By level: the part of the text before this pointer is known to hold no NUL; at most
  // `checked_ahead` bytes from the reading position.
  const char *checked_end[deepest_level + 1] = {};
};
extern constinit State state;

// Positions (positions.cpp). Taking a byte back mirrors reading it.
enum class Direction : int32_t { reading = -1, taking_back = 1 };
void count_byte(parser_frame &frame, uint8_t byte, Direction direction);
// Reads bytes that move no position but by one column each.
void count_run(parser_frame &frame, const char *bytes, size_t length);

// Input (input.cpp). What is read is appended to the token buffer; exhausted memory is thrown, and
// then nothing has been read.
struct Input {
  parser_frame &frame;
  FILE *stream;  // null: the level's text
};
// One byte, or -1 at the end of the input, whose NUL is appended.
int32_t next_byte(const Input &input);
// Bytes up to and including the first one that has a role in `wanted` (see codes.h) or, with
// P_WHITE in it, is white; that byte, or -1 at the end of the input.
int32_t next_wanted(const Input &input, uint32_t wanted);
// Moves the last byte of the token buffer, the NUL of the end included, to the pushback stack.
void p_unget(parser_frame &frame);
// The same for the last `count` bytes.
void take_back(parser_frame &frame, size_t count);

// Bytes in the token buffer.
[[nodiscard]] inline size_t token_length() {
  const byte_stack &tokens = _stack[slots::parser_token];
  return static_cast<size_t>(tokens.top - tokens.base);
}

// A level for one text, from here to the end of the scope. Unlike the exported operations it throws
// memory::Exhausted where the memory for a token or for the level itself is missing.
class Level {
 public:
  Level(int32_t flags, const char *text);
  ~Level() { exit_parser(); }
  Level(const Level &) = delete;
  int32_t next();  // as parse(nullptr); the token is in the frame
};

void reset();

}  // namespace klib::parser
