// Ten numbered byte stacks: growable buffers. Bytes are appended here; their owners read, shorten,
// reset and release them through the exported records.
//
// After every operation at least one byte is free, so that the contents can always be terminated.
// A push that would fill the buffer therefore enlarges it first; a growth that fails leaves the
// stack as it was, and the byte is lost.

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "containers/growth.h"
#include "frame/memory.h"
#include "frame/resets.h"

static_assert(offsetof(byte_stack, base) == 0 && offsetof(byte_stack, top) == sizeof(char *) &&
              offsetof(byte_stack, size) == 2 * sizeof(char *) &&
              sizeof(byte_stack) == 2 * sizeof(char *) + 8);

namespace klib::byte_stacks {

namespace {

byte_stack *find_stack(int32_t n) {
  return n >= 0 && n < static_cast<int32_t>(std::size(_stack)) ? &_stack[n] : nullptr;
}

int64_t used(const byte_stack &stack) { return stack.base != nullptr ? stack.top - stack.base : 0; }

// Room for `count` more bytes and a free one after them.
bool make_room(byte_stack &stack, size_t count) {
  const int64_t size = stack.base != nullptr ? stack.size : 0;
  const int64_t in_use = used(stack);
  const int64_t wanted = in_use + static_cast<int64_t>(std::min<size_t>(count, INT32_MAX));
  if (wanted < size) return true;
  return memory::guarded(false, [&] {
    const int64_t grown = growth::size_above(wanted, size, stack.increment);
    stack.base = static_cast<char *>(memory::reallocate(stack.base, growth::request(grown)));
    stack.top = stack.base + in_use;
    stack.size = static_cast<int32_t>(grown);
    return true;
  });
}

// Out of line, so that a push that finds room is nothing but tests, a store and an increment.
[[gnu::noinline]] void push_growing(byte_stack &stack, char byte) {
  if (make_room(stack, 1)) *stack.top++ = byte;
}

}  // namespace

void reset() { std::ranges::fill(_stack, byte_stack{}); }

}  // namespace klib::byte_stacks

// Exported names

using namespace klib;
using namespace klib::byte_stacks;

constinit byte_stack _stack[10] = {};

void s_make(int32_t n, int32_t initial_size, int32_t increment) {
  byte_stack *const stack = find_stack(n);
  if (stack == nullptr) return;
  const int32_t size = std::max(initial_size, 0);
  char *const base = static_cast<char *>(Kmalloc(static_cast<uint32_t>(size)));
  *stack = {base, base, base != nullptr ? size : 0, increment};
}

void s_push(int32_t n, int32_t c) {
  byte_stack *const stack = find_stack(n);
  if (stack == nullptr) return;
  const char byte = static_cast<char>(c);
  if (stack->base != nullptr && stack->top - stack->base + 1 < stack->size) [[likely]]
    *stack->top++ = byte;
  else
    push_growing(*stack, byte);
}

void s_fill(int32_t n, const char *string) {
  byte_stack *const stack = find_stack(n);
  if (stack == nullptr) return;
  // The text may lie in the stack, which moves when it grows.
  const auto offset =
      reinterpret_cast<uintptr_t>(string) - reinterpret_cast<uintptr_t>(stack->base);
  const bool own = stack->base != nullptr && offset < static_cast<uintptr_t>(stack->size);
  const size_t length = std::strlen(string);
  if (!make_room(*stack, length)) return;
  std::memmove(stack->top, own ? stack->base + offset : string, length);
  stack->top += length;
  *stack->top = '\0';
}

char *s_stack(int32_t n) {
  byte_stack *const stack = find_stack(n);
  if (stack == nullptr || !make_room(*stack, 0)) return nullptr;
  *stack->top = '\0';
  return stack->base;
}
