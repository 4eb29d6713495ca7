// Routines on texts that are shared by the library and the engine's programs: shifting, search and
// replacement, copies of ranges, deletion by character type, positions of a byte, and the
// comparison that orders word lists. Bytes count as 0 to 255 everywhere.

#include <algorithm>
#include <cstring>

#include "frame/memory.h"
#include "text/bytes.h"
#include "text/character_types.h"

// Exported names

using namespace klib;

void leftshift(char *s) {
  if (*s != '\0') std::memmove(s, s + 1, std::strlen(s));
}

void rightshift(char *s, int32_t n) {
  if (n > 0) std::memmove(s + n, s, std::strlen(s) + 1);
}

// One forward pass that never steps back in the text: after a partial match has failed, the next
// one begins at the byte where it failed or later.
int32_t search(const char *pattern, const char *text) {
  if (*pattern == '\0') return 0;
  for (const char *at = text; (at = std::strchr(at, *pattern)) != nullptr;) {
    const char *const start = at;
    const char *matched = pattern;
    do {
      ++at;
      ++matched;
    } while (*matched != '\0' && *matched == *at);
    if (*matched == '\0')
      return start - text <= INT32_MAX ? static_cast<int32_t>(start - text) : -1;
  }
  return -1;
}

char *replace(char *s, const char *old_text, const char *new_text) {
  const int32_t position = search(old_text, s);
  if (position < 0) return s;
  const size_t old_length = std::strlen(old_text);
  const size_t new_length = std::strlen(new_text);
  char *const found = s + position;
  const char *const rest = found + old_length;
  const size_t rest_size = std::strlen(rest) + 1;
  if (new_length <= old_length) {
    std::memmove(found, new_text, new_length);
    std::memmove(found + new_length, rest, rest_size);
    return s;
  }
  return memory::guarded(s, [&] {
    const auto before = static_cast<size_t>(position);
    auto longer = memory::allocate_array<char>(before + new_length + rest_size);
    std::memcpy(longer.get(), s, before);
    std::memcpy(longer.get() + before, new_text, new_length);
    std::memcpy(longer.get() + before + new_length, rest, rest_size);
    Kfree(s);
    return longer.release();
  });
}

char *substring(const char *s, uint32_t from, uint32_t to) {
  const size_t end = strnlen(s, to);
  if (end <= from) return nullptr;
  return memory::guarded<char *>(nullptr, [&] {
    return memory::copy({s + from, end - from}).release();
  });
}

// Every byte is written, and the place for the next one moves on behind those that stay: no branch
// depends on the text. Eight bytes are read and judged before the first of them is written, so that
// reading never waits for the place of a write.
void remove_if(char *s, uint32_t mask) {
  const uint32_t *const types = c_t;
  const auto stays = [=](char byte) -> size_t { return (types[u8(byte)] & mask) == 0; };
  constexpr size_t block_size = 8;
  size_t left = std::strlen(s);
  char *kept = s;
  for (; left >= block_size; left -= block_size, s += block_size) {
    char block[block_size];
    size_t place[block_size + 1] = {};
    for (size_t i = 0; i < block_size; ++i) {
      block[i] = s[i];
      place[i + 1] = place[i] + stays(s[i]);
    }
    for (size_t i = 0; i < block_size; ++i) kept[place[i]] = block[i];
    kept += place[block_size];
  }
  for (; left > 0; --left, ++s) {
    const char byte = *s;
    *kept = byte;
    kept += stays(byte);
  }
  *kept = '\0';
}

int32_t *positions_of(const char *s, int32_t c, int32_t *count) {
  *count = 0;
  const size_t length = std::strlen(s);
  const char *const end = s + length;
  auto hits = static_cast<size_t>(std::count(s, end, static_cast<char>(c)));
  if (hits == 0) return static_cast<int32_t *>(Kmalloc(0));
  if (length > INT32_MAX) hits = SIZE_MAX;  // more than can be had: positions would not fit
  return memory::guarded<int32_t *>(nullptr, [&] {
    auto positions = memory::allocate_array<int32_t>(hits);
    const char *at = s;
    for (size_t i = 0; i < hits; ++i, ++at) {
      at = static_cast<const char *>(std::memchr(at, c, static_cast<size_t>(end - at)));
      positions[i] = static_cast<int32_t>(at - s);
    }
    *count = static_cast<int32_t>(hits);
    return positions.release();
  });
}

int32_t ustrcmp(const char *a, const char *b) {
  while (*a != '\0' && *a == *b) {
    ++a;
    ++b;
  }
  return u8(*a) - u8(*b);
}
