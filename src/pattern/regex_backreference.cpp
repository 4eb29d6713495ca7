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
// by a few walks along the text, forward or backward. Then, for each e, a walk from it finds Q, the
// possible q. For a plain \1 there must be an r and an n such that e - n is a possible s, r - n in
// Q, and the n bytes before e and before r are the same: an intersection of pieces of two sets, 64
// positions at a time. Whether `group` leads from e - n to e is looked at last, for each such n, or
// when that fails often by one walk backward from e, which finds S, the s of this e. A repeated \1
// goes back from r in steps of n.
//
// A walk from one position ends where nothing is left of it, so for most texts the time grows with
// the text. For a text of N bytes it is N * N at most, times the number of items / 64 and the
// number of bytes equal before e and r / 64. The stack that it takes is fixed, about 300 KB.
//
// Tested by regex_test.cpp.

#include <algorithm>
#include <bit>
#include <cstring>

#include "pattern/regex_walk.h"

namespace klib::regex {

namespace {

// A set of positions. Only the words [first, past) are in use, the others count as empty.
struct Positions {
  std::array<uint64_t, longest_for_sets / 64 + 1> words;
  size_t first = 0, past = 0;

  [[nodiscard]] uint64_t word(size_t i) const { return first <= i && i < past ? words[i] : 0; }
};

bool test(const Positions &set, size_t position) {
  return (set.word(position / 64) >> position % 64 & 1) != 0;
}

void put_alone(Positions &set, size_t position) {
  set.first = position / 64;
  set.past = set.first + 1;
  set.words[set.first] = uint64_t{1} << position % 64;
}

void put_all(Positions &set, size_t length) {
  set.first = 0;
  set.past = length / 64 + 1;
  std::fill_n(set.words.begin(), set.past, ~uint64_t{0});
  set.words[set.past - 1] >>= 63 - length % 64;
}

void intersect(Positions &set, const Positions &other) {
  for (size_t i = set.first; i < set.past; ++i) set.words[i] &= other.word(i);
}

// The 64 positions up to and with `last`, that being the highest bit.
uint64_t ending_at(const Positions &set, size_t last) {
  const size_t word = last / 64, unused = 63 - last % 64;
  uint64_t result = set.word(word) << unused;
  if (unused != 0 && word != 0) result |= set.word(word - 1) >> (64 - unused);
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
  to.first = from.first;
  to.past = from.first;
  for (size_t word = from.first; word <= subject.length / 64; ++word) {
    const uint64_t positions = from.word(word);
    const bool idle = positions == 0 && walk.live == walk.items;
    if (idle && word >= from.past) return;
    const size_t base = word * block_size;
    to.words[word] =
        idle ? 0 : advance(walk, first, past, block_at(subject, base, walk.tail), positions);
    to.past = word + 1;
  }
}

// The same positions seen from the other end of the text.
void turn(const Positions &set, size_t length, Positions &turned) {
  const size_t last = std::min(set.past * 64 - 1, length);
  turned.first = (length - last) / 64;
  turned.past = turned.first;
  if (set.first == set.past) return;
  turned.past = (length - set.first * 64) / 64 + 1;
  for (size_t word = turned.first; word < turned.past; ++word)
    turned.words[word] = reversed(ending_at(set, length - word * 64));
}

// The first position from `from` on that is in the set, or one beyond the text.
size_t next(const Positions &set, size_t from, size_t length) {
  from = std::max(from, set.first * 64);
  while (from / 64 < set.past) {
    const uint64_t word = set.words[from / 64] >> from % 64;
    if (word != 0) return from + static_cast<size_t>(std::countr_zero(word));
    from = (from | 63) + 1;
  }
  return length + 1;
}

// The last position up to `from` that is in the set; there is one.
size_t last_up_to(const Positions &set, size_t from) {
  size_t at = std::min(from, set.past * 64 - 1);
  while (ending_at(set, at) == 0) at -= 64;
  return at - static_cast<size_t>(std::countl_zero(ending_at(set, at)));
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
  Positions before, ends, after;  // all possible s, e and r
  Positions one, found;           // to start a walk from one position; what it found
  // For one e:
  size_t e;
  Positions middle;  // Q
  Positions starts;  // S, once it is known
  bool starts_known;
  size_t misses;             // e - n that were possible s, but not of this e
  size_t shortest, longest;  // bounds of n
  size_t first_q, last_q;

  Search(Walk &forward, const Subject &text)
      : walk(forward), subject(text), mirror(text, forward) {}
};

void lead_forward(Search &search, const uint8_t *first, const uint8_t *past, const Positions &from,
                  Positions &to) {
  lead(search.walk, search.subject, first, past, from, to);
}

// Backward through the items [first, past), from positions that are turned round, as the result is.
void lead_backward(Search &search, const uint8_t *first, const uint8_t *past,
                   const Positions &from) {
  lead(search.mirror.walk, search.mirror.subject, search.mirror.turned(past),
       search.mirror.turned(first), from, search.found);
}

// Leaves of a set the positions that follow a byte which positions of the other set follow, too,
// and the exceptions.
void keep_alike(const Subject &subject, Positions &set, const Positions &other,
                const Positions &exceptions) {
  const size_t length = subject.length;
  std::array<bool, 256> follows{};
  for (size_t at = next(other, 1, length); at <= length; at = next(other, at + 1, length))
    follows[subject.text[at - 1]] = true;
  for (size_t at = next(set, 0, length); at <= length; at = next(set, at + 1, length))
    if ((at == 0 || !follows[subject.text[at - 1]]) && !test(exceptions, at))
      set.words[at / 64] &= ~(uint64_t{1} << at % 64);
}

bool can_be_empty(const uint8_t *item, const uint8_t *past) {
  for (; item != past; item = next_item(item)) switch (plain(*item)) {
      case literal:
      case any:
      case set:
      case wide_set:
      case negated_set:
        if (counts_of(item).least != 0) return false;
        break;
      default:
        break;
    }
  return true;
}

// The texts of the group and of \1 end with the same byte, unless both are empty, or \1 is matched
// zero times: then q and r are one position.
void compare_last_bytes(Search &search) {
  const Reference group = search.walk.reference;
  const Subject &subject = search.subject;
  Positions &exceptions = search.starts;
  const bool never = counts_of(group.item).least == 0;
  if (!never && !can_be_empty(group.start, group.stop)) {
    exceptions.first = exceptions.past = 0;
    keep_alike(subject, search.ends, search.after, exceptions);
    keep_alike(subject, search.after, search.ends, exceptions);
    return;
  }
  turn(search.after, subject.length, search.one);
  lead_backward(search, group.stop, group.item, search.one);
  turn(search.found, subject.length, exceptions);
  if (!never) intersect(exceptions, search.before);
  keep_alike(subject, search.ends, search.after, exceptions);
  search.middle = search.ends;
  if (!never) intersect(search.middle, search.before);
  lead_forward(search, group.stop, group.item, search.middle, exceptions);
  keep_alike(subject, search.after, search.ends, exceptions);
}

// Finds all possible s, e and r. Result: false when there is no e.
bool find_possible(Search &search, bool anchored) {
  const Reference group = search.walk.reference;
  const size_t length = search.subject.length;
  Positions &all = search.middle;
  put_all(all, length);
  put_alone(search.one, 0);
  lead_forward(search, search.walk.items, group.start, anchored ? search.one : all, search.before);
  lead_forward(search, group.start, group.stop, search.before, search.ends);
  lead_backward(search, group.stop, search.walk.end_item, all);
  turn(search.found, length, search.after);
  intersect(search.ends, search.after);
  lead_backward(search, next_item(group.item), search.walk.end_item, all);
  turn(search.found, length, search.after);
  compare_last_bytes(search);
  return next(search.ends, 0, length) <= length;
}

// Looks at one of the possible e. Result: false when no q follows it.
bool choose(Search &search, size_t e) {
  const Reference group = search.walk.reference;
  const size_t length = search.subject.length;
  put_alone(search.one, e);
  lead_forward(search, group.stop, group.item, search.one, search.middle);
  search.first_q = next(search.middle, e, length);
  if (search.first_q > length) return false;
  search.last_q = last_up_to(search.middle, length);
  search.e = e;
  search.starts_known = false;
  search.misses = 0;
  search.shortest = e - last_up_to(search.before, e);
  search.longest = e - next(search.before, 0, length);
  return true;
}

void find_starts(Search &search) {
  const Reference group = search.walk.reference;
  const size_t length = search.subject.length;
  put_alone(search.one, length - search.e);
  lead_backward(search, group.start, group.stop, search.one);
  turn(search.found, length, search.starts);
  intersect(search.starts, search.before);
  search.starts_known = true;
}

bool group_leads_from(Search &search, size_t s) {
  const Reference group = search.walk.reference;
  put_alone(search.one, s);
  lead_forward(search, group.start, group.stop, search.one, search.found);
  return test(search.found, search.e);
}

// Looks at the n of the set bits, the highest of which is that for `n`.
bool some_n_fits(Search &search, size_t n, uint64_t bits) {
  for (; bits != 0; bits &= ~uint64_t{0} >> 1) {
    const auto more = static_cast<size_t>(std::countl_zero(bits));
    bits <<= more;
    n += more;
    if (group_leads_from(search, search.e - n)) return true;
    ++search.misses;
  }
  return false;
}

bool once_leads_to(Search &search, size_t r) {
  constexpr size_t most_misses = 16;
  const uint8_t *const text = search.subject.text;
  const size_t e = search.e;
  const size_t least = std::max(search.shortest, r > search.last_q ? r - search.last_q : 0);
  const size_t most = std::min(search.longest, r - search.first_q);
  size_t equal = 0;
  for (size_t n = least; n <= most; n += 64) {
    const Positions &starts = search.starts_known ? search.starts : search.before;
    uint64_t both = ending_at(starts, e - n) & ending_at(search.middle, r - n);
    if (both == 0) continue;
    const size_t wanted = std::min(n + 63, most);
    equal += equal_before(text + (e - equal), text + (r - equal), wanted - equal);
    if (equal < n) return false;
    if (equal - n < 63) both = both >> (63 - (equal - n)) << (63 - (equal - n));
    if (search.starts_known ? both != 0 : some_n_fits(search, n, both)) return true;
    if (equal < wanted) return false;
    if (!search.starts_known && search.misses > most_misses) find_starts(search);
  }
  return false;
}

bool several_lead_to(Search &search, size_t r, Counts counts) {
  if (!search.starts_known) find_starts(search);
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

bool some_r_fits(Search &search) {
  const size_t length = search.subject.length;
  const Counts counts = counts_of(search.walk.reference.item);
  const bool once = counts.least == 1 && counts.most == 1;
  const size_t first = search.first_q + (once ? search.shortest : 0);
  const size_t last = once ? std::min(length, search.last_q + search.longest) : length;
  for (size_t r = next(search.after, first, length); r <= last;
       r = next(search.after, r + 1, length))
    if (once ? once_leads_to(search, r) : several_lead_to(search, r, counts)) return true;
  return false;
}

}  // namespace

bool match_one_reference(Walk &walk, bool anchored, const Subject &subject) {
  Search search(walk, subject);
  if (!find_possible(search, anchored)) return false;
  const size_t length = subject.length;
  for (size_t e = next(search.ends, 0, length); e <= length; e = next(search.ends, e + 1, length))
    if (choose(search, e) && some_r_fits(search)) return true;
  return false;
}

}  // namespace klib::regex
