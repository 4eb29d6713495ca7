// The double stack: one process-wide list of (tag, text) pairs in two parallel arrays, which live
// in array slots. The tags are 32-bit integers, 4 bytes apart, in an array made for pointers: both
// arrays grow at the same number of entries.

#include <algorithm>
#include <cstring>

#include "containers/slots.h"
#include "frame/memory.h"
#include "frame/resets.h"
#include "platform/platform.h"

namespace klib::double_stack {

namespace {

constexpr int32_t initial_count = 50;
constexpr int32_t increment = 50;

bool is_made() { return _sa != nullptr && _ta != nullptr; }

int32_t entries() { return is_made() ? _sa_index : 0; }

// Room for one more entry in both arrays. An array that cannot grow stays as it is.
bool make_room() {
  char **const texts = a_check(slots::double_stack_texts, _sa + _sa_index);
  if (texts == nullptr) return false;
  _sa = texts;
  char **const tags = a_check(slots::double_stack_tags, reinterpret_cast<char **>(_ta) + _sa_index);
  if (tags == nullptr) return false;
  _ta = reinterpret_cast<int32_t *>(tags);
  return true;
}

}  // namespace

void reset() {
  reuse_double_stack();
  free_double_stack();
}

}  // namespace klib::double_stack

// Exported names

using namespace klib;
using namespace klib::double_stack;

constinit char **_sa = nullptr;
constinit int32_t *_ta = nullptr;
constinit int32_t _sa_index = 0;

void init_double_stack() {
  _sa = a_make(slots::double_stack_texts, initial_count, increment);
  _ta = reinterpret_cast<int32_t *>(a_make(slots::double_stack_tags, initial_count, increment));
  _sa_index = 0;
}

void push_on_double_stack(int32_t tag, const char *string) {
  if (!is_made()) return;
  char *const copy = string_copy(string);
  if ((copy == nullptr && string != nullptr) || !make_room()) {
    Kfree(copy);
    return;
  }
  _sa[_sa_index] = copy;
  _ta[_sa_index] = tag;
  ++_sa_index;
}

void zap_double_object(int32_t index) {
  if (index < 0 || index >= entries()) return;
  Kfree(_sa[index]);
  std::copy(_sa + index + 1, _sa + _sa_index, _sa + index);
  std::copy(_ta + index + 1, _ta + _sa_index, _ta + index);
  --_sa_index;
}

void reuse_double_stack() {
  std::for_each_n(_sa, entries(), Kfree);
  _sa_index = 0;
}

void empty_double_stack(FILE *stream) {
  for (int32_t i = 0; i < entries(); ++i)
    if (_sa[i] != nullptr) platform::calls.write_stream(_sa[i], std::strlen(_sa[i]), stream);
  reuse_double_stack();
}

void free_double_stack() {
  a_free(slots::double_stack_texts);
  a_free(slots::double_stack_tags);
  _sa = nullptr;
  _ta = nullptr;
}
