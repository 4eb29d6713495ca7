// Anchors: numbered placeholder codes for material that is kept outside a sentence.
//
// The code of anchor 12 is {94}12{95}, of font anchor 13 {98}13{99}. The anchor text file contains
// the texts, one after the other, without separators; other data may precede the first. The anchor
// index file contains signed 32-bit numbers, little-endian on every machine: for each anchor the
// position in the text file where its text begins, and finally the position where the last text
// ends. For the texts "abc" and "de" the text file is "abcde" and the index
//
//     00 00 00 00   03 00 00 00   05 00 00 00
//
// Text k is between the positions in entries k - 1 and k (numbered from 0), of the latter the
// absolute value. Positions end at 2147483647: no text is stored beyond.
//
// Nothing in an index is trusted. A text is as long as its entries say only as far as the text file
// has that many bytes, and beyond 64 KB no more memory is taken than that.

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "files/checked_files.h"
#include "frame/messages.h"
#include "frame/resets.h"
#include "klib.h"
#include "platform/platform.h"

namespace klib::anchors {

namespace {

constexpr char anchor_opens = '\x94', anchor_closes = '\x95';
constexpr char font_anchor_opens = '\x98', font_anchor_closes = '\x99';
constexpr uint32_t code_block = 10;  // bytes, enough for numbers of 7 digits
constexpr int32_t entry_size = 4;

// The most that is read at once from a file without positions, such as a pipe: no pipe that an
// ordinary user may make holds more.
constexpr int64_t unseekable_read = 1 << 20;

// Texts up to this length are read without asking first whether the file has so many bytes.
constexpr int32_t unmeasured = 65536;

struct State {
  int32_t counter = 0;            // number of the next anchor
  uint8_t *offsets = nullptr;     // the loaded index, as it is in the file; or null
  int32_t *read_flags = nullptr;  // one per anchor, 1 when it has been read; or null
  int32_t count = 0;              // anchors in the loaded index, by the size of its file
  int32_t entries = 0;            // whole entries that could be read
};
constinit State state;

char *make_code(char opens, char closes) {
  char code[sizeof "{-2147483648}"];
  code[0] = opens;
  char *end = std::to_chars(code + 1, std::end(code), state.counter).ptr;
  *end++ = closes;
  *end++ = '\0';
  const auto size = static_cast<uint32_t>(end - code);
  auto *block = static_cast<char *>(Kmalloc(std::max(size, code_block)));
  if (block == nullptr) return nullptr;
  std::memcpy(block, code, size);
  if (state.counter < INT32_MAX) ++state.counter;
  return block;
}

// Moves to the end of the text file and returns the position there; -1, reported, when it has none.
int64_t move_to_end(int32_t text_file) {
  const int64_t position = platform::calls.seek(text_file, 0, SEEK_END);
  if (position < 0) Kmessage(MESSAGE_SEEK_ERROR);
  return position;
}

void write_entry(int32_t index_file, int64_t position) {
  if (position > INT32_MAX) Kdisplay(MESSAGE_ANCHOR_FILE_TOO_LONG);
  const auto value = static_cast<uint32_t>(std::min<int64_t>(position, INT32_MAX));
  uint8_t bytes[entry_size];
  for (int i = 0; i < entry_size; ++i) bytes[i] = static_cast<uint8_t>(value >> 8 * i);
  Kwrite(index_file, bytes, entry_size);
}

int32_t entry(int32_t n) {
  const uint8_t *bytes = state.offsets + int64_t{n} * entry_size;
  uint32_t value = 0;
  for (int i = 0; i < entry_size; ++i) value |= uint32_t{bytes[i]} << 8 * i;
  return static_cast<int32_t>(value);
}

// Bytes from the file's position to its end, `length` at most.
int32_t bytes_there(int32_t text_file, int32_t length) {
  const int64_t position = platform::calls.seek(text_file, 0, SEEK_CUR);
  const int64_t size = platform::calls.size(text_file);
  const int64_t there = position < 0 || size < 0 ? unseekable_read : size - position;
  return static_cast<int32_t>(std::clamp<int64_t>(there, 0, length));
}

// Kread of `length` bytes into a buffer with room for fewer: its result, and its report of a short
// read, with the whole length.
int32_t read_short(int32_t text_file, char *buffer, int32_t room, int32_t length) {
  const auto bytes_read =
      static_cast<int32_t>(files::read_once(text_file, buffer, static_cast<size_t>(room)));
  report_and_abort(MESSAGE_SHORT_READ, length, bytes_read);
  return bytes_read;
}

}  // namespace

void reset() {
  free_anchor_indexes();
  state = State{};
}

}  // namespace klib::anchors

// Exported names

using namespace klib;
using namespace klib::anchors;

void init_anchor_index_file() { state.counter = 1; }

char *make_anchor() { return make_code(anchor_opens, anchor_closes); }

char *make_font_anchor() { return make_code(font_anchor_opens, font_anchor_closes); }

void store_anchor(int32_t text_file, int32_t index_file, const char *text) {
  const int64_t position = move_to_end(text_file);
  const size_t length = std::strlen(text);
  const int64_t room = INT32_MAX - std::max<int64_t>(position, 0);
  if (room < 0 || length > static_cast<size_t>(room)) {
    Kdisplay(MESSAGE_ANCHOR_TEXT_TOO_LONG);
  } else {
    Kwrite(text_file, text, static_cast<int32_t>(length));
  }
  write_entry(index_file, position);
}

void finish_anchor_index_file(int32_t text_file, int32_t index_file) {
  write_entry(index_file, move_to_end(text_file));
}

void read_anchor_indexes(int32_t index_file) {
  free_anchor_indexes();
  const int32_t size = Kfile_size(index_file);
  const int32_t count = size / entry_size - 1;
  if (count <= 0) return;
  state.offsets = static_cast<uint8_t *>(Kmalloc(static_cast<uint32_t>(size)));
  if (state.offsets == nullptr) return;
  state.read_flags = static_cast<int32_t *>(Kcalloc(static_cast<uint32_t>(count), sizeof(int32_t)));
  if (state.read_flags == nullptr) return free_anchor_indexes();
  state.count = count;
  state.entries = Kread(index_file, state.offsets, size) / entry_size;
}

char *read_anchor(int32_t text_file, int32_t n) {
  if (n < 1 || n >= state.entries) {
    Kdisplay(MESSAGE_NO_SUCH_ANCHOR, n);
    return nullptr;
  }
  if (state.read_flags[n - 1] == 1) Kmessage(MESSAGE_ANCHOR_READ_TWICE, n);
  const int64_t start = entry(n - 1);
  const int64_t wanted = std::abs(int64_t{entry(n)}) - start;
  if (wanted < 0) {
    Kdisplay(MESSAGE_ANCHOR_ENDS_TOO_EARLY, n);
    return nullptr;
  }
  const auto length = static_cast<int32_t>(std::min<int64_t>(wanted, INT32_MAX));
  const bool found = start >= 0 && platform::calls.seek(text_file, start, SEEK_SET) == start;
  const int32_t room = length <= unmeasured ? length : bytes_there(text_file, length);
  auto *text = static_cast<char *>(Kmalloc(static_cast<uint32_t>(room) + 1));
  if (text == nullptr) return nullptr;
  if (!found) Kmessage(MESSAGE_SEEK_ERROR);
  const int32_t bytes_read =
      room == length ? Kread(text_file, text, length) : read_short(text_file, text, room, length);
  text[std::max(bytes_read, 0)] = '\0';
  state.read_flags[n - 1] = 1;
  return text;
}

void Kcheck_all_anchors_used() {
  for (int32_t n = 1; n <= state.count; ++n) {
    if (state.read_flags[n - 1] == 0) Kmessage(MESSAGE_ANCHOR_LOST, n);
  }
}

void free_anchor_indexes() {
  Kfree(state.offsets);
  Kfree(state.read_flags);
  state = {.counter = state.counter};
}
