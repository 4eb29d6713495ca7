// The text of a sentence made into a paragraph, piece by piece; see paragraph.cpp.
#pragma once

#include <cstdint>

namespace klib::sentence_output {

struct Paragraph {
  char *text;
  char *read;     // where the rest of the caller's text begins
  char *end;      // of the text with single blanks; at `read` or before it
  int64_t width;  // of a line, in bytes
  int64_t limit;  // index up to which no break will be put in any more
};

// `frame_length` bytes of the first line are taken by the frame. Nothing is wrapped unless the
// width is positive.
[[nodiscard]] Paragraph start_paragraph(char *text, int64_t frame_length, int32_t width);

// Turns every newline, carriage return and tab of the next piece into a blank and every run of
// blanks into one. False at the end of the text.
bool collapse_piece(Paragraph &paragraph);

// Breaks text[0, length) into lines.
void wrap(Paragraph &paragraph, int64_t length);

}  // namespace klib::sentence_output
