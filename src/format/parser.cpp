// Tokens of the format-code parser: plain text and whole codes, as far as the level's flags ask for
// them.
//
// A token is what the token buffer holds when it is delivered. A byte that ends a token without
// belonging to it is taken back and read again by the next call.

#include "format/parser.h"

#include <cstring>
#include <string_view>

#include "format/codes.h"
#include "format/input.h"
#include "frame/memory.h"
#include "frame/messages.h"
#include "text/character_types.h"

namespace klib::parser {

namespace {

using codes::Code;

int32_t deliver(parser_frame &frame, int32_t kind) {
  *token_stack().top = '\0';
  frame.token = token_stack().base;
  return kind;
}

// Text that was read before the byte that has just ended it.
int32_t deliver_text(parser_frame &frame) {
  p_unget(frame);
  return deliver(frame, P_TEXT);
}

bool is_white(int32_t byte) {
  const uint32_t type = character_types::properties(static_cast<uint8_t>(byte));
  return (type & character_types::white) != 0;
}

// The bytes after the opening one, through the closing one that belongs to it.
void read_body(parser_frame &frame, FILE *stream, const Code &code) {
  const auto ends = static_cast<uint32_t>(code.close == '\n' ? P_LINE : code.kind);
  const uint32_t marks = code.kind == P_CODE_LINE ? 0 : P_MARK_1D;
  for (size_t depth = 1; depth > 0;) {
    const int32_t byte = next_wanted(frame, stream, ends | marks);
    if (byte < 0) return report_and_abort(MESSAGE_PREMATURE_END);
    if (byte == code.close)
      --depth;
    else if (byte == code.open && code.nests)
      ++depth;
    else if (byte == codes::of(P_MARK_1D).open && marks != 0)
      frame.status = 128;
  }
}

// A sentence's body; the outermost columns of its printing bytes are recorded.
void read_sentence(parser_frame &frame, FILE *stream, const Code &code) {
  struct Tracking {
    Tracking() { state.p_tracking = 1; }
    ~Tracking() { state.p_tracking = 0; }
  } tracking;
  frame.min_real_column = frame.max_real_column = frame.token_real_column;
  read_body(frame, stream, code);
}

// A line with 0x97 in it. Earlier lines in the buffer are a token of their own, and then this line
// is read again.
int32_t read_code_line(parser_frame &frame, FILE *stream, const Code &code) {
  const std::string_view text(token_stack().base, token_length());
  const size_t newline = text.rfind('\n');
  if (newline != text.npos) {
    take_back(frame, text.size() - newline - 1);
    return deliver(frame, P_TEXT);
  }
  read_body(frame, stream, code);
  // The line does not count.
  frame.real_line = static_cast<int32_t>(static_cast<uint32_t>(frame.real_line) - 1);
  return deliver(frame, P_CODE_LINE);
}

int32_t read_code(parser_frame &frame, FILE *stream, const Code &code) {
  if (code.kind == P_CODE_LINE) return read_code_line(frame, stream, code);
  if (token_length() > 1) return deliver_text(frame);
  switch (code.kind) {
    case P_MARK_1D:
      break;
    case P_ALIEN:
      for (int i = 0; i < codes::alien_digits; ++i)
        if (next_byte(frame, stream) < 0) report_and_abort(MESSAGE_PREMATURE_END);
      break;
    case P_SENTENCE:
      read_sentence(frame, stream, code);
      break;
    default:
      read_body(frame, stream, code);
  }
  return deliver(frame, code.kind);
}

int32_t read_white(parser_frame &frame, FILE *stream) {
  if (token_length() > 1) return deliver_text(frame);
  int32_t byte;
  do byte = next_byte(frame, stream);
  while (byte >= 0 && is_white(byte));
  if (byte >= 0) p_unget(frame);
  return deliver(frame, P_WHITE);
}

// The code that a byte opens, if the level asks for it.
const Code *code_opened_by(int32_t byte, int32_t flags) {
  const uint8_t opens = codes::roles[static_cast<size_t>(byte)].opens;
  if (opens == 0 || (codes::table[opens - 1].kind & flags) == 0) return nullptr;
  return &codes::table[opens - 1];
}

void begin_token(parser_frame &frame) {
  frame.token = nullptr;
  token_stack().top = token_stack().base;
}

void begin_positions(parser_frame &frame) {
  frame.status = 0;
  frame.token_line = frame.line;
  frame.token_real_line = frame.real_line;
  frame.token_column = frame.column;
  frame.token_real_column = frame.real_column;
}

constexpr int32_t all_kinds = 2 * P_LINE - 1;

// Most tokens of a text read by words are single blanks, and words before a blank, of which the
// first byte has been taken back. Reads such a one, and takes back the byte after it, in one step;
// P_END, with nothing done, when that is not so. Not inlined: others need not save its registers.
[[gnu::noinline]] int32_t read_blank_or_word(parser_frame &frame) {
  byte_stack &tokens = token_stack(), &pushback = pushback_stack();
  if (frame.counting != 0 || frame.string_pos == nullptr || pushback.top - pushback.base != 1 ||
      tokens.size <= 2)
    return P_END;
  const char byte = *pushback.base;
  const bool blank = is_white(u8(byte));
  const auto wanted = static_cast<uint32_t>(frame.flags & all_kinds) | codes::text_end;
  if (!blank && (codes::roles[u8(byte)].stops & wanted) != 0) return P_END;
  *tokens.base = byte;
  tokens.top = tokens.base + 1;
  const size_t length = blank ? 0 : copy_text(frame, wanted);
  const char next = frame.string_pos[length];
  if (next == '\0' || is_white(u8(next)) == blank) return P_END;
  begin_positions(frame);
  *pushback.base = next;
  frame.string_pos += length + 1;
  tokens.top += length;
  return deliver(frame, blank ? P_WHITE : P_TEXT);
}

int32_t read_token(parser_frame &frame, FILE *stream) {
  begin_token(frame);
  begin_positions(frame);
  const int32_t flags = frame.flags & all_kinds;
  int32_t byte = next_byte(frame, stream);
  if (byte < 0) return P_END;
  for (;;) {
    if ((flags & P_WHITE) != 0 && is_white(byte)) return read_white(frame, stream);
    if (const Code *code = code_opened_by(byte, flags)) return read_code(frame, stream, *code);
    if ((flags & P_LINE) != 0 && byte == '\n') return deliver(frame, P_LINE);
    byte = next_wanted(frame, stream, static_cast<uint32_t>(flags));
    if (byte < 0) return deliver_text(frame);
  }
}

// Until the real position is reached; the position moves by more than a column, and codes open and
// close, only at bytes with a role.
int32_t read_to_position(parser_frame &frame, FILE *stream, int32_t line, int32_t column) {
  int32_t byte = 0;
  while (byte >= 0 && frame.real_line < line) byte = next_wanted(frame, stream, P_COUNT);
  while (byte >= 0 && (frame.real_column < column || state.p_open_codes != 0))
    byte = next_byte(frame, stream);
  return deliver(frame, byte >= 0 ? 0 : -1);
}

}  // namespace

int32_t Level::next() { return is_open() ? read_token(p_root[parser_level], nullptr) : P_END; }

}  // namespace klib::parser

// Exported names

using namespace klib;
using namespace klib::parser;

int32_t parse(FILE *stream) {
  if (!is_open()) return P_END;
  parser_frame &frame = p_root[parser_level];
  if (stream == nullptr && (frame.flags & P_WHITE) != 0)
    if (const int32_t kind = read_blank_or_word(frame); kind != P_END) return kind;
  return memory::guarded<int32_t>(P_END, [&] { return read_token(frame, stream); });
}

int32_t parse_to(FILE *stream, int32_t line, int32_t column) {
  if (!is_open()) return -1;
  begin_token(p_root[parser_level]);
  return memory::guarded<int32_t>(
      -1, [&] { return read_to_position(p_root[parser_level], stream, line, column); });
}

int32_t p_getchar(FILE *stream) {
  if (!is_open()) return -1;
  return memory::guarded<int32_t>(-1, [&] {
    const int32_t byte = next_byte(p_root[parser_level], stream);
    s_stack(slots::parser_token);  // the token ends after the new byte
    return byte;
  });
}

char *body(char *token) {
  const size_t length = std::strlen(token);
  if (length == 0) return token;
  token[length - 1] = '\0';
  return token + 1;
}

int32_t real_string_length(const char *text) {
  return memory::guarded<int32_t>(0, [&] {
    Level level(P_COUNT, text);
    level.next();
    return is_open() ? p_root[parser_level].real_column - 1 : 0;
  });
}

int32_t Kparse_alien(const char *token) {
  int32_t value = 0;
  for (int i = 1; i <= codes::alien_digits && token[i - 1] != '\0' && token[i] != '\0'; ++i) {
    const int32_t byte = u8(token[i]);
    value = value * 16 + (byte > '9' ? byte - ('A' - 10) : byte - '0');
  }
  return value;
}
