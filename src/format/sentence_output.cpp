// Sentences written to and read from the engine's sentence files.
//
// A sentence in a file is a frame of two code bytes around its decimal number, a blank and its
// text, and a newline after the frame:
//
//     {90}12 Hello, world.{91}{0A}
//
// Unnumbered output is the text and the newline alone. Before it is written the text becomes one
// paragraph with single blanks, wrapped by turning blanks into newlines: no byte is added, so that
// the text is changed in the caller's own memory. A stretch without a blank is never broken.
//
// A whole sentence reaches the stream with one flush and without any allocation, in time linear in
// its length whatever the width.

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

#include "containers/slots.h"
#include "frame/messages.h"
#include "frame/resets.h"
#include "klib.h"
#include "parameters/parameters.h"
#include "platform/platform.h"
#include "text/bytes.h"
#include "text/character_types.h"
#include "text/numbers.h"

namespace klib::sentence_output {

namespace {

constexpr char sentence_opens = '\x90';
constexpr char sentence_closes[] = "\x91\n";  // the newline alone when it is not numbered

struct State {
  bool kti_numbered = false;  // sentences are framed and numbered
  int32_t kti_width = 0;      // of a line, in bytes; nothing is wrapped unless it is positive
};
constinit State state;

constexpr bool becomes_blank(char c) { return c == '\n' || c == '\r' || c == '\t'; }

// Bytes that are looked at together; a comparison gives 255 for each byte of which it is true.
using Block = uint8_t __attribute__((vector_size(16)));
constexpr ptrdiff_t block_size = sizeof(Block);

Block load(const char *bytes) {
  Block block;
  std::memcpy(&block, bytes, sizeof block);
  return block;
}

bool any(Block condition) {
  uint64_t halves[2];
  std::memcpy(halves, &condition, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

// Makes the blanks of a block. False when one of them, or another blank, follows a blank. No byte
// is NUL, and there is a byte before the block.
bool passes(char *bytes) {
  const Block block = load(bytes);
  const Block blanks = Block((block == '\n') | (block == '\r') | (block == '\t'));
  const Block extra = Block((block | load(bytes - 1)) == ' ');
  if (!any(blanks | extra)) return true;
  const Block changed = (block & ~blanks) | (blanks & ' ');
  std::memcpy(bytes, &changed, sizeof changed);
  return !any(Block((changed | load(bytes - 1)) == ' '));
}

// Whether four blocks need no closer look: neither a blank after a blank nor any of the control
// bytes among which those are that become blanks.
bool calm(const char *bytes) {
  Block suspect = {};
  for (int i = 0; i < 4; ++i, bytes += block_size) {
    const Block block = load(bytes);
    suspect |= Block(block <= '\r') | Block((block | load(bytes - 1)) == ' ');
  }
  return !any(suspect);
}

// The first blank after a blank in [at, end), else `end`. What becomes a blank has become one
// before it, and possibly a little beyond. There is a byte before `at`.
char *next_extra_blank(char *at, char *end) {
  const char *const begin = at;
  while (end - at >= block_size) {
    if (end - at >= 4 * block_size && calm(at)) {
      at += 4 * block_size;
      continue;
    }
    char *const stop = at + std::min<ptrdiff_t>((end - at) / block_size, 4) * block_size;
    while (at < stop && passes(at)) at += block_size;
    if (at < stop) break;
  }
  if (end - at < block_size && end - begin >= block_size && passes(end - block_size)) return end;
  for (; at < end; ++at) {
    if (becomes_blank(*at)) *at = ' ';
    if (*at == ' ' && at[-1] == ' ') break;
  }
  return at;
}

// The text of one sentence while it is made ready in the caller's memory, piece by piece, so that a
// piece is still in the cache when the stream takes it.
struct Paragraph {
  char *text;
  char *read;     // where the rest of the caller's text begins
  char *end;      // of the text with single blanks; at `read` or before it
  int64_t limit;  // index up to which no break will be put in any more
};

Paragraph start(char *text, int64_t frame_length) {
  if (becomes_blank(*text)) *text = ' ';
  char *const second = *text == '\0' ? text : text + 1;
  return {text, second, second, state.kti_width > 0 ? -frame_length - 1 : INT64_MAX};
}

// Turns every newline, carriage return and tab of the next piece into a blank and every run of
// blanks into one. False at the end of the text.
bool collapse_piece(Paragraph &paragraph) {
  constexpr size_t piece = 32768;
  auto &[text, read, end, limit] = paragraph;
  if (*read == '\0') return false;
  char *const piece_end = read + strnlen(read, piece);
  const auto is_blank = [](char c) { return c == ' ' || becomes_blank(c); };
  while (read < piece_end) {
    if (end[-1] == ' ') read = std::find_if_not(read, piece_end, is_blank);
    char *const extra = next_extra_blank(read, piece_end);
    end = end == read ? extra : std::copy(read, extra, end);
    read = extra;
  }
  return true;
}

// Breaks text[0, length) into lines of kti_width. The first candidate for a break leaves room for
// what the frame takes of the first line; it lies before the text when there is none. The nearest
// blank in the width before a candidate becomes the break, and the next candidate lies a width
// after the byte that follows the break; without such a blank it lies a width further.
void wrap(Paragraph &paragraph, int64_t length) {
  auto &[text, read, end, limit] = paragraph;
  const int64_t width = state.kti_width;
  while (limit + width < length) {
    int64_t blank = limit + width;
    while (blank > limit && blank >= 0 && text[blank] != ' ') --blank;
    if (blank > limit && blank >= 0) {
      text[blank] = '\n';
      limit = blank + 1;
    } else {
      limit += width;
    }
  }
}

// Hands the parts of a short sentence to the stream in one call.
void write(FILE *stream, std::string_view frame, std::string_view text, std::string_view closing) {
  char whole[1024];
  if (frame.size() + text.size() + closing.size() <= sizeof whole) {
    char *end = whole;
    for (const std::string_view part : {frame, text, closing})
      end = std::copy(part.begin(), part.end(), end);
    platform::calls.write_stream(whole, static_cast<size_t>(end - whole), stream);
  } else {
    for (const std::string_view part : {frame, text, closing})
      if (!part.empty()) platform::calls.write_stream(part.data(), part.size(), stream);
  }
}

// Makes a text ready and writes it between its frame and its closing.
void write_paragraph(FILE *stream, std::string_view frame, char *text, std::string_view closing) {
  constexpr ptrdiff_t large = 65536;
  Paragraph paragraph = start(text, frame.empty() ? 0 : static_cast<int64_t>(frame.size()) + 1);
  const char *written = text;
  const auto rest = [&](const char *end) {
    return std::string_view(written, static_cast<size_t>(end - written));
  };
  while (collapse_piece(paragraph)) {
    // The last byte stays a blank, if it is one, for the next piece to be compared with.
    const int64_t last = paragraph.end - text - 1;
    wrap(paragraph, last);
    const char *const settled = text + std::clamp<int64_t>(paragraph.limit, -1, last - 1) + 1;
    if (settled - written < large) continue;
    write(stream, frame, rest(settled), {});
    written = settled;
    frame = {};
  }
  wrap(paragraph, paragraph.end - text);
  if (paragraph.end < paragraph.read) *paragraph.end = '\0';
  write(stream, frame, rest(paragraph.end), closing);
  std::fflush(stream);
}

}  // namespace

void reset() {
  state = State{};
  current_sentence_number = 0;
}

}  // namespace klib::sentence_output

// Exported names

using namespace klib;
using namespace klib::sentence_output;

constinit int32_t current_sentence_number = 0;

void init_kti_format(int32_t numbered) {
  using parameters::Number;
  if (parameters::number(Number::show_progress) != 0) {
    init_counter(slots::sentence_counter, parameters::number(Number::kti_start),
                 parameters::number(Number::show_progress_step));
  }
  state = {.kti_numbered = numbered != 0, .kti_width = parameters::number(Number::kti_width)};
}

void kti_format(FILE *stream, char *sentence, int32_t tick) {
  const int32_t number = tick >= 0 ? count(slots::sentence_counter, -1) : current_sentence_number;
  char opening[sizeof "{-2147483648 " + 1];
  char *end = opening;
  if (state.kti_numbered) {
    *end++ = sentence_opens;
    end = std::to_chars(end, std::end(opening) - 1, number).ptr;
    *end++ = ' ';
  }
  write_paragraph(stream, {opening, static_cast<size_t>(end - opening)}, sentence,
                  state.kti_numbered ? sentence_closes : sentence_closes + 1);
  if (tick != 0) c_tick(parameters::number(parameters::Number::kti_step));
}

char *kti_body(char *token) {
  char *text = token[0] == '\0' ? token : body(token);
  current_sentence_number = decimal_value(text);
  const auto skip = [&](uint32_t type) {
    while (*text != '\0' && (character_types::properties(u8(*text)) & type) != 0) ++text;
  };
  skip(character_types::digit);
  skip(character_types::white);
  return text;
}

void exit_kti_format() {
  c_exit(MESSAGE_NO_SENTENCE_WRITTEN, MESSAGE_ONE_SENTENCE_WRITTEN, MESSAGE_SENTENCES_WRITTEN);
}
