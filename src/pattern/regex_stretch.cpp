// Finding the stretches of an expression, and a stretch in a text; see regex_stretch.h.
//
// The two literals that are looked for are chosen by a guess of how common each byte is in running
// text.
//
// Tested by regex_test.cpp.

#include "pattern/regex_stretch.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace klib::regex {

namespace {

// Letters by how often European languages have them; from 0xC0 on lie those of other scripts.
constexpr std::array<uint8_t, 256> commonness = [] {
  std::array<uint8_t, 256> table{};
  table.fill(20);
  for (size_t byte = 0xC0; byte < table.size(); ++byte) table[byte] = 100;
  for (size_t byte = '0'; byte <= '9'; ++byte) table[byte] = 60;
  uint8_t value = 250;
  for (const char byte : std::string_view(" eaintsrodlucmphgfbvyzkwjqx")) {
    table[static_cast<uint8_t>(byte)] = value;
    value = static_cast<uint8_t>(value - 8);
  }
  return table;
}();
constexpr uint32_t any_byte = 256;  // is more common than any one

// Two literals side by side: how common they are, their distance from the beginning of the stretch,
// in 14 bits, and that of the first one's item, in 7 bits.
constexpr uint32_t no_pair = UINT32_MAX;
constexpr unsigned item_bits = 7, distance_bits = 14;

// Goes through literals that are side by side, from the one at `item` on. Result: the last one.
const uint8_t *pass_literals(const uint8_t *item, const uint8_t *items, uint32_t distance,
                             uint32_t &rarest) {
  uint32_t place = distance << item_bits | static_cast<uint32_t>(item - items);
  constexpr uint32_t next_place = 1u << item_bits | 2;
  for (uint32_t before = commonness[item[1]]; item[2] == literal; place += next_place) {
    item += 2;
    const uint32_t here = commonness[item[1]];
    rarest = std::min(rarest, (before + here) << (distance_bits + item_bits) | place);
    before = here;
  }
  return item;
}

// Whether an item always takes the same number of bytes, which `width` becomes. Where an expression
// ends that varies.
bool always_takes(const uint8_t *item, uint32_t &width) {
  if (is_end(item)) return false;
  switch (plain(*item)) {
    case group_start:
    case group_end:
    case word_start:
    case word_end:
      width = 0;
      return true;
    case back_reference:
      return false;
    default:
      width = counts_of(item).least;
      return width == counts_of(item).most;
  }
}

// Passes the bytes that one item of a stretch takes; null when they do not fit it.
const uint8_t *pass(const uint8_t *item, const uint8_t *text, const uint8_t *position) {
  switch (*item) {
    case group_start:
    case group_end:
      return position;
    case word_start:
      return is_word_start(text, position) ? position : nullptr;
    case word_end:
      return !is_word_byte(*position) ? position : nullptr;
    default:
      for (uint32_t left = counts_of(item).least; left != 0; --left, ++position)
        if (!consumes(item, *position)) return nullptr;
      return position;
  }
}

}  // namespace

// The usual items have branches of their own: the processor then need not wait for a table to know
// where the next one is.
void read_stretch(const uint8_t *const items, Stretch &stretch) {
  uint32_t rarest = no_pair, all = 0;  // the bytes that the items take
  uint32_t first_at = 0, last_at = 0;
  const uint8_t *first = nullptr, *last = nullptr;
  const uint8_t *item = items;
  for (;;) {
    if (*item == literal) {
      last = pass_literals(item, items, all, rarest);
      if (first == nullptr) {
        first = item;
        first_at = all;
      }
      last_at = all + static_cast<uint32_t>(last - item) / 2;
      all = last_at + 1;
      item = last + 2;
    } else if (*item == set || *item == negated_set) {
      ++all;
      item += 1 + operand_size(set);
    } else if (*item == any) {
      ++all;
      ++item;
    } else {
      uint32_t width = 0;
      if (!always_takes(item, width)) break;
      all += width;
      item = next_item(item);
    }
  }
  stretch.first = items;
  stretch.past = item;
  stretch.width = all;
  if (first == nullptr) {
    stretch.common = no_literals;
    stretch.pair = {};
  } else if (rarest != no_pair) {
    const uint8_t *const pair = items + (rarest & ((1u << item_bits) - 1));
    const uint32_t at = rarest >> item_bits & ((1u << distance_bits) - 1);
    stretch.common = rarest >> (distance_bits + item_bits);
    stretch.pair = {{at, at + 1}, {pair[1], pair[3]}};
  } else {
    stretch.common = commonness[first[1]] + (first == last ? any_byte : commonness[last[1]]);
    stretch.pair = {{first_at, last_at}, {first[1], last[1]}};
  }
}

bool fits(const Stretch &stretch, const uint8_t *text, const uint8_t *position) {
  for (const uint8_t *item = stretch.first; item != stretch.past; item = next_item(item)) {
    if (*item == literal) {
      if (*position++ != item[1]) return false;
    } else {
      position = pass(item, text, position);
      if (position == nullptr) return false;
    }
  }
  return true;
}

Answer find(const Stretch &stretch, const Subject &subject) {
  if (stretch.common == no_literals) return Answer::unknown;
  return find_pair(stretch.pair, stretch.width, subject,
                   [&](const uint8_t *position) { return fits(stretch, subject.text, position); });
}

}  // namespace klib::regex
