// The format-code parser inside the library.
//
// A level is opened, given a text or used with a stream, read token by token, and closed. Bytes
// come from the pushback stack, then from the level's text or stream, and go to the token buffer;
// both are byte stacks that all levels share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "klib.h"

namespace klib::parser {

inline constexpr int32_t deepest_level = 4;

struct State {
  // Counting, shared by all levels.
  int32_t p_open_codes = 0;   // hidden stretches open, less the visible pairs open
  int32_t p_eol_pending = 0;  // bytes 0x96 that wait for their newline
  int32_t p_tracking = 0;     // not 0 while the body of a sentence is read

  int32_t refused_levels = 0;  // the innermost ones; their exits close nothing

  // The token buffer is reserved ahead of its recorded size, which grows by fixed steps. This holds
  // for exactly the recorded base, size and increment.
  byte_stack reserved_for = {};
  int64_t reserved = 0;

  // By level: the part of the text before this pointer is known to hold no NUL; at most
  // `checked_ahead` bytes from the reading position.
  const char *checked_end[deepest_level + 1] = {};
};
extern constinit State state;

// Whether there is a level to read from.
[[nodiscard]] inline bool is_open() {
  return state.refused_levels == 0 && static_cast<uint32_t>(parser_level - 1) < deepest_level;
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

}  // namespace klib::parser
