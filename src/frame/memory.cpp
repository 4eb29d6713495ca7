// The checked memory operations, and what the library's own code builds on them.
//
// Every allocation of the library goes through Kmalloc, Kcalloc or Krealloc. A failed one is
// reported, then the program is aborted in the library's sense: the log is closed and control
// returns. With the parameter "DEBUG" set the process ends on the spot instead.

#include "frame/memory.h"

#include <algorithm>
#include <utility>

#include "frame/messages.h"
#include "parameters/parameters.h"
#include "platform/platform.h"

namespace klib::memory {

namespace {

void out_of_memory() {
  Kmessage(MESSAGE_NO_MORE_MEMORY);
  if (parameters::number(parameters::Number::debug) != 0) {
    Kdisplay(MESSAGE_DUMPING_CORE);
    platform::calls.end_process();
  }
  Kabort_prog();
}

}  // namespace

void fail_allocation() {
  out_of_memory();
  throw Exhausted{};
}

void *allocate(size_t size) {
  if (size > UINT32_MAX) fail_allocation();
  void *block = Kmalloc(static_cast<uint32_t>(std::max<size_t>(size, 1)));
  if (block == nullptr) throw Exhausted{};
  return block;
}

void *reallocate(void *block, size_t size) {
  if (size > UINT32_MAX) fail_allocation();
  void *moved = Krealloc(block, static_cast<uint32_t>(std::max<size_t>(size, 1)));
  if (moved == nullptr) throw Exhausted{};
  return moved;
}

void Arena::add_block(size_t size) {
  constexpr size_t first = 16384;
  const size_t wanted = std::max(latest_ == nullptr ? first : 2 * latest_->size, size);
  auto *block = static_cast<Block *>(memory::allocate(sizeof(Block) + wanted));
  *block = {latest_, wanted};
  latest_ = block;
  next_ = reinterpret_cast<char *>(block + 1);
  left_ = wanted;
}

Arena::~Arena() {
  while (latest_ != nullptr) Kfree(std::exchange(latest_, latest_->before));
}

Text copy(std::string_view text) {
  Text block = allocate_array<char>(text.size() + 1);
  std::copy(text.begin(), text.end(), block.get());
  block[text.size()] = '\0';
  return block;
}

TextList make_text_list(size_t count) {
  Array<char *> list = allocate_array<char *>(count + 1);
  std::fill_n(list.get(), count + 1, nullptr);
  return TextList(list.release());
}

TextList make_text_list(Vector<Text> &texts) {
  TextList list = make_text_list(texts.size());
  move_texts(texts, list.get());
  return list;
}

void move_texts(Vector<Text> &texts, char **list) {
  for (Text &text : texts) *list++ = text.release();
  *list = nullptr;
}

void Buffer::grow(size_t size) {
  const size_t wanted = std::max({size + 1, capacity_ + capacity_ / 2, size_t{16}});
  // reallocate keeps the old block when it fails, and so does the owner.
  char *moved = static_cast<char *>(reallocate(text_.get(), wanted));
  text_.release();
  text_.reset(moved);
  capacity_ = wanted;
  text_[size_] = '\0';
}

void Buffer::reserve(size_t size) {
  if (size >= capacity_) grow(size);
}

void Buffer::append(std::string_view bytes) {
  if (size_ + bytes.size() >= capacity_) grow(size_ + bytes.size());
  std::copy(bytes.begin(), bytes.end(), text_.get() + size_);
  size_ += bytes.size();
  text_[size_] = '\0';
}

char *Buffer::detach() {
  if (!text_) grow(0);
  size_ = capacity_ = 0;
  return text_.release();
}

}  // namespace klib::memory

// Exported names

using namespace klib;

void *Kmalloc(uint32_t size) {
  if (size == 0) {
    Kdisplay(MESSAGE_ALLOCATING_NOTHING);
    return nullptr;
  }
  void *block = platform::calls.allocate(size);
  if (block == nullptr) memory::out_of_memory();
  return block;
}

void *Kcalloc(uint32_t elements, uint32_t size) {
  const uint64_t product = uint64_t{elements} * size;
  if (product == 0) return platform::calls.allocate_zeroed(elements, size);
  void *block = product > UINT32_MAX ? nullptr : platform::calls.allocate_zeroed(elements, size);
  if (block == nullptr) memory::out_of_memory();
  return block;
}

void *Krealloc(void *pointer, uint32_t size) {
  void *block = platform::calls.reallocate(pointer, size);
  if (block == nullptr) memory::out_of_memory();
  return block;
}

void Kfree(void *pointer) { platform::calls.release(pointer); }

char *string_copy(const char *source_text) {
  if (source_text == nullptr) return nullptr;
  return memory::guarded<char *>(nullptr, [&] { return memory::copy(source_text).release(); });
}
