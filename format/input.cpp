// Reading bytes into the token buffer, and taking them back.
//
// The token buffer and the pushback stack are byte stacks, and whoever reads their records finds
// them as if every byte had been pushed by itself: the sizes grow by the fixed steps. But runs of
// bytes without a role are copied from a text as a whole, eight bytes at a time, and the token
// buffer is reserved ahead, so that a long token costs no more per byte than a short one.
//
// A stream is read with getc, byte by byte, and never further than the byte that is asked for.

#include <algorithm>
#include <bit>
#include <cstring>

#include "containers/bytes.h"
#include "containers/slots.h"
#include "format/codes.h"
#include "format/parser.h"
#include "frame/memory.h"
#include "pattern/character_types.h"

namespace klib::parser {

namespace {

constexpr size_t checked_ahead = 4096;

byte_stack &tokens = _stack[slots::parser_token];
byte_stack &pushback = _stack[slots::parser_pushback];

size_t used(const byte_stack &stack) { return static_cast<size_t>(stack.top - stack.base); }

// The first of a stack's sizes that is above `used` bytes, as its growth step gives them; a step
// that does not enlarge counts as one byte. Beyond 31 bits: more than can be allocated.
size_t size_above(const byte_stack &stack, size_t used) {
  int64_t size = stack.size;
  while (size <= static_cast<int64_t>(used)) {
    const int64_t next =
        stack.increment >= 0 ? size + stack.increment : size * -int64_t{stack.increment} / 100;
    size = std::max(next, size + 1);
  }
  return size > INT32_MAX ? SIZE_MAX : static_cast<size_t>(size);
}

void move_block(byte_stack &stack, size_t size) {
  const size_t length = used(stack);
  stack.base = static_cast<char *>(memory::reallocate(stack.base, size));
  stack.top = stack.base + length;
}

size_t reserved_for_tokens() {
  const byte_stack &known = state.reserved_for;
  const bool current =
      known.base == tokens.base && known.size == tokens.size && known.increment == tokens.increment;
  return current ? state.reserved : static_cast<size_t>(tokens.size);
}

// Brings the token buffer to the size that it has when it holds `length` bytes.
void grow_tokens(size_t length) {
  const size_t size = size_above(tokens, length);
  size_t reserved = reserved_for_tokens();
  if (length >= reserved) {
    const size_t ahead = size_above(tokens, std::min<size_t>(2 * reserved, INT32_MAX - 1000));
    reserved = ahead == SIZE_MAX ? size : std::max(size, ahead);
    const char *const before = tokens.base;
    bool current[deepest_level + 1];
    for (int i = 0; i <= deepest_level; ++i) current[i] = p_root[i].token == before;
    move_block(tokens, reserved);
    for (int i = 0; i <= deepest_level; ++i)
      if (current[i]) p_root[i].token = tokens.base;
  }
  tokens.size = static_cast<int32_t>(size);
  state.reserved_for = tokens;
  state.reserved = reserved;
}

int read_byte(FILE *stream) {
#if defined(_WIN32)
  return _getc_nolock(stream);
#else
  return getc_unlocked(stream);
#endif
}

bool is_white(char byte) {
  return (character_types::properties(u8(byte)) & character_types::white) != 0;
}

bool is_wanted(char byte, uint32_t wanted) {
  return (codes::roles[u8(byte)].stops & wanted) != 0 ||
         ((wanted & P_WHITE) != 0 && is_white(byte));
}

// Copies bytes up to the first one that is wanted, `limit` at most; their number. `to` may lie
// before `from` in the same block, where nothing is written beyond the bytes that have been copied.
size_t copy_byte_by_byte(char *to, const char *from, size_t limit, uint32_t wanted) {
  size_t n = 0;
  for (; n < limit && !is_wanted(from[n], wanted); ++n) to[n] = from[n];
  return n;
}

// The same where nothing white is wanted, by words of eight bytes: only a word that holds a byte in
// 00-1F or 80-9F, where all roles lie, is looked at more closely. Writes up to seven bytes more
// than it copies, within the limit.
size_t copy_by_words(char *to, const char *from, size_t limit, uint32_t wanted) {
  constexpr uint64_t bit_6 = 0x4040404040404040;
  size_t n = 0;
  while (n + sizeof(uint64_t) <= limit) {
    uint64_t word;
    std::memcpy(&word, from + n, sizeof word);
    std::memcpy(to + n, &word, sizeof word);
    const uint64_t special = ~(word | word << 1) & bit_6;  // neither bit 5 nor bit 6 of the byte
    if (special == 0) {
      n += sizeof word;
      continue;
    }
    n += static_cast<size_t>(std::endian::native == std::endian::little
                                 ? std::countr_zero(special)
                                 : std::countl_zero(special)) /
         8;
    if ((codes::roles[u8(from[n])].stops & wanted) != 0) return n;
    ++n;
  }
  return n + copy_byte_by_byte(to + n, from + n, limit - n, wanted);
}

size_t copy_unwanted(char *to, const char *from, size_t limit, uint32_t wanted) {
  const uintptr_t distance = reinterpret_cast<uintptr_t>(from) - reinterpret_cast<uintptr_t>(to);
  const bool overlaps = distance < sizeof(uint64_t);
  return overlaps || (wanted & P_WHITE) != 0 ? copy_byte_by_byte(to, from, limit, wanted)
                                             : copy_by_words(to, from, limit, wanted);
}

// Number of bytes from the reading position that are known not to be NUL; 0 at the end of the text.
size_t text_ahead(const parser_frame &frame) {
  if (frame.string_pos == nullptr) return 0;
  const char *&checked_end = state.checked_end[parser_level];
  const uintptr_t known =
      reinterpret_cast<uintptr_t>(checked_end) - reinterpret_cast<uintptr_t>(frame.string_pos);
  if (known - 1 < checked_ahead) return known;
  const size_t length = strnlen(frame.string_pos, checked_ahead);
  checked_end = frame.string_pos + length;
  return length;
}

void count_appended(parser_frame &frame, char *end) {
  if (frame.counting != 0) count_run(frame, tokens.top, static_cast<size_t>(end - tokens.top));
  tokens.top = end;
  if (used(tokens) >= static_cast<size_t>(tokens.size)) grow_tokens(used(tokens));
}

int32_t next_wanted_in_text(const Input &input, uint32_t wanted) {
  for (;;) {
    const size_t ahead = text_ahead(input.frame);
    const size_t room = reserved_for_tokens() - used(tokens) - 1;
    if (ahead == 0) return next_byte(input);
    if (room == 0) {
      grow_tokens(used(tokens) + 1);
      continue;
    }
    const size_t limit = std::min(ahead, room);
    const size_t length = copy_unwanted(tokens.top, input.frame.string_pos, limit, wanted);
    input.frame.string_pos += length;
    count_appended(input.frame, tokens.top + length);
    if (length < limit) return next_byte(input);
  }
}

int32_t next_wanted_in_stream(const Input &input, uint32_t wanted) {
  for (;;) {
    char *end = tokens.top;
    const char *const limit = tokens.base + reserved_for_tokens() - 1;
    bool found = false;
    while (!found && end < limit) {
      const int byte = read_byte(input.stream);
      *end = static_cast<char>(byte == EOF ? 0 : byte);
      found = is_wanted(*end, wanted);
      end += !found;
    }
    count_appended(input.frame, end);
    if (!found) {
      grow_tokens(used(tokens) + 1);
      continue;
    }
    const uint8_t byte = u8(*tokens.top++);
    if (used(tokens) >= static_cast<size_t>(tokens.size)) grow_tokens(used(tokens));
    if (byte == 0) return -1;
    if (input.frame.counting != 0) count_byte(input.frame, byte, Direction::reading);
    return byte;
  }
}

}  // namespace

int32_t next_byte(const Input &input) {
  const size_t length = used(tokens) + 1;
  if (length >= static_cast<size_t>(tokens.size)) grow_tokens(length);
  int32_t byte = 0;
  if (pushback.top != pushback.base) {
    byte = u8(*--pushback.top);
  } else if (input.stream != nullptr) {
    byte = read_byte(input.stream);
    if (byte == EOF) byte = 0;
  } else if (input.frame.string_pos != nullptr) {
    byte = u8(*input.frame.string_pos);
    if (byte != 0) ++input.frame.string_pos;
  }
  *tokens.top++ = static_cast<char>(byte);
  if (byte == 0) return -1;
  if (input.frame.counting != 0)
    count_byte(input.frame, static_cast<uint8_t>(byte), Direction::reading);
  return byte;
}

int32_t next_wanted(const Input &input, uint32_t wanted) {
  wanted |= codes::text_end | (input.frame.counting != 0 ? P_COUNT : 0);
  while (pushback.top != pushback.base) {
    const int32_t byte = next_byte(input);
    if (byte < 0 || is_wanted(static_cast<char>(byte), wanted)) return byte;
  }
  return input.stream == nullptr ? next_wanted_in_text(input, wanted)
                                 : next_wanted_in_stream(input, wanted);
}

void take_back(parser_frame &frame, size_t count) {
  const size_t length = used(pushback) + count;
  if (length >= static_cast<size_t>(pushback.size)) {
    const size_t size = size_above(pushback, length);
    move_block(pushback, size);
    pushback.size = static_cast<int32_t>(size);
  }
  for (; count > 0; --count) {
    const char byte = *--tokens.top;
    if (byte != 0 && frame.counting != 0) count_byte(frame, u8(byte), Direction::taking_back);
    *pushback.top++ = byte;
  }
}

void p_unget(parser_frame &frame) { take_back(frame, 1); }

}  // namespace klib::parser
