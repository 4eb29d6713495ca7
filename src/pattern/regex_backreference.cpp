// One back-reference whose text can vary in length, decided by sets of positions: backtracking
// would try the same over and over on some texts.
//
// Such an expression is a sequence
//
//   before \( group \) between \1 after
//
// in which only the group and \1 depend on each other. It matches when there are positions
// s <= e <= q <= r such that `before` can end at s, `group` leads from s to e, `between` from e to
// q and \1 from q to r, and `after` matches from r. The sets of all possible s, e and r are found
// by a few walks along the text, forward or backward. Then, for each e, two walks from it find S,
// the possible s, and Q, the possible q. For a plain \1 there must be an r and an n such that e - n
// is in S, r - n in Q, and the n bytes before e and before r are the same: with S turned round so
// that its bits run the same way as those of Q, an intersection of pieces of the two, 64 positions
// at a time. A repeated \1 goes back from r in steps of n.
//
// For a text of N bytes that takes a time of N * N at most, times the number of items / 64 and the
// number of bytes equal before e and r / 64, and a fixed amount of stack.
//
// Tested by regex_test.cpp.

#include <algorithm>
#include <bit>
#include <cstring>

#include "pattern/regex_walk.h"

namespace klib::regex {

namespace {

using Positions = std::array<uint64_t, longest_for_sets / block_size + 1>;

bool test(const Positions &set, size_t position) {
  return (set[position / 64] >> position % 64 & 1) != 0;
}

void put(Positions &set, size_t position, bool in_set) {
  const uint64_t bit = uint64_t{1} << position % 64;
  set[position / 64] = in_set ? set[position / 64] | bit : set[position / 64] & ~bit;
}

// The 64 positions up to and with `last`, that being the highest bit.
uint64_t ending_at(const Positions &set, size_t last) {
  const size_t word = last / 64, unused = 63 - last % 64;
  uint64_t result = set[word] << unused;
  if (unused != 0 && word != 0) result |= set[word - 1] >> (64 - unused);
  return result;
}

uint64_t reversed(uint64_t bits) {
  for (unsigned shift = 1; shift < 64; shift *= 2) {
    const uint64_t low = ~uint64_t{0} / ((uint64_t{1} << shift) + 1);  // of each pair of groups
    bits = (bits >> shift & low) | (bits & low) << shift;
  }
  return bits;
}

// The positions to which the items [first, past) lead from the set.
void lead(Walk &walk, const Subject &subject, const uint8_t *first, const uint8_t *past,
          const Positions &from, Positions &to) {
  restart(walk);
  for (size_t base = 0; base <= subject.length; base += block_size) {
    const size_t word = base / block_size;
    const bool idle = from[word] == 0 && walk.live == walk.items;
    to[word] =
        idle ? 0 : advance(walk, first, past, block_at(subject, base, walk.tail), from[word]);
  }
}

// The same positions seen from the other end of the text.
void turn(const Positions &set, size_t length, Positions &turned) {
  for (size_t word = 0; word <= length / 64; ++word)
    turned[word] = reversed(ending_at(set, length - word * 64));
}

// The first position from `from` on that is in the set, or one beyond the text.
size_t next(const Positions &set, size_t from, size_t length) {
  while (from <= length) {
    const uint64_t word = set[from / 64] >> from % 64;
    if (word != 0) return from + static_cast<size_t>(std::countr_zero(word));
    from = (from | 63) + 1;
  }
  return from;
}

// The last position in the set, which is not empty.
size_t highest(const Positions &set, size_t length) {
  size_t word = length / 64;
  while (set[word] == 0) --word;
  return word * 64 + 63 - static_cast<size_t>(std::countl_zero(set[word]));
}

// The number of equal bytes before two positions, as far as it is at most `limit`.
size_t equal_before(const uint8_t *a, const uint8_t *b, size_t limit) {
  size_t count = 0;
  for (uint64_t x, y; limit - count >= 8; count += 8) {
    std::memcpy(&x, a - count - 8, 8);
    std::memcpy(&y, b - count - 8, 8);
    if (x != y) break;
  }
  while (count < limit &&
         a[-1 - static_cast<ptrdiff_t>(count)] == b[-1 - static_cast<ptrdiff_t>(count)])
    ++count;
  return count;
}

// A text and the items of a walk, turned round.
struct Mirror {
  Mirror(const Subject &subject, const Walk &forward);
  [[nodiscard]] const uint8_t *turned(const uint8_t *item) const {
    return walk.items + (original.end_item - item);
  }

  const Walk &original;
  std::array<char, longest_for_sets + 1> bytes;
  Subject subject;
  Expression expression;
  Walk walk;
};

const char *turn_text(const Subject &subject, char *bytes) {
  std::reverse_copy(subject.text, subject.text + subject.length, bytes);
  bytes[subject.length] = '\0';
  return bytes;
}

Mirror::Mirror(const Subject &text, const Walk &forward)
    : original(forward), subject(turn_text(text, bytes.data())) {
  begin_backward(walk, expression, forward);
}

struct Search {
  Walk &walk;
  const Subject &subject;
  Mirror mirror;
  Positions turned_before, ends, after;  // all possible s (turned round), e and r
  Positions one, found;                  // to start a walk from one position; what it found
  // For one e:
  size_t e;
  Positions starts;  // S
  Positions middle;  // Q
  size_t longest;    // the greatest n

  Search(Walk &forward, const Subject &text)
      : walk(forward), subject(text), mirror(text, forward) {}
};

void lead_forward(Search &search, const uint8_t *first, const uint8_t *past, const Positions &from,
                  Positions &to) {
  lead(search.walk, search.subject, first, past, from, to);
}

// Backward through the items [first, past), from positions that are turned round.
void lead_backward(Search &search, const uint8_t *first, const uint8_t *past,
                   const Positions &from) {
  lead(search.mirror.walk, search.mirror.subject, search.mirror.turned(past),
       search.mirror.turned(first), from, search.found);
}

// Finds all possible s, e and r. Result: false when there is no e.
bool find_possible(Search &search, bool anchored) {
  const Reference group = search.walk.reference;
  const size_t length = search.subject.length, words = length / 64 + 1;
  Positions all, before;
  std::fill_n(all.begin(), words, ~uint64_t{0});
  all[words - 1] >>= 63 - length % 64;
  std::fill_n(search.one.begin(), words, 0);

  put(search.one, 0, true);
  lead_forward(search, search.walk.items, group.start, anchored ? search.one : all, before);
  put(search.one, 0, false);
  turn(before, length, search.turned_before);
  lead_forward(search, group.start, group.stop, before, search.ends);
  lead_backward(search, group.stop, group.item, all);
  turn(search.found, length, search.after);
  for (size_t word = 0; word < words; ++word) search.ends[word] &= search.after[word];
  if (next(search.ends, 0, length) > length) return false;
  lead_backward(search, next_item(group.item), search.walk.end_item, all);
  turn(search.found, length, search.after);
  return true;
}

// Finds S and Q for one of the possible e; neither is empty.
void choose(Search &search, size_t e) {
  const Reference group = search.walk.reference;
  const size_t length = search.subject.length;
  search.e = e;
  put(search.one, e, true);
  lead_forward(search, group.stop, group.item, search.one, search.middle);
  put(search.one, e, false);
  put(search.one, length - e, true);
  lead_backward(search, group.start, group.stop, search.one);
  put(search.one, length - e, false);
  for (size_t word = 0; word <= length / 64; ++word)
    search.found[word] &= search.turned_before[word];
  turn(search.found, length, search.starts);
  search.longest = e - next(search.starts, 0, length);
}

bool once_leads_to(const Search &search, size_t r) {
  const uint8_t *text = search.subject.text;
  const size_t equal = equal_before(text + search.e, text + r, search.longest);
  for (size_t n = 0; n <= equal; n += 64) {
    uint64_t both = ending_at(search.starts, search.e - n) & ending_at(search.middle, r - n);
    if (equal - n < 63) both >>= 63 - (equal - n);
    if (both != 0) return true;
  }
  return false;
}

bool several_lead_to(const Search &search, size_t r, Counts counts) {
  if (test(search.middle, r) && (counts.least == 0 || test(search.starts, search.e))) return true;
  const uint8_t *text = search.subject.text;
  const size_t equal = equal_before(text + search.e, text + r, search.longest);
  for (size_t n = 1; n <= equal; ++n) {
    if (!test(search.starts, search.e - n)) continue;
    const uint8_t *const repeated = text + search.e - n;
    size_t q = r;
    for (uint32_t count = 1; count <= counts.most && q >= search.e + n; ++count) {
      q -= n;
      if (std::memcmp(repeated, text + q, n) != 0) break;
      if (count >= counts.least && test(search.middle, q)) return true;
    }
  }
  return false;
}

bool some_r_fits(const Search &search) {
  const size_t length = search.subject.length;
  const Counts counts = counts_of(search.walk.reference.item);
  const bool once = counts.least == 1 && counts.most == 1;
  const size_t first = next(search.middle, search.e, length);
  const size_t last =
      once ? std::min(length, highest(search.middle, length) + search.longest) : length;
  for (size_t r = next(search.after, first, last); r <= last; r = next(search.after, r + 1, last))
    if (once ? once_leads_to(search, r) : several_lead_to(search, r, counts)) return true;
  return false;
}

}  // namespace

bool match_one_reference(Walk &walk, bool anchored, const Subject &subject) {
  Search search(walk, subject);
  if (!find_possible(search, anchored)) return false;
  const size_t length = subject.length;
  for (size_t e = next(search.ends, 0, length); e <= length; e = next(search.ends, e + 1, length)) {
    choose(search, e);
    if (some_r_fits(search)) return true;
  }
  return false;
}

}  // namespace klib::regex
