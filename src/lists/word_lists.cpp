// The word list: the lines of one file, loaded, sorted, searched and written back. Programs see it
// as l_array and l_length; the regular-expression searches use its lines as their expressions.

#include <algorithm>
#include <cstring>
#include <utility>

#include "files/checked_files.h"
#include "frame/memory.h"
#include "frame/resets.h"
#include "klib.h"
#include "lists/line_sort.h"
#include "platform/platform.h"

namespace klib::word_lists {

namespace {

constexpr int32_t no_list = 4100;

struct State {
  char *buffer = nullptr;  // the loaded list's text: sorting moves l_array[0]; null = none
  const char *buffer_end = nullptr;  // after the last line's NUL
};
constinit State state;

containers::Readable readable() { return {state.buffer, state.buffer_end}; }

// Like strcmp, with the word's key at hand. The list's lines are in cold memory; their keys are
// compared first, without a call.
int compare(const char *word, uint64_t word_key, const char *line) {
  const uint64_t line_key = containers::key_at(line, readable());
  if (word_key != line_key) return word_key < line_key ? -1 : 1;
  if (containers::is_complete(word_key)) return 0;
  return std::strcmp(word + containers::key_size, line + containers::key_size);
}

// Lines that a stream is to take together: a call for each would cost as much as its bytes.
struct Gathered {
  FILE *stream;
  size_t size = 0;
  char bytes[32768];
};

bool write_gathered(Gathered &gathered) {
  const size_t size = std::exchange(gathered.size, 0);
  return size == 0 || platform::calls.write_stream(gathered.bytes, size, gathered.stream) == size;
}

bool write_line(Gathered &gathered, const char *line) {
  const size_t length = std::strlen(line);
  if (length >= sizeof gathered.bytes - gathered.size && !write_gathered(gathered)) return false;
  if (length >= sizeof gathered.bytes)
    return platform::calls.write_stream(line, length, gathered.stream) == length &&
           platform::calls.write_stream("\n", 1, gathered.stream) == 1;
  char *end = std::copy_n(line, length, gathered.bytes + gathered.size);
  *end = '\n';
  gathered.size += length + 1;
  return true;
}

}  // namespace

void reset() {
  Kdestroy_list();
  l_array = nullptr;
  l_length = 0;
}

}  // namespace klib::word_lists

// Exported names

using namespace klib;
using namespace klib::word_lists;

constinit char **l_array = nullptr;
constinit int32_t l_length = 0;

int32_t Klist_in(const char *name) {
  l_array = Kfile_to_array(name, &l_length);
  if (l_array == nullptr) return no_list;
  const char *last = l_array[l_length > 0 ? l_length - 1 : 0];
  state = {.buffer = l_array[0], .buffer_end = last + std::strlen(last) + 1};
  return 0;
}

void Ksort_list() {
  if (l_length > 1) containers::sort_lines(l_array, static_cast<size_t>(l_length), readable());
}

int32_t Klist_search(const char *word) {
  // The lines before `low` are below the word, those from `high` on above it.
  int32_t low = 0, high = l_length;
  int32_t below = -1;  // the last line found to be below the word
  const uint64_t key = containers::key_at(word, {});
  while (low < high) {
    const int32_t probe = low + (high - low) / 2;
    if (probe == below) break;
    const int order = compare(word, key, l_array[probe]);
    if (order == 0) return probe;
    if (order < 0)
      high = probe;
    else
      low = below = probe;
  }
  return -1;
}

void Kdump_list(const char *name) {
  FILE *stream = Kfopen(name, platform::write_text);
  if (stream == nullptr) return;
  Gathered gathered;
  gathered.stream = stream;
  bool complete = true;
  for (int32_t i = 0; i < l_length && complete; ++i) complete = write_line(gathered, l_array[i]);
  files::close_stream(stream, complete && write_gathered(gathered));
}

void Kdestroy_list() {
  if (state.buffer == nullptr) return;
  Kfree(state.buffer);
  Kfree(l_array);
  state = {};
}
