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
//   counted   A position comes of age when it lies `least` behind an S and C is unbroken between.
//             The item ends where a star from these positions would, as long as the latest of them
//             is not more than `most - least` behind. (In an unbroken run the latest one reaches
//             farthest, so the others need not be remembered.)
//
// $, \<, \> leave the positions at which they hold, groups leave all. A back-reference that always
// has the same length n and the same distance from its group is counted, n times, with C the bytes
// that equal those at that distance before them. Any other is taken for a star of any bytes, so
// that for expressions with such a one only the answer "no" is certain.
//
// Tested by regex_test.cpp.

#include "pattern/regex_linear.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace klib::regex {

namespace {

constexpr uint64_t all = ~uint64_t{0};
constexpr size_t longest_move = 255;  // that fits in the blocks which a window remembers

size_t lowest(uint64_t bits) { return static_cast<size_t>(std::countr_zero(bits)); }

size_t offset(const Walk &walk, const uint8_t *item) {
  return static_cast<size_t>(item - walk.items);
}

bool test(const std::array<uint64_t, form_size / 64> &made, size_t at) {
  return (made[at / 64] >> at % 64 & 1) != 0;
}

void clear(Window &window) {
  window.entries = {};
  window.age = 0;
}

Window &make_window(Walk &walk, const uint8_t *item, Counts counts) {
  const size_t at = offset(walk, item);
  walk.windows_made[at / 64] |= uint64_t{1} << at % 64;
  walk.window_of[at] = static_cast<uint8_t>(walk.windows);
  Window &window = walk.window[walk.windows++];
  window.counts = counts;
  clear(window);
  return window;
}

Window &window_at(Walk &walk, const uint8_t *item) {
  const size_t at = offset(walk, item);
  return test(walk.windows_made, at) ? walk.window[walk.window_of[at]]
                                     : make_window(walk, item, counts_of(item));
}

Set make_set(Walk &walk, const uint8_t *item) {
  const size_t at = offset(walk, item);
  walk.sets_made[at / 64] |= uint64_t{1} << at % 64;
  walk.set_of[at] = static_cast<uint8_t>(walk.sets);
  Set &set = walk.set[walk.sets++];
  Bitmap bitmap(item + 1, operand_size(plain(*item)));
  bitmap.put_nul(false);  // is not inside the text
  size_t firsts = walk.ranges, lasts = walk.ranges;
  set.first = static_cast<uint16_t>(walk.ranges);
  const size_t words = operand_size(plain(*item)) / 8;
  for (size_t i = 0; i < words; ++i) {
    const uint64_t word = bitmap.word(i);
    const uint64_t below = i != 0 ? bitmap.word(i - 1) >> 63 : 0;
    const uint64_t above = i + 1 != words ? bitmap.word(i + 1) << 63 : 0;
    for (uint64_t left = word & ~(word << 1 | below); left != 0; left &= left - 1)
      walk.range[firsts++].first = static_cast<uint8_t>(64 * i + lowest(left));
    for (uint64_t left = word & ~(word >> 1 | above); left != 0; left &= left - 1)
      walk.range[lasts++].last = static_cast<uint8_t>(64 * i + lowest(left));
  }
  walk.ranges = firsts;
  set.past = static_cast<uint16_t>(walk.ranges);
  return set;
}

Set set_at(Walk &walk, const uint8_t *item) {
  const size_t at = offset(walk, item);
  return test(walk.sets_made, at) ? walk.set[walk.set_of[at]] : make_set(walk, item);
}

// Tells the back-references that are counted from those whose text can vary in length. Items whose
// width never varies form a stretch; in it, widths are distances.
void find_references(Walk &walk) {
  struct Group {
    const uint8_t *start, *stop;
    size_t stretch, width_before, width_behind;
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
        group.width_behind = width;
        break;
      case end_anchor:
      case word_start:
      case word_end:
        break;
      case back_reference: {
        // In a group that is still open the text is empty.
        const bool empty = group.stop == nullptr;
        const size_t length = empty ? 0 : group.width_behind - group.width_before;
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
        }
        break;
      }
      default:
        width += counts.least;
        if (counts.least != counts.most) ++stretch;
    }
  }
}

// ---- Sets of positions in a block

// The first `count` positions.
uint64_t first_ones(uint64_t count) { return count < 64 ? (uint64_t{1} << count) - 1 : all; }

// The positions up to `distance` behind each of the set.
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

uint64_t members_of(Walk &walk, const uint8_t *item, const Block &block) {
  switch (plain(*item)) {
    case literal:
      return equal(block, item[1]);
    case any:
      return block.inside;
    default:
      break;
  }
  const Set set = set_at(walk, item);
  const uint64_t bits = within(block, &walk.range[set.first], set.past - set.first);
  return plain(*item) == negated_set ? ~bits & block.inside : bits;
}

// Whether these are so few positions, at most four, that it is best to look at each.
bool are_few(uint64_t positions) {
  for (int i = 0; i < 4; ++i) positions &= positions - 1;
  return positions == 0;
}

// As far as they are among the positions.
uint64_t members_among(Walk &walk, const uint8_t *item, const Block &block, uint64_t positions) {
  if (!are_few(positions)) return members_of(walk, item, block);
  uint64_t bits = 0;
  for (uint64_t left = positions; left != 0; left &= left - 1)
    if (consumes(item, block.bytes[lowest(left)])) bits |= left & (0 - left);
  return bits;
}

uint64_t advance_once(uint64_t positions, uint64_t members, uint8_t &carry) {
  const uint64_t matched = positions & members;
  const uint64_t result = matched << 1 | carry;
  carry = static_cast<uint8_t>(matched >> 63);
  return result;
}

// The carry tells that the block's first position is one of the set.
uint64_t advance_star(uint64_t positions, uint64_t members, uint8_t &carry) {
  positions |= carry;
  const uint64_t sum = (positions & members) + members;
  carry = sum < members ? 1 : 0;
  return (sum ^ members) | positions;
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

  if (members == all)
    entries = {0, entries[0], entries[1], entries[2], entries[3]};
  else
    entries = {0, entries[0] & ~(all >> std::countl_one(members)), 0, 0, 0};
  const uint64_t waiting = entries[1] | entries[2] | entries[3] | entries[4];
  carry = static_cast<uint8_t>(covered | (least != 0 && waiting != 0 ? 2 : 0));
  return result;
}

uint64_t advance_reference(Walk &walk, const uint8_t *item, const Block &block, uint64_t positions,
                           uint8_t &carry) {
  if (!test(walk.windows_made, offset(walk, item)))
    return advance_star(positions, block.inside, carry);
  Window &window = window_at(walk, item);
  return advance_counted(positions, equal_at_distance(block, window.distance), window, carry);
}

// Finds the bytes of a block that are letters, digits or '_'. Only from 0x80 on does that depend on
// the locale.
void find_words(Walk &walk, const Block &block) {
  if (walk.words_base == block.base) return;
  static constexpr Range ascii[] = {{'a', 'z'}, {'A', 'Z'}, {'0', '9'}, {'_', '_'}};
  static constexpr Range others = {0x80, 0xFF};
  uint64_t bits = within(block, ascii, std::size(ascii));
  const uint8_t *text = block.subject->text + block.base;
  for (uint64_t left = within(block, &others, 1); left != 0; left &= left - 1)
    if (is_word_byte(text[lowest(left)])) bits |= left & (0 - left);
  walk.words_base = block.base;
  walk.words = bits;
  walk.words_behind = bits << 1 | (block.base != 0 && is_word_byte(text[-1]) ? 1 : 0);
}

// The positions where a word starts, or ends.
uint64_t at_word(Walk &walk, const uint8_t *item, const Block &block) {
  find_words(walk, block);
  const uint64_t following = walk.backward ? walk.words_behind : walk.words;
  if (*item == word_end) return ~following;
  const uint64_t before = walk.backward ? walk.words : walk.words_behind;
  const uint64_t first = block.base == 0 ? 1 : 0, last = ~block.inside & block.positions;
  return (following & ~before) | (walk.backward ? last : first);
}

// As far as they are among the positions.
uint64_t at_word_among(Walk &walk, const uint8_t *item, const Block &block, uint64_t positions) {
  if (walk.backward || !are_few(positions)) return positions & at_word(walk, item, block);
  uint64_t bits = 0;
  for (uint64_t left = positions; left != 0; left &= left - 1) {
    const uint8_t *byte = block.bytes + lowest(left);
    const bool first = block.base == 0 && (left & 1) != 0;
    const uint8_t before = first ? uint8_t{0} : block.subject->text[block.base + lowest(left) - 1];
    const bool following = is_word_byte(*byte);
    const bool holds =
        *item == word_end ? !following : first || (following && !is_word_byte(before));
    if (holds) bits |= left & (0 - left);
  }
  return bits;
}

uint64_t at_end(const Walk &walk, const Block &block) {
  if (walk.backward) return block.base == 0 ? 1 : 0;
  return ~block.inside & block.positions;
}

// One or two literals at a fixed distance from the beginning of a match, behind an item that is
// costly to look at. Few positions are left for that item when those without them are left out.
struct Hint {
  const uint8_t *item = nullptr;
  size_t distance = 0, literals = 0;
};

Hint find_hint(const Walk &walk) {
  bool costly = false;
  size_t distance = 0;
  for (const uint8_t *item = walk.items; distance < 63; item = next_item(item)) {
    switch (*item) {
      case literal:
        if (costly) return {item, distance, *next_item(item) == literal ? size_t{2} : size_t{1}};
        [[fallthrough]];
      case any:
        distance++;
        break;
      case set:
      case wide_set:
      case negated_set:
        costly = true;
        distance++;
        break;
      case word_start:
      case word_end:
        costly = true;
        break;
      case group_start:
      case group_end:
        break;
      default:
        return {};
    }
  }
  return {};
}

// The literals may also stand in the next block.
uint64_t allowed_by(const Hint &hint, const Block &block) {
  uint64_t positions = all;
  const uint8_t *item = hint.item;
  for (size_t i = 0; i < hint.literals; ++i, item = next_item(item)) {
    const size_t distance = hint.distance + i;
    positions &= equal(block, item[1]) >> distance | ~(all >> distance);
  }
  return positions;
}

}  // namespace

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
  for (const uint8_t *item = forward.items; item != forward.end_item; item = next_item(item)) {
    to -= next_item(item) - item;
    std::copy(item, next_item(item), to);
    if (plain(*item) == back_reference && test(forward.windows_made, offset(forward, item))) {
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

bool may_match(Walk &walk, bool anchored, const Subject &subject) {
  const Hint hint = anchored ? Hint{} : find_hint(walk);
  for (size_t base = 0; base <= subject.length; base += block_size) {
    const Block block = block_at(subject, base);
    uint64_t positions = block.positions;
    if (anchored) {
      if (base != 0 && walk.live == walk.items) return false;
      positions = base == 0 ? 1 : 0;
    }
    if (hint.item != nullptr) positions &= allowed_by(hint, block);
    if (advance(walk, walk.items, walk.end_item, block, positions) != 0) return true;
  }
  return false;
}

}  // namespace klib::regex
