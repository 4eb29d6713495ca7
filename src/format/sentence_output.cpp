// Sentences written to and read from the engine's sentence files.
//
// A sentence in a file is a frame of two code bytes around its decimal number, a blank and its
// text, and a newline after the frame:
//
//     {90}12 Hello, world.{91}{0A}
//
// Unnumbered output is the text and the newline alone. Before it is written the text becomes one
// paragraph (paragraph.cpp) in the caller's own memory, piece by piece, so that a piece is still in
// the cache when the stream takes it. A whole sentence reaches the stream with one flush and
// without any allocation.

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

#include "containers/slots.h"
#include "format/paragraph.h"
#include "frame/messages.h"
#include "frame/resets.h"
#include "klib.h"
#include "parameters/numbers.h"
#include "parameters/parameters.h"
#include "platform/platform.h"
#include "text/bytes.h"
#include "text/character_types.h"

namespace klib::sentence_output {

namespace {

constexpr char sentence_opens = '\x90';
constexpr char sentence_closes[] = "\x91\n";  // the newline alone when it is not numbered

struct State {
  bool kti_numbered = false;  // sentences are framed and numbered
  int32_t kti_width = 0;      // of a line, in bytes; nothing is wrapped unless it is positive
};
constinit State state;

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
  const int64_t frame_length = frame.empty() ? 0 : static_cast<int64_t>(frame.size()) + 1;
  Paragraph paragraph = start_paragraph(text, frame_length, state.kti_width);
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
