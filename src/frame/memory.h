// Memory for the library's own C++ code: owners, a growing byte buffer and an allocator for
// standard containers, all over Kmalloc and its family.
//
// One policy for exhausted memory: the checked operations report it and take the abort path (as
// Kmalloc does) and then throw Exhausted. Every exported operation that can meet it runs its body
// in `guarded`, which turns it into the operation's failure result. Nothing else is thrown, and
// nothing crosses the C interface.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>
#include <vector>

#include "klib.h"

namespace klib::memory {

struct Exhausted {};

// As an allocation that fails: reports, takes the abort path and throws.
[[noreturn]] void fail_allocation();

// A block of `size` bytes (at least one is asked for); sizes beyond 32 bits are a failed
// allocation.
[[nodiscard]] void *allocate(size_t size);
[[nodiscard]] void *reallocate(void *block, size_t size);

struct Free {
  void operator()(void *block) const noexcept { Kfree(block); }
};
template <class T>
using Array = std::unique_ptr<T[], Free>;
using Text = Array<char>;  // NUL-terminated

template <class T>
[[nodiscard]] Array<T> allocate_array(size_t elements) {
  static_assert(std::is_trivial_v<T>);
  if (elements > SIZE_MAX / sizeof(T)) elements = SIZE_MAX / sizeof(T);
  return Array<T>(static_cast<T *>(allocate(elements * sizeof(T))));
}

// A NUL-terminated copy: string_copy for views, and for callers that stop when it fails.
[[nodiscard]] Text copy(std::string_view text);

template <class T>
struct Allocator {
  using value_type = T;
  Allocator() = default;
  template <class U>
  Allocator(const Allocator<U> &) noexcept {}
  [[nodiscard]] T *allocate(size_t elements) {
    return static_cast<T *>(memory::allocate(elements * sizeof(T)));
  }
  void deallocate(T *block, size_t) noexcept { Kfree(block); }
  bool operator==(const Allocator &) const = default;
};
template <class T>
using Vector = std::vector<T, Allocator<T>>;

// Memory that is needed only during one operation: many small blocks, taken one after the other
// from a piece of the stack and, when that is full, from larger and larger blocks, and given back
// together.
class Arena {
 public:
  Arena() = default;
  Arena(const Arena &) = delete;
  ~Arena();
  [[nodiscard]] void *take(size_t size) {
    size = (size + alignment - 1) / alignment * alignment;
    if (size > left_) add_block(size);
    left_ -= size;
    return next_ + left_;
  }

 private:
  static constexpr size_t alignment = alignof(std::max_align_t);
  struct Block {
    Block *before;
    size_t size;
  };
  void add_block(size_t size);

  Block *latest_ = nullptr;
  char *next_ = first_;  // what is left is taken from its end
  size_t left_ = sizeof first_;
  alignas(alignment) char first_[4096];
};

// A list in an arena, which must outlive it.
template <class T>
struct ArenaAllocator {
  using value_type = T;
  Arena *arena;
  ArenaAllocator(Arena &from) noexcept : arena(&from) {}
  template <class U>
  ArenaAllocator(const ArenaAllocator<U> &other) noexcept : arena(other.arena) {}
  [[nodiscard]] T *allocate(size_t elements) {
    return static_cast<T *>(arena->take(elements * sizeof(T)));
  }
  void deallocate(T *, size_t) noexcept {}
  bool operator==(const ArenaAllocator &) const = default;
};
template <class T>
using ArenaVector = std::vector<T, ArenaAllocator<T>>;

// A null-terminated list with its texts, all of them owned.
struct FreeTexts {
  void operator()(char **texts) const noexcept {
    for (char **text = texts; *text != nullptr; ++text) Kfree(*text);
    Kfree(texts);
  }
};
using TextList = std::unique_ptr<char *[], FreeTexts>;

// A list with room for that many texts, which are to be filled in from the front, and the null.
[[nodiscard]] TextList make_text_list(size_t count);

// Moves texts into a list, or into an array with room for them and the null.
[[nodiscard]] TextList make_text_list(Vector<Text> &texts);
void move_texts(Vector<Text> &texts, char **list);

// A growing text, always NUL-terminated and never null.
class Buffer {
 public:
  void reserve(size_t size);  // room for `size` bytes and the NUL without another allocation
  void append(std::string_view bytes);
  void append(char byte) {
    if (size_ + 1 >= capacity_) grow(size_ + 1);
    text_[size_++] = byte;
    text_[size_] = '\0';
  }
  void clear() { truncate(0); }
  void truncate(size_t size) {
    if (size < size_) text_[size_ = size] = '\0';
  }
  [[nodiscard]] size_t size() const { return size_; }
  [[nodiscard]] const char *text() const { return text_ ? text_.get() : ""; }
  [[nodiscard]] std::string_view view() const { return {text(), size_}; }
  // Returns the text, which the caller releases with Kfree; the buffer is then empty.
  [[nodiscard]] char *detach();

 private:
  void grow(size_t size);

  Text text_;
  size_t size_ = 0;
  size_t capacity_ = 0;  // bytes allocated, the NUL's included
};

// Runs the body of an exported operation; exhausted memory, reported already, becomes `failure`.
template <class Result, class Body>
Result guarded(Result failure, Body body) {
  try {
    return body();
  } catch (const Exhausted &) {
    return failure;
  }
}
template <class Body>
void guarded(Body body) {
  try {
    body();
  } catch (const Exhausted &) {
  }
}

}  // namespace klib::memory
