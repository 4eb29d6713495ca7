// Sorting of text lines by their unsigned bytes.
//
// Comparing texts costs an access to cold memory for each side of each comparison. So every line is
// stored with a key, eight of its bytes as a number, and only keys are compared: first those of the
// bytes 0 to 7; then, in each run of lines with equal keys, those of the next eight, and so on.
// Keys are sorted byte by byte into 256 buckets, small ranges by comparing. Of the runs in a range
// all but the longest are handled by recursion, each at most half of the range, so that the
// recursion is never deeper than the logarithm of the number of lines, whatever they have in
// common.
//
// The keys take 16 bytes a line. Without that memory the lines are compared directly.

#include "lists/line_sort.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <numeric>

#include "frame/memory.h"
#include "lists/line_keys.h"
#include "platform/platform.h"
#include "text/bytes.h"

namespace klib::containers {

namespace {

constexpr ptrdiff_t small_range = 96;           // up to here comparing is quicker than buckets
constexpr size_t few_lines = 24;                // so few are not worth the memory
constexpr size_t longest_look = 32 * key_size;  // for bytes in common
constexpr ptrdiff_t lines_ahead = 16;  // whose next bytes are fetched while runs are handled

struct Entry {
  uint64_t key;
  char *line;
};

bool key_below(const Entry &a, const Entry &b) { return a.key < b.key; }

// Sorts by the highest byte in which keys differ, and then each bucket by those below it.
void sort_keys(Entry *first, Entry *last) {
  if (last - first <= small_range) return std::sort(first, last, key_below);
  uint64_t differing = 0;
  for (const Entry *entry = first; entry != last; ++entry) differing |= entry->key ^ first->key;
  if (differing == 0) return;
  const int shift = (63 - std::countl_zero(differing)) / 8 * 8;
  const auto bucket_of = [shift](const Entry &entry) {
    return static_cast<size_t>(entry.key >> shift & 0xFF);
  };
  std::array<ptrdiff_t, 256> sizes{};
  for (const Entry *entry = first; entry != last; ++entry) ++sizes[bucket_of(*entry)];
  std::array<Entry *, 256> next, end;
  Entry *start = first;
  for (size_t bucket = 0; bucket < 256; ++bucket) {
    next[bucket] = start;
    end[bucket] = start += sizes[bucket];
  }
  // Every entry taken out is carried home, and so is the one found there, until one belongs here.
  for (size_t bucket = 0; bucket < 256; ++bucket)
    while (next[bucket] != end[bucket]) {
      Entry entry = *next[bucket];
      for (size_t home; (home = bucket_of(entry)) != bucket;) std::swap(entry, *next[home]++);
      *next[bucket]++ = entry;
    }
  if (shift == 0) return;
  // The keys in bucket 0 have only zeros from here on: they are equal.
  for (size_t bucket = 1; bucket < 256; ++bucket)
    if (sizes[bucket] > 1) sort_keys(end[bucket] - sizes[bucket], end[bucket]);
}

// How many bytes from `offset` on all lines have in common, none of them a NUL. At most
// longest_look bytes are compared, since one line that differs early would make a longer look
// useless.
size_t common_bytes(const Entry *first, const Entry *last, size_t offset, Readable readable) {
  size_t common = longest_look;
  for (const Entry *entry = first + 1; entry != last && common != 0; ++entry) {
    size_t equal = 0;
    while (equal < common) {
      const uint64_t key = key_at(first->line + offset + equal, readable);
      if (is_complete(key) || key != key_at(entry->line + offset + equal, readable)) break;
      equal += key_size;
    }
    common = equal;
  }
  return common;
}

void load_keys(Entry *first, Entry *last, size_t offset, Readable readable) {
  for (Entry *entry = first; entry != last; ++entry)
    entry->key = key_at(entry->line + offset, readable);
}

// Sorts lines that have the bytes before `offset` in common and whose keys are those at `offset`.
void sort_range(Entry *first, Entry *last, size_t offset, Readable readable) {
  while (last - first > 1) {
    sort_keys(first, last);
    offset += key_size;
    if (first->key == (last - 1)->key) {
      if (is_complete(first->key)) return;
      offset += common_bytes(first, last, offset, readable);
      load_keys(first, last, offset, readable);
      continue;
    }

    Entry *longest = first, *longest_end = first, *ahead = first;
    for (Entry *run = first, *end; run != last; run = end) {
      end = std::find_if(run, last, [run](const Entry &entry) { return entry.key != run->key; });
      for (; ahead != last && ahead - end < lines_ahead; ++ahead)
        if (!is_complete(ahead->key)) __builtin_prefetch(ahead->line + offset);
      if (is_complete(run->key)) continue;
      Entry *other = run, *other_end = end;
      if (end - run > longest_end - longest) {
        std::swap(other, longest);
        std::swap(other_end, longest_end);
      }
      if (other_end - other < 2) continue;
      load_keys(other, other_end, offset, readable);
      sort_range(other, other_end, offset, readable);
    }
    first = longest;
    last = longest_end;
    if (last - first > 1) load_keys(first, last, offset, readable);
  }
}

// Sorts with an entry for every line. The entries go straight into the buckets of first bytes.
void sort_with_keys(char **lines, size_t count, Entry *entries, Readable readable) {
  std::array<size_t, 257> next{};
  for (size_t i = 0; i < count; ++i) ++next[u8(*lines[i]) + size_t{1}];
  std::partial_sum(next.begin(), next.end(), next.begin());
  for (size_t i = 0; i < count; ++i)
    entries[next[u8(*lines[i])]++] = {key_at(lines[i], readable), lines[i]};
  for (size_t bucket = 0; bucket < 256; ++bucket) {
    const size_t start = bucket == 0 ? 0 : next[bucket - 1];
    sort_range(entries + start, entries + next[bucket], 0, readable);
  }
  for (size_t i = 0; i < count; ++i) lines[i] = entries[i].line;
}

}  // namespace

void sort_lines(char **lines, size_t count, Readable readable) {
  // The sort cannot fail, so a lack of memory is nothing to report: the platform is asked directly.
  void *block = count > few_lines ? platform::calls.allocate(count * sizeof(Entry)) : nullptr;
  const memory::Array<Entry> entries(static_cast<Entry *>(block));
  if (entries)
    sort_with_keys(lines, count, entries.get(), readable);
  else
    std::sort(lines, lines + count,
              [](const char *a, const char *b) { return std::strcmp(a, b) < 0; });
}

}  // namespace klib::containers
