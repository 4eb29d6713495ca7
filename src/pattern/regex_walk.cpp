// The linear decision: whether an expression matches somewhere in a text, in time proportional to
// the text times the expression and without any memory but the walk on the stack.
//
// A search answers only yes or no, and an expression is a plain sequence of items. So instead of
// trying positions one after the other, every item maps the set of all positions where it can begin
// to the set of those where it can end. A set is one bit per position of the text, 64 of them in a
// word, and the text goes by in blocks of 64 bytes, each through all items before the next; what
// passes the end of a block an item keeps for the next one. With C the bytes that an item consumes
// and S the positions where it begins:
//
//   once      (S & C) << 1
//   star      The carry of an addition consumes a run of C: (S & C) + C turns the ones from each S
//             to the end of its run to zeros, and sets the bit where the run ends.
//   counted   See regex_counted.cpp.
//
// $, \<, \> leave the positions at which they hold, groups leave all. A back-reference that always
// has the same length n and the same distance from its group is counted, n times, with C the bytes
// that equal those at that distance before them. Any other is taken for a star of the bytes that
// its group can match, so that for expressions with such a one only the answer "no" is certain.
//
// Tested by regex_test.cpp.

#include "pattern/regex_walk.h"

#include <algorithm>

namespace klib::regex {

namespace {

uint64_t advance_once(uint64_t positions, uint64_t members, uint8_t &carry) {
  const uint64_t matched = positions & members;
  const uint64_t result = matched << 1 | carry;
  carry = static_cast<uint8_t>(matched >> 63);
  return result;
}

uint64_t advance_reference(Walk &walk, const uint8_t *item, const Block &block, uint64_t positions,
                           uint8_t &carry) {
  if (!is_made(walk.windows_made, offset(walk, item)))
    return advance_star(positions, members_of_group(walk, item, block), carry);
  Window &window = window_at(walk, item);
  return advance_counted(positions, equal_at_distance(block, window.distance), window, carry);
}

// The positions from which a match can begin, by the two literals that it has at fixed distances.
// They may also be in the next block. Where the stretch begins with a literal, the walk sees that
// as quickly.
uint64_t allowed_by(const Stretch &start, const Block &block) {
  if (start.common == no_literals || start.pair.at[0] == 0) return all_positions;
  uint64_t positions = all_positions;
  for (size_t i = 0; i < 2; ++i) {
    const size_t distance = start.pair.at[i];
    if (distance < block_size)
      positions &= equal(block, start.pair.literal[i]) >> distance | ~(all_positions >> distance);
  }
  return positions;
}

uint64_t at_end(const Walk &walk, const Block &block) {
  if (walk.backward) return block.base == 0 ? 1 : 0;
  return ~block.inside & block.positions;
}

}  // namespace

// The carry says that the block's first position is one of the set.
uint64_t advance_star(uint64_t positions, uint64_t members, uint8_t &carry) {
  positions |= carry;
  const uint64_t sum = (positions & members) + members;
  carry = sum < members ? 1 : 0;
  return (sum ^ members) | positions;
}

void begin(Walk &walk, const Expression &expression) {
  walk.items = expression.items.data();
  walk.end_item = walk.items + expression.size - 1;
  walk.backward = false;
  walk.words_base = 1;
  walk.sets_made = walk.windows_made = {};
  walk.sets = walk.windows = walk.ranges = walk.references = 0;
  if (expression.references != 0) find_references(walk);
  restart(walk);
}

void begin_backward(Walk &walk, Expression &turned, const Walk &forward) {
  uint8_t *to = turned.items.data() + (forward.end_item - forward.items);
  *to = end;
  turned.size = static_cast<uint8_t>(forward.end_item - forward.items + 1);
  turned.references = 0;
  begin(walk, turned);
  walk.backward = true;
  walk.held = forward.held;
  walk.set_of_group.fill(no_set);
  for (const uint8_t *item = forward.items; item != forward.end_item; item = next_item(item)) {
    to -= next_item(item) - item;
    std::copy(item, next_item(item), to);
    if (plain(*item) == back_reference && is_made(forward.windows_made, offset(forward, item))) {
      const Window &window = forward.window[forward.window_of[offset(forward, item)]];
      make_window(walk, to, window.counts).distance = -window.distance;
    }
  }
}

void restart(Walk &walk) {
  walk.live = walk.items;
  for (size_t i = 0; i < walk.windows; ++i) clear(walk.window[i]);
}

uint64_t advance(Walk &walk, const uint8_t *first, const uint8_t *past, const Block &block,
                 uint64_t positions) {
  const uint8_t *live = walk.items;
  for (const uint8_t *item = first; item < past && (positions != 0 || item < walk.live);) {
    const size_t at = offset(walk, item);
    uint8_t carry = item < walk.live ? walk.carry[at] : 0;
    switch (*item) {
      case literal:
        positions = advance_once(positions, equal(block, item[1]), carry);
        break;
      case group_start:
      case group_end:
        break;
      case end_anchor:
        positions &= at_end(walk, block);
        break;
      case word_start:
      case word_end:
        positions = at_word_among(walk, item, block, positions);
        break;
      case back_reference:
      case back_reference + zero_or_more:
      case back_reference + interval:
        positions = advance_reference(walk, item, block, positions, carry);
        break;
      default: {
        const uint8_t repetition = repetition_of(*item);
        if (repetition == 0) {
          const uint64_t members = members_among(walk, item, block, positions);
          positions = advance_once(positions, members, carry);
          break;
        }
        const uint64_t members = members_of(walk, item, block);
        positions = repetition == zero_or_more
                        ? advance_star(positions, members, carry)
                        : advance_counted(positions, members, window_at(walk, item), carry);
      }
    }
    walk.carry[at] = carry;
    item = next_item(item);
    if (carry != 0) live = item;
  }
  walk.live = live;
  return positions;
}

bool may_match(Walk &walk, bool anchored, const Stretch &start, const Subject &subject) {
  for (size_t base = 0; base <= subject.length; base += block_size) {
    const Block block = block_at(subject, base, walk.tail);
    uint64_t positions = block.positions;
    if (anchored) {
      if (base != 0 && walk.live == walk.items) return false;
      positions = base == 0 ? 1 : 0;
    } else {
      positions &= allowed_by(start, block);
      if (positions == 0 && walk.live == walk.items) continue;
    }
    if (advance(walk, walk.items, walk.end_item, block, positions) != 0) return true;
  }
  return false;
}

}  // namespace klib::regex
