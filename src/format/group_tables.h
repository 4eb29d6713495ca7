// What is kept per group: arrays that grow with the number of groups, and sets of group numbers.
// Plain structs without destructors, so that process-wide state needs no start-up code.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "frame/memory.h"

namespace klib::fonts {

// Room for element `count` of an array that has room for all before it: the array doubles at
// powers of two. Throws memory::Exhausted; the array is then as before.
template <class T>
void make_room(T *&array, int32_t count) {
  constexpr uint32_t least = 16;
  const auto used = static_cast<uint32_t>(count);
  if (used != 0 && (used < least || !std::has_single_bit(used))) return;
  const size_t room = 2 * size_t{std::max(used, least / 2)};
  array = static_cast<T *>(memory::reallocate(array, room * sizeof(T)));
}

// One bit a group, read out in ascending order. An empty set costs nothing to read or to clear,
// another one as much as the stretch between its outermost members.
struct GroupSet {
  uint64_t *words = nullptr;
  int32_t first = INT32_MAX;  // the outermost words that may hold a member
  int32_t last = -1;
};

inline void make_room(GroupSet &set, int32_t group) {
  if (group % 64 != 0) return;
  make_room(set.words, group / 64);
  set.words[group / 64] = 0;
}

[[nodiscard]] inline bool is_empty(const GroupSet &set) { return set.last < 0; }

[[nodiscard]] inline bool contains(const GroupSet &set, int32_t group) {
  return (set.words[group / 64] >> (group % 64) & 1) != 0;
}

inline void insert(GroupSet &set, int32_t group) {
  const int32_t word = group / 64;
  set.words[word] |= uint64_t{1} << (group % 64);
  set.first = std::min(set.first, word);
  set.last = std::max(set.last, word);
}

inline void clear(GroupSet &set) {
  for (int32_t i = set.first; i <= set.last; ++i) set.words[i] = 0;
  set.first = INT32_MAX;
  set.last = -1;
}

template <class Visit>
void for_each(const GroupSet &set, Visit visit) {
  for (int32_t i = set.first; i <= set.last; ++i)
    for (uint64_t word = set.words[i]; word != 0; word &= word - 1)
      visit(i * 64 + std::countr_zero(word));
}

inline void release(GroupSet &set) {
  Kfree(set.words);
  set = GroupSet{};
}

}  // namespace klib::fonts
