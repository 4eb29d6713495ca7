// What the items of a walk consume: of a block of the text, the bytes that an item matches, and the
// positions at which words begin and end.
//
// A set is turned into ranges of bytes once in a walk. Where few positions are left to look at,
// each is looked at by itself.
//
// Tested by regex_test.cpp.

#include <bit>
#include <iterator>

#include "pattern/regex_walk.h"

namespace klib::regex {

namespace {

size_t lowest(uint64_t bits) { return static_cast<size_t>(std::countr_zero(bits)); }

Bitmap bytes_of_set(const uint8_t *item) { return {item + 1, operand_size(plain(*item))}; }

// Adds a set as its ranges. Result: its number.
uint8_t add_set(Walk &walk, const Bitmap &bitmap) {
  constexpr size_t words = 4;
  const auto members = [&](size_t i) {
    return i == 0 ? bitmap.word(i) & ~uint64_t{1} : bitmap.word(i);  // NUL is not inside the text
  };
  size_t firsts = walk.ranges, lasts = walk.ranges;
  Set &set = walk.set[walk.sets];
  set.first = static_cast<uint16_t>(walk.ranges);
  for (size_t i = 0; i < words; ++i) {
    const uint64_t word = members(i);
    if (word == 0) continue;
    const uint64_t below = i != 0 ? members(i - 1) >> 63 : 0;
    const uint64_t above = i + 1 != words ? members(i + 1) << 63 : 0;
    for (uint64_t left = word & ~(word << 1 | below); left != 0; left &= left - 1)
      walk.range[firsts++].first = static_cast<uint8_t>(64 * i + lowest(left));
    for (uint64_t left = word & ~(word >> 1 | above); left != 0; left &= left - 1)
      walk.range[lasts++].last = static_cast<uint8_t>(64 * i + lowest(left));
  }
  walk.ranges = firsts;
  set.past = static_cast<uint16_t>(walk.ranges);
  return static_cast<uint8_t>(walk.sets++);
}

uint64_t within_set(const Walk &walk, uint8_t number, const Block &block) {
  const Set set = walk.set[number];
  return within(block, &walk.range[set.first], static_cast<size_t>(set.past - set.first));
}

uint8_t set_at(Walk &walk, const uint8_t *item) {
  const size_t at = offset(walk, item);
  if (!is_made(walk.sets_made, at)) {
    set_made(walk.sets_made, at);
    walk.set_of[at] = add_set(walk, bytes_of_set(item));
  }
  return walk.set_of[at];
}

// Whether these are so few positions, at most four, that it is best to look at each.
bool are_few(uint64_t positions) {
  for (int i = 0; i < 4; ++i) positions &= positions - 1;
  return positions == 0;
}

// Finds the bytes of a block that are letters, digits or '_'. Only from 0x80 on does that depend on
// the locale.
void find_words(Walk &walk, const Block &block) {
  if (walk.words_base == block.base) return;
  static constexpr ByteRange ascii[] = {{'a', 'z'}, {'A', 'Z'}, {'0', '9'}, {'_', '_'}};
  static constexpr ByteRange others = {0x80, 0xFF};
  uint64_t bits = within(block, ascii, std::size(ascii));
  const uint8_t *text = block.subject->text + block.base;
  for (uint64_t left = within(block, &others, 1); left != 0; left &= left - 1)
    if (is_word_byte(text[lowest(left)])) bits |= left & (0 - left);
  walk.words_base = block.base;
  walk.words = bits;
  walk.after_words = bits << 1 | (block.base != 0 && is_word_byte(text[-1]) ? 1 : 0);
}

// The positions where a word starts, or ends.
uint64_t at_word(Walk &walk, const uint8_t *item, const Block &block) {
  find_words(walk, block);
  const uint64_t following = walk.backward ? walk.after_words : walk.words;
  if (*item == word_end) return ~following;
  const uint64_t before = walk.backward ? walk.words : walk.after_words;
  const uint64_t first = block.base == 0 ? 1 : 0, last = ~block.inside & block.positions;
  return (following & ~before) | (walk.backward ? last : first);
}

}  // namespace

uint64_t members_of(Walk &walk, const uint8_t *item, const Block &block) {
  switch (plain(*item)) {
    case literal:
      return equal(block, item[1]);
    case any:
      return block.inside;
    default:
      break;
  }
  const uint64_t bits = within_set(walk, set_at(walk, item), block);
  return plain(*item) == negated_set ? ~bits & block.inside : bits;
}

Bitmap bytes_held(const uint8_t *item, const uint8_t *past) {
  Bitmap held{};
  for (; item != past; item = next_item(item)) {
    switch (const Code code = plain(*item)) {
      case literal:
        held.add(item[1]);
        break;
      case any:
      case back_reference:
        held.add(1, 255);
        break;
      case negated_set: {
        Bitmap others = bytes_of_set(item);
        others.invert();
        held.add(others);
        break;
      }
      default:
        if (code == set || code == wide_set) held.add(bytes_of_set(item));
    }
  }
  return held;
}

uint64_t members_of_group(Walk &walk, const uint8_t *reference, const Block &block) {
  const uint8_t group = reference[1];
  uint8_t &number = walk.set_of_group[group];
  if (number == no_set) number = add_set(walk, walk.held[group]);
  return within_set(walk, number, block);
}

uint64_t members_among(Walk &walk, const uint8_t *item, const Block &block, uint64_t positions) {
  if (!are_few(positions)) return members_of(walk, item, block);
  uint64_t bits = 0;
  for (uint64_t left = positions; left != 0; left &= left - 1)
    if (consumes(item, block.bytes[lowest(left)])) bits |= left & (0 - left);
  return bits;
}

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

}  // namespace klib::regex
