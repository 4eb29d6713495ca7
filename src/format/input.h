// Reading bytes into the token buffer, and taking them back; see input.cpp. The single byte has its
// common case here: it is read for every token.
//
// `stream` is null where the level's text is read. Exhausted memory is thrown before a byte has
// been taken from anywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "containers/slots.h"
#include "format/positions.h"
#include "klib.h"
#include "text/bytes.h"

namespace klib::parser {

inline byte_stack &token_stack() { return _stack[slots::parser_token]; }
inline byte_stack &pushback_stack() { return _stack[slots::parser_pushback]; }

// Bytes in the token buffer.
[[nodiscard]] inline size_t token_length() {
  return static_cast<size_t>(token_stack().top - token_stack().base);
}

// Whether a stack has its last size while it holds `more` bytes more; else it grows first.
[[nodiscard]] inline bool has_room(const byte_stack &stack, ptrdiff_t more) {
  return stack.top - stack.base + more < stack.size;
}
// Brings a stack to the size that it has when it holds `length` bytes.
void grow_tokens(size_t length);
void grow_pushback(size_t length);

// One byte, or -1 at the end of the input, whose NUL is appended.
inline int32_t next_byte(parser_frame &frame, FILE *stream) {
  byte_stack &tokens = token_stack(), &pushback = pushback_stack();
  if (!has_room(tokens, 1)) [[unlikely]]
    grow_tokens(token_length() + 1);
  int32_t byte = 0;
  if (pushback.top != pushback.base) {
    byte = u8(*--pushback.top);
  } else if (stream != nullptr) {
    byte = getc_unlocked(stream);
    if (byte == EOF) byte = 0;
  } else if (frame.string_pos != nullptr) {
    byte = u8(*frame.string_pos);
    frame.string_pos += byte != 0;
  }
  *tokens.top++ = static_cast<char>(byte);
  if (byte == 0) return -1;
  if (frame.counting != 0) count_byte(frame, static_cast<uint8_t>(byte));
  return byte;
}

// Bytes up to and including the first one that has a role in `wanted` (see codes.h) or, with
// P_WHITE in it, is white; that byte, or -1 at the end of the input.
int32_t next_wanted(parser_frame &frame, FILE *stream, uint32_t wanted);

// Appends the next bytes of the level's text to the token buffer's, up to the first one that is
// wanted or white, or as far as they and one more fit; their number. Nothing has been read then.
size_t copy_text(const parser_frame &frame, uint32_t wanted);

// Moves the last byte of the token buffer, the NUL of the end included, to the pushback stack.
inline void p_unget(parser_frame &frame) {
  byte_stack &tokens = token_stack(), &pushback = pushback_stack();
  if (!has_room(pushback, 1)) [[unlikely]]
    grow_pushback(static_cast<size_t>(pushback.top - pushback.base) + 1);
  const char byte = *--tokens.top;
  if (byte != 0 && frame.counting != 0) uncount_byte(frame, u8(byte));
  *pushback.top++ = byte;
}

// The same for the last `count` bytes.
void take_back(parser_frame &frame, size_t count);

}  // namespace klib::parser
