// The items of a walk that are counted: intervals, and back-references whose text always has the
// same length and the same distance from its group.
//
// With C the bytes that an item consumes and S the positions where it begins: a position comes of
// age when it lies `least` after an S and C is unbroken between. The item ends where a star from
// these positions would, as long as the latest of them is not more than `most - least` back. (In
// an unbroken run the latest one reaches farthest, so the others need not be remembered.)
//
// Tested by regex_test.cpp.

#include <algorithm>
#include <bit>

#include "pattern/regex_walk.h"

namespace klib::regex {

namespace {

constexpr size_t longest_move = 255;  // that fits in the blocks which a window remembers

// The first `count` positions.
uint64_t first_ones(uint64_t count) {
  return count < 64 ? (uint64_t{1} << count) - 1 : all_positions;
}

// The positions up to `distance` after each of the set.
uint64_t smear(uint64_t set, uint64_t distance) {
  if (distance >= 63) return set | (0 - set);
  for (uint64_t done = 0; done < distance;) {
    const uint64_t step = std::min(done + 1, distance - done);
    set |= set << step;
    done += step;
  }
  return set;
}

// The set moved up by up to 255 positions, over the boundaries of the blocks before.
uint64_t moved(const std::array<uint64_t, 5> &set, uint32_t distance) {
  const uint32_t words = distance / 64, bits = distance % 64;
  return set[words] << bits | (bits != 0 ? set[words + 1] >> (64 - bits) : 0);
}

}  // namespace

void clear(Window &window) {
  window.entries = {};
  window.age = 0;
}

Window &make_window(Walk &walk, const uint8_t *item, Counts counts) {
  const size_t at = offset(walk, item);
  set_made(walk.windows_made, at);
  walk.window_of[at] = static_cast<uint8_t>(walk.windows);
  Window &window = walk.window[walk.windows++];
  window.counts = counts;
  clear(window);
  return window;
}

Window &window_at(Walk &walk, const uint8_t *item) {
  const size_t at = offset(walk, item);
  return is_made(walk.windows_made, at) ? walk.window[walk.window_of[at]]
                                        : make_window(walk, item, counts_of(item));
}

// Separates the back-references that are counted from those whose text can vary in length. Items
// whose width never varies form a stretch; in it, widths are distances.
void find_references(Walk &walk) {
  struct Group {
    const uint8_t *start, *stop;
    size_t stretch, width_before, width_after;
  };
  std::array<Group, most_groups> groups;
  size_t stretch = 0, width = 0;
  for (const uint8_t *item = walk.items; item != walk.end_item; item = next_item(item)) {
    Group &group = groups[item[1] % most_groups];  // of a group item or back-reference
    const Counts counts = counts_of(item);
    switch (plain(*item)) {
      case group_start:
        group = {item, nullptr, stretch, width, width};
        break;
      case group_end:
        group.stop = next_item(item);
        group.width_after = width;
        break;
      case end_anchor:
      case word_start:
      case word_end:
        break;
      case back_reference: {
        // In a group that is still open the text is empty.
        const bool empty = group.stop == nullptr;
        const size_t length = empty ? 0 : group.width_after - group.width_before;
        const bool fixed = group.stretch == stretch && length <= longest_move &&
                           (length == 0 || repetition_of(*item) == 0);
        if (empty || fixed) {
          const auto count = static_cast<uint32_t>(length);
          make_window(walk, item, {count, count}).distance =
              static_cast<ptrdiff_t>(width - group.width_before);
          width += length;
        } else {
          ++walk.references;
          ++stretch;
          walk.reference = {item, group.start, group.stop};
          walk.held[item[1]] = bytes_held(group.start, group.stop);
          walk.set_of_group[item[1]] = no_set;
        }
        break;
      }
      default:
        width += counts.least;
        if (counts.least != counts.most) ++stretch;
    }
  }
}

// The carry has bit 0 for a run that has come of age and goes on in the next block, bit 1 for
// entries that can still come of age.
uint64_t advance_counted(uint64_t positions, uint64_t members, Window &window, uint8_t &carry) {
  const uint32_t least = window.counts.least, extra = window.counts.most - least;
  auto &entries = window.entries;
  entries[0] = positions;
  uint64_t of_age = positions;
  if (least != 0) of_age = moved(entries, least) & ~smear(~members << 1, least - 1);

  uint8_t covered = carry & 1;
  uint64_t near = smear(of_age, extra);
  if (covered != 0 && window.age <= extra) near |= first_ones(extra - window.age + 1);
  const uint64_t result = advance_star(of_age, members, covered) & near;
  window.age = of_age != 0 ? static_cast<uint64_t>(std::countl_zero(of_age)) + 1 : window.age + 64;

  if (members == all_positions)
    entries = {0, entries[0], entries[1], entries[2], entries[3]};
  else
    entries = {0, entries[0] & ~(all_positions >> std::countl_one(members)), 0, 0, 0};
  const uint64_t waiting = entries[1] | entries[2] | entries[3] | entries[4];
  carry = static_cast<uint8_t>(covered | (least != 0 && waiting != 0 ? 2 : 0));
  return result;
}

}  // namespace klib::regex
