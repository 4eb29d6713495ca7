// Routines on texts that are shared by the library and the engine's programs: shifting, search and
// replacement, copies of ranges, deletion by character type, positions of a byte, and the
// comparison that orders word lists. Bytes count as 0 to 255 everywhere.

#include <algorithm>
#include <cstring>

#include "frame/memory.h"
#include "text/bytes.h"
#include "text/character_types.h"

namespace klib::string_routines {

namespace {

const char *first_without_stepping_back(const char *pattern, const char *text) {
  for (const char *at = text; (at = std::strchr(at, *pattern)) != nullptr;) {
    const char *const start = at;
    const char *matched = pattern;
    do {
      ++at;
      ++matched;
    } while (*matched != '\0' && *matched == *at);
    if (*matched == '\0') return start;
  }
  return nullptr;
}

// Whether a partial match may reach from before the first occurrence into it: only where the byte
// before it and its first one follow each other in the pattern.
bool may_be_passed(const char *pattern, const char *text, const char *found) {
  if (found == text || *pattern == '\0') return false;
  const char before = found[-1];
  for (const char *at = pattern; (at = std::strchr(at, before)) != nullptr;)
    if (*++at == *pattern) return true;
  return false;
}

}  // namespace

}  // namespace klib::string_routines

// Exported names

using namespace klib;
using namespace klib::string_routines;

void leftshift(char *s) {
  if (*s != '\0') std::memmove(s, s + 1, std::strlen(s));
}

void rightshift(char *s, int32_t n) {
  if (n > 0) std::memmove(s + n, s, std::strlen(s) + 1);
}

// As if by one forward pass that never steps back in the text: after a partial match has failed,
// the next one begins at the byte where it failed or later. So an occurrence is missed where a
// partial match has begun less than a pattern's length before it.
int32_t search(const char *pattern, const char *text) {
  const char *found = std::strstr(text, pattern);
  if (found == nullptr) return -1;
  if (may_be_passed(pattern, text, found)) found = first_without_stepping_back(pattern, text);
  return found != nullptr && found - text <= INT32_MAX ? static_cast<int32_t>(found - text) : -1;
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

// Every byte is written, and the place for the next one moves on after those that stay: no branch
// depends on the text.
void remove_if(char *s, uint32_t mask) {
  const uint32_t *const types = c_t;
  const char *const end = s + std::strlen(s);
  char *kept = s;
#pragma GCC unroll 8
  for (; s != end; ++s) {
    const char byte = *s;
    *kept = byte;
    kept += (types[u8(byte)] & mask) == 0;
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
