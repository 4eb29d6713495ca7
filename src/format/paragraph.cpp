// The text of a sentence as one paragraph in the caller's own memory: control characters that break
// lines become blanks, runs of blanks one blank, and blanks become newlines again where a line
// would grow too wide. No byte is added. A stretch without a blank is never broken.
//
// Sixteen bytes are examined at a time. Time is linear in the length of the text, whatever the
// width.

#include "format/paragraph.h"

#include <algorithm>
#include <cstring>

#include "text/byte_blocks.h"

namespace klib::sentence_output {

namespace {

constexpr bool becomes_blank(char c) { return c == '\n' || c == '\r' || c == '\t'; }

// Makes the blanks of a block. False when one of them, or another blank, follows a blank. No byte
// is NUL, and there is a byte before the block.
bool passes(char *bytes) {
  const ByteVector block = load_vector(bytes);
  const ByteVector blanks = ByteVector((block == '\n') | (block == '\r') | (block == '\t'));
  const ByteVector extra = ByteVector((block | load_vector(bytes - 1)) == ' ');
  if (!any(blanks | extra)) return true;
  const ByteVector changed = (block & ~blanks) | (blanks & ' ');
  store_vector(bytes, changed);
  return !any(ByteVector((changed | load_vector(bytes - 1)) == ' '));
}

// Whether four blocks need no closer look: neither a blank after a blank nor any of the control
// bytes among which those are that become blanks.
bool calm(const char *bytes) {
  ByteVector suspect = {};
  for (int i = 0; i < 4; ++i, bytes += vector_size) {
    const ByteVector block = load_vector(bytes);
    suspect |= ByteVector(block <= '\r') | ByteVector((block | load_vector(bytes - 1)) == ' ');
  }
  return !any(suspect);
}

// The first blank after a blank in [at, end), else `end`. What becomes a blank has become one
// before it, and possibly a little beyond. There is a byte before `at`.
char *next_extra_blank(char *at, char *end) {
  const char *const begin = at;
  while (end - at >= vector_size) {
    if (end - at >= 4 * vector_size && calm(at)) {
      at += 4 * vector_size;
      continue;
    }
    char *const stop = at + std::min<ptrdiff_t>((end - at) / vector_size, 4) * vector_size;
    while (at < stop && passes(at)) at += vector_size;
    if (at < stop) break;
  }
  if (end - at < vector_size && end - begin >= vector_size && passes(end - vector_size)) return end;
  for (; at < end; ++at) {
    if (becomes_blank(*at)) *at = ' ';
    if (*at == ' ' && at[-1] == ' ') break;
  }
  return at;
}

}  // namespace

Paragraph start_paragraph(char *text, int64_t frame_length, int32_t width) {
  if (becomes_blank(*text)) *text = ' ';
  char *const second = *text == '\0' ? text : text + 1;
  return {.text = text,
          .read = second,
          .end = second,
          .width = width,
          .limit = width > 0 ? -frame_length - 1 : INT64_MAX};
}

bool collapse_piece(Paragraph &paragraph) {
  constexpr size_t piece = 32768;
  auto &[text, read, end, width, limit] = paragraph;
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

// The first candidate for a break leaves room for the frame on the first line; it is before the
// text when there is no room. The nearest blank in the width before a candidate becomes the break,
// and the next candidate is a width after the byte that follows the break; without such a blank it
// is a width further on.
void wrap(Paragraph &paragraph, int64_t length) {
  auto &[text, read, end, width, limit] = paragraph;
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

}  // namespace klib::sentence_output
