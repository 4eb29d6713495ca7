// Reading bytes into the token buffer, and taking them back.
//
// The token buffer and the pushback stack are byte stacks, and their records look as if every byte
// had been pushed on its own: the sizes grow by the fixed steps. But runs of bytes without a role
// are copied as a whole, eight bytes at a time, from the text or from the stream's buffer, and the
// token buffer is reserved ahead, so that a long token costs no more per byte than a short one.
//
// A stream is never read further than single calls of getc would have read it.

#include "format/input.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "containers/growth.h"
#include "format/codes.h"
#include "format/parser.h"
#include "frame/memory.h"
#include "platform/stream_buffer.h"
#include "text/byte_blocks.h"
#include "text/character_types.h"

namespace klib::parser {

namespace {

constexpr size_t checked_ahead = 4096;

// The first of a stack's sizes that is above `length` bytes.
int64_t size_above(const byte_stack &stack, size_t length) {
  return growth::size_above(static_cast<int64_t>(length), stack.size, stack.increment);
}

void reallocate(byte_stack &stack, int64_t size) {
  const auto length = stack.top - stack.base;
  stack.base = static_cast<char *>(memory::reallocate(stack.base, growth::request(size)));
  stack.top = stack.base + length;
}

// What the token buffer really has room for.
int64_t reserved_for_tokens() {
  const byte_stack &tokens = token_stack(), &known = state.reserved_for;
  const bool current =
      known.base == tokens.base && known.size == tokens.size && known.increment == tokens.increment;
  return current ? state.reserved : tokens.size;
}

// Frames whose token begins the buffer are updated when it moves.
void move_tokens(int64_t size) {
  const char *const before = token_stack().base;
  bool moves[std::size(p_root)];
  std::ranges::transform(p_root, moves, [&](const auto &frame) { return frame.token == before; });
  reallocate(token_stack(), size);
  for (size_t level = 0; level < std::size(p_root); ++level)
    if (moves[level]) p_root[level].token = token_stack().base;
}

bool is_white(char byte) {
  return (character_types::properties(u8(byte)) & character_types::white) != 0;
}

bool has_role(char byte, uint32_t wanted) { return (codes::roles[u8(byte)].stops & wanted) != 0; }

bool is_wanted(char byte, uint32_t wanted) {
  return has_role(byte, wanted) || ((wanted & P_WHITE) != 0 && is_white(byte));
}

// Copies bytes up to the first one that is wanted, `limit` at most; their number. `to` may lie
// before `from` in the same block, where nothing is written beyond the bytes that have been copied.
template <bool white>
size_t copy_bytes(char *to, const char *from, size_t limit, uint32_t wanted) {
  size_t n = 0;
  while (n < limit && !has_role(from[n], wanted) && !(white && is_white(from[n]))) {
    to[n] = from[n];
    ++n;
  }
  return n;
}

// Of eight bytes those that may be wanted: all roles are in 00-1F and 80-9F.
template <bool white>
uint64_t special_bytes(uint64_t word) {
  if constexpr (white) return character_types::may_be_white(word);
  return ~(word | word << 1) & in_each_byte(0x40);  // neither bit 5 nor bit 6
}

// The same by words of eight bytes: only a word with special bytes is looked at more closely.
// Writes up to seven bytes more than it copies, within the limit.
template <bool white>
size_t copy_words(char *to, const char *from, size_t limit, uint32_t wanted) {
  size_t n = 0;
  while (n + word_size <= limit) {
    const uint64_t word = load_word(from + n);
    store_word(to + n, word);
    const uint64_t special = special_bytes<white>(word);
    if (special == 0) {
      n += word_size;
      continue;
    }
    n += first_marked_byte(special);
    if (is_wanted(from[n], wanted)) return n;
    ++n;
  }
  return n + copy_bytes<white>(to + n, from + n, limit - n, wanted);
}

template <bool white>
size_t copy_unwanted(char *to, const char *from, size_t limit, uint32_t wanted) {
  const uintptr_t distance = reinterpret_cast<uintptr_t>(from) - reinterpret_cast<uintptr_t>(to);
  const bool by_words = distance >= word_size && (!white || character_types::is_built_in(c_t));
  return by_words ? copy_words<white>(to, from, limit, wanted)
                  : copy_bytes<white>(to, from, limit, wanted);
}

// Bytes that can be read as a whole: of a text, the next ones that are known not to be NUL (none at
// its end); of a stream, what its buffer still holds.
std::string_view ahead_in_text(const char *position) {
  if (position == nullptr) return {};
  const char *&checked_end = state.checked_end[parser_level];
  const uintptr_t known =
      reinterpret_cast<uintptr_t>(checked_end) - reinterpret_cast<uintptr_t>(position);
  if (known - 1 < checked_ahead) return {position, known};
  const size_t length = strnlen(position, checked_ahead);
  checked_end = position + length;
  return {position, length};
}

std::string_view bytes_ahead(parser_frame &frame, FILE *stream) {
  return stream != nullptr ? platform::buffered_bytes(stream) : ahead_in_text(frame.string_pos);
}

void skip_ahead(parser_frame &frame, FILE *stream, size_t length) {
  if (stream != nullptr)
    platform::skip_buffered_bytes(stream, length);
  else
    frame.string_pos += length;
}

// Bytes that the token buffer holds besides its own at its size.
size_t token_room() { return static_cast<size_t>(token_stack().size) - token_length() - 1; }

constexpr int32_t nothing_wanted = -2;

// Reads from the bytes ahead, through the first one that is wanted or must be counted separately;
// -1 for a stream's NUL.
int32_t read_run(parser_frame &frame, FILE *stream, std::string_view ahead, uint32_t wanted) {
  byte_stack &tokens = token_stack();
  if (!has_room(tokens, 1)) [[unlikely]]
    grow_tokens(token_length() + 1);
  const size_t limit = std::min(ahead.size(), token_room());
  const bool counting = frame.counting != 0;
  char *const to = tokens.top;
  const uint32_t stops = wanted | (counting ? P_COUNT : 0);
  const size_t length = (wanted & P_WHITE) != 0
                            ? copy_unwanted<true>(to, ahead.data(), limit, stops)
                            : copy_unwanted<false>(to, ahead.data(), limit, stops);
  if (counting) count_run(frame, to, length);
  tokens.top = to + length;
  if (length == limit) [[unlikely]] {
    skip_ahead(frame, stream, length);
    return nothing_wanted;
  }
  const uint8_t byte = u8(ahead[length]);
  skip_ahead(frame, stream, length + 1);
  *tokens.top++ = static_cast<char>(byte);
  if (byte == 0) return -1;
  if (!counting) return byte;
  count_byte(frame, byte);
  return is_wanted(static_cast<char>(byte), wanted) ? byte : nothing_wanted;
}

}  // namespace

void grow_tokens(size_t length) {
  byte_stack &tokens = token_stack();
  const int64_t size = size_above(tokens, length);
  int64_t reserved = reserved_for_tokens();
  if (size > reserved) {
    // Twice as much, as long as sizes have 31 bits.
    const auto ahead = static_cast<size_t>(std::min<int64_t>(2 * reserved, INT32_MAX - 1000));
    reserved = std::max(size, size_above(tokens, ahead));
    if (reserved > INT32_MAX) reserved = size;
    move_tokens(reserved);
  }
  tokens.size = static_cast<int32_t>(size);
  state.reserved_for = tokens;
  state.reserved = reserved;
}

void grow_pushback(size_t length) {
  byte_stack &pushback = pushback_stack();
  const int64_t size = size_above(pushback, length);
  reallocate(pushback, size);
  pushback.size = static_cast<int32_t>(size);
}

int32_t next_wanted(parser_frame &frame, FILE *stream, uint32_t wanted) {
  wanted |= codes::text_end;
  for (;;) {
    const bool taken_back = pushback_stack().top != pushback_stack().base;
    const std::string_view ahead = taken_back ? std::string_view() : bytes_ahead(frame, stream);
    if (!ahead.empty()) {
      const int32_t byte = read_run(frame, stream, ahead, wanted);
      if (byte != nothing_wanted) return byte;
    } else {
      const int32_t byte = next_byte(frame, stream);
      if (byte < 0 || is_wanted(static_cast<char>(byte), wanted)) return byte;
    }
  }
}

size_t copy_text(const parser_frame &frame, uint32_t wanted) {
  const std::string_view ahead = ahead_in_text(frame.string_pos);
  const size_t limit = std::min(ahead.size(), token_room() - 1);
  return copy_unwanted<true>(token_stack().top, ahead.data(), limit, wanted);
}

void take_back(parser_frame &frame, size_t count) {
  const byte_stack &pushback = pushback_stack();
  const size_t length = static_cast<size_t>(pushback.top - pushback.base) + count;
  if (!has_room(pushback, static_cast<ptrdiff_t>(count))) grow_pushback(length);
  for (; count > 0; --count) p_unget(frame);
}

}  // namespace klib::parser
