// The word alignment of a transfer: one list of source word numbers, ended by -1, for each word of
// the translation. A caller's lists are checked and put in order in place; lists for the default
// alignment, word by word, are made here. Codes go from source words to target words, so the lists
// are also turned round.

#include "transfer/transfer.h"

#include <cassert>

namespace klib::transfer {

DefaultLists make_default_alignment(TargetTable &targets, size_t source_words) {
  DefaultLists lists;
  lists.reserve(targets.words.size());
  for (size_t k = 0; k < targets.words.size(); ++k) {
    auto &list = lists.emplace_back(memory::allocate_array<int32_t>(2));
    list[0] = k < source_words ? static_cast<int32_t>(k) : unaligned;
    list[1] = -1;
    targets.words[k].alignment = list.get();
  }
  return lists;
}

int32_t check_alignment(int32_t *const *alignment, size_t target_words, size_t source_words) {
  size_t lists = 0;
  for (; alignment[lists] != nullptr; ++lists) {
    for (int32_t *number = alignment[lists]; *number != -1; ++number) {
      if (*number < 0) return 1;
      if (static_cast<size_t>(*number) >= source_words) *number = unaligned;
    }
  }
  return lists == target_words ? 0 : 2;
}

AlignmentIndex index_alignment(const TargetTable &targets, size_t source_words,
                               memory::Arena &arena) {
  const auto names_word = [&](int32_t number) {
    return static_cast<size_t>(number) < source_words;  // also when it is 126
  };
  AlignmentIndex index{memory::ArenaVector<uint32_t>(arena), memory::ArenaVector<uint32_t>(arena)};
  auto &starts = index.starts;
  starts.resize(source_words + 1);
  for (const TargetWord &target : targets.words)
    for (const int32_t *number = target.alignment; *number != -1; ++number)
      if (names_word(*number)) ++starts[static_cast<size_t>(*number)];

  // Each count becomes the end of its word's entries, and filling from the back the start. More
  // entries than 32 bits can count are more than memory can hold.
  size_t entries = 0;
  for (uint32_t &start : starts) start = static_cast<uint32_t>(entries += start);
  index.targets.resize(entries);
  for (size_t k = targets.words.size(); k-- > 0;)
    for (const int32_t *number = targets.words[k].alignment; *number != -1; ++number)
      if (names_word(*number))
        index.targets[--starts[static_cast<size_t>(*number)]] = static_cast<uint32_t>(k);
  assert(starts.front() == 0 && starts.back() == entries);
  return index;
}

}  // namespace klib::transfer
