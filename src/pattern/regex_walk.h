// A search that carries sets of positions along a text; what the files share that take part in it.
//
//   regex_walk.cpp           the walk: from the set where an item begins to the set where it ends
//   regex_members.cpp        the bytes that items consume, and where words begin and end
//   regex_counted.cpp        items that are counted
//   regex_backreference.cpp  decides one back-reference by walks
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "pattern/regex.h"
#include "pattern/regex_block.h"
#include "pattern/regex_stretch.h"

namespace klib::regex {

// The bytes of a set as ranges, those with numbers from `first` to before `past` in the walk.
struct Set {
  uint16_t first, past;
};

inline constexpr uint8_t no_set = UINT8_MAX;

// An item that is counted, and its state between two blocks.
struct Window {
  Counts counts;
  ptrdiff_t distance;               // of a back-reference: how far after its group it is
  std::array<uint64_t, 5> entries;  // positions where it began whose run is unbroken; 0: this block
  uint64_t age;  // from the latest position that came of age to the block's first position
};

// A back-reference whose text can vary in length, and its group as the items [start, stop).
struct Reference {
  const uint8_t *item, *start, *stop;
};

// Whether an item's set or window has been made.
using Made = std::array<uint64_t, form_size / 64>;
[[nodiscard]] inline bool is_made(const Made &made, size_t at) {
  return (made[at / 64] >> at % 64 & 1) != 0;
}
inline void set_made(Made &made, size_t at) { made[at / 64] |= uint64_t{1} << at % 64; }

// One search. Arrays by item are indexed with the offset of the item in the compiled form.
struct Walk {
  const uint8_t *items, *end_item;
  bool backward;        // items and text are both turned round
  const uint8_t *live;  // after the last item that passes something on to the next block
  std::array<uint8_t, form_size> carry;  // what that is, for the items before `live`
  // Of the items whose bit is set in `sets_made` or `windows_made`, the set and the window.
  Made sets_made, windows_made;
  std::array<uint8_t, form_size> set_of, window_of;
  size_t sets, windows, ranges;  // in use
  size_t words_base;             // the block for which these are made, 1 when there is none:
  uint64_t words, after_words;   // bytes of words, and positions after one
  std::array<uint8_t, block_size> tail;  // the last block, when the text ends in it
  size_t references;                     // back-references whose text can vary in length
  Reference reference;                   // the last of them
  std::array<Bitmap, most_groups> held;  // the bytes that the texts of each such group may have
  std::array<uint8_t, most_groups> set_of_group;  // the set of these bytes, or no_set
  std::array<Set, form_size / 17 + most_groups> set;
  std::array<ByteRange, form_size * 4 + most_groups * 128> range;
  std::array<Window, form_size / 2> window;
};

inline constexpr uint64_t all_positions = ~uint64_t{0};

[[nodiscard]] inline size_t offset(const Walk &walk, const uint8_t *item) {
  return static_cast<size_t>(item - walk.items);
}

// regex_members.cpp

// The bytes of a block that an item consumes.
[[nodiscard]] uint64_t members_of(Walk &walk, const uint8_t *item, const Block &block);
// The bytes that the items [item, past) can consume.
[[nodiscard]] Bitmap bytes_held(const uint8_t *item, const uint8_t *past);
// The bytes of a block that the group of a back-reference can match.
[[nodiscard]] uint64_t members_of_group(Walk &walk, const uint8_t *reference, const Block &block);
// The bytes that an item consumes, as far as they are among the positions.
[[nodiscard]] uint64_t members_among(Walk &walk, const uint8_t *item, const Block &block,
                                     uint64_t positions);
// The positions among these where a word starts or ends.
[[nodiscard]] uint64_t at_word_among(Walk &walk, const uint8_t *item, const Block &block,
                                     uint64_t positions);

// regex_counted.cpp

void clear(Window &window);
Window &make_window(Walk &walk, const uint8_t *item, Counts counts);
[[nodiscard]] Window &window_at(Walk &walk, const uint8_t *item);

// Separates the back-references that are counted from those whose text can vary in length, and
// makes the windows of the counted ones.
void find_references(Walk &walk);

[[nodiscard]] uint64_t advance_counted(uint64_t positions, uint64_t members, Window &window,
                                       uint8_t &carry);

// regex_walk.cpp

// The carry says that the block's first position is one of the set.
[[nodiscard]] uint64_t advance_star(uint64_t positions, uint64_t members, uint8_t &carry);

// Makes a walk ready for the first block.
void begin(Walk &walk, const Expression &expression);

// The same for a walk from the ends of matches to their beginnings: the items in reverse order, for
// the text in reverse order. They are put into `turned`; an item at [a, b) of n bytes of items
// comes to [n - b, n - a).
void begin_backward(Walk &walk, Expression &turned, const Walk &forward);

// Makes a walk ready for another first block.
void restart(Walk &walk);

// Carries the positions of a block, and what is left from the block before, through the items
// [first, past). Result: the positions of the block that can follow the last of them.
uint64_t advance(Walk &walk, const uint8_t *first, const uint8_t *past, const Block &block,
                 uint64_t positions);

// Whether the expression, which begins with the stretch, matches somewhere, each back-reference
// whose text can vary in length taken for any bytes that its group can match.
[[nodiscard]] bool may_match(Walk &walk, bool anchored, const Stretch &start,
                             const Subject &subject);

// Decides an expression with exactly one such back-reference, on a text of at most this length.
inline constexpr size_t longest_for_sets = 131072;
[[nodiscard]] bool match_one_reference(Walk &walk, bool anchored, const Subject &subject);

}  // namespace klib::regex
