// Growable arrays of pointers in 20 numbered slots, shared by the whole process. The user of a slot
// keeps the element count and a copy of the array's address; the slot knows how much room there is
// and grows by a fixed step, or by a percentage, when the next element does not fit.
//
// The room that has been allocated runs ahead of the described room, so that an array of many
// small steps is moved a few times only; it never moves between two of those steps.

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "containers/growth.h"
#include "containers/slots.h"
#include "frame/memory.h"
#include "frame/resets.h"

namespace klib::string_arrays {

namespace {

constexpr int64_t element_size = sizeof(char *);

struct Slot {
  char **base = nullptr;
  int64_t capacity = 0;   // bytes, as grown step by step
  int64_t allocated = 0;  // bytes, at least the capacity
  int64_t increment = 0;  // bytes; negative: the new capacity in percent of the old one
};

struct State {
  std::array<Slot, 20> slots;
};
constinit State state;

Slot *find_slot(int32_t number) {
  if (number < 0 || static_cast<size_t>(number) >= state.slots.size()) return nullptr;
  return &state.slots[static_cast<size_t>(number)];
}

// One step, or what the element at `distance` needs when the step does not reach that far.
void grow(Slot &slot, int64_t distance) {
  const int64_t capacity =
      std::max(growth::step(slot.capacity, slot.increment), distance + element_size);
  // A percentage can end inside an element, which must have room all the same.
  const int64_t needed = (capacity + element_size - 1) / element_size * element_size;
  if (needed > slot.allocated) {
    const int64_t ahead = std::min<int64_t>(slot.allocated + slot.allocated / 2, INT32_MAX);
    const int64_t allocated = std::max(needed, ahead);
    slot.base = static_cast<char **>(memory::reallocate(slot.base, growth::request(allocated)));
    slot.allocated = allocated;
  }
  slot.capacity = capacity;
}

// Elements `from` to `to` (exclusive) lie inside the slot's array.
bool has_elements(const Slot *slot, int64_t from, int64_t to) {
  return slot != nullptr && from >= 0 && to <= slot->allocated / element_size;
}

std::string_view element(const Slot &slot, int64_t index) {
  const char *text = slot.base[index];
  return text != nullptr ? text : "";
}

}  // namespace

void reset() {
  state.slots[slots::font_scratch].base = nullptr;  // a list that belongs to a caller
  for (const Slot &slot : state.slots) Kfree(slot.base);
  state = State{};
}

}  // namespace klib::string_arrays

// Exported names

using namespace klib;
using namespace klib::string_arrays;

char **a_make(int32_t slot, int32_t initial_count, int32_t increment) {
  Slot *const made = find_slot(slot);
  if (made == nullptr) return nullptr;
  const int64_t capacity = std::max(initial_count, 0) * element_size;
  *made = {.increment = increment >= 0 ? increment * element_size : increment};
  return memory::guarded<char **>(nullptr, [&] {
    made->base = static_cast<char **>(capacity == 0 ? Kmalloc(0)
                                                    : memory::allocate(growth::request(capacity)));
    made->capacity = made->allocated = capacity;
    return made->base;
  });
}

char **a_check(int32_t slot, char **next) {
  Slot *const checked = find_slot(slot);
  if (checked == nullptr) return nullptr;
  const auto distance = static_cast<int64_t>(reinterpret_cast<uintptr_t>(next) -
                                             reinterpret_cast<uintptr_t>(checked->base));
  if (distance < checked->capacity) return checked->base;
  return memory::guarded<char **>(nullptr, [&] {
    grow(*checked, distance);
    return checked->base;
  });
}

void a_free(int32_t slot) {
  Slot *const freed = find_slot(slot);
  if (freed == nullptr) return;
  Kfree(freed->base);
  *freed = Slot{};
}

char *a_string(int32_t slot, int32_t from, int32_t to) {
  const Slot *const source = find_slot(slot);
  if (from <= to && !has_elements(source, from, to + int64_t{1})) return nullptr;
  return memory::guarded<char *>(nullptr, [&] {
    size_t total = 0;
    for (int64_t i = from; i <= to; ++i) total += element(*source, i).size();
    auto joined = memory::allocate_array<char>(total + 1);
    char *end = joined.get();
    for (int64_t i = from; i <= to; ++i) end = std::ranges::copy(element(*source, i), end).out;
    *end = '\0';
    return joined.release();
  });
}

char **a_copy(int32_t slot, int32_t from, int32_t to) {
  const Slot *const source = find_slot(slot);
  if (from < to && !has_elements(source, from, to)) return nullptr;
  const size_t count = from < to ? static_cast<size_t>(int64_t{to} - from) : 0;
  return memory::guarded<char **>(nullptr, [&] {
    memory::TextList copies = memory::make_text_list(count);
    for (size_t i = 0; i < count; ++i)
      copies[i] = memory::copy(element(*source, from + static_cast<int64_t>(i))).release();
    return copies.release();
  });
}

int32_t a_length(char **array) {
  int32_t length = 0;
  while (array[length] != nullptr) ++length;
  return length;
}

char **a_separator(char *s, int32_t separator, int32_t collapse) {
  return memory::guarded<char **>(nullptr, [&] {
    const size_t length = std::strlen(s);
    const char byte = static_cast<char>(separator);
    const auto separators = static_cast<size_t>(std::count(s, s + length, byte));
    auto fields = memory::allocate_array<char *>(separators + 2);
    size_t count = 0;
    fields[count++] = s;
    for (char *at = s, *const end = s + length; true; fields[count++] = at) {
      at = static_cast<char *>(std::memchr(at, byte, static_cast<size_t>(end - at)));
      if (at == nullptr) break;
      *at++ = '\0';
      if (collapse != 0)
        while (at != end && *at == byte) ++at;
    }
    fields[count] = nullptr;
    return fields.release();
  });
}
