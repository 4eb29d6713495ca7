// Names of fonts, font packets and named font groups, each found in one step: a hash table with
// open addressing. The texts belong to the font tables and must stay as long as the index.
#pragma once

#include <cstdint>
#include <string_view>

namespace klib::fonts {

inline constexpr int32_t none = -1;

// What a name means. Fonts and packets share an index, so that one lookup finds either.
struct Name {
  const char *text;  // not owned; null in a free place
  uint32_t length;
  uint32_t hash;
  int32_t packet;  // or none
  int32_t group;   // the font group that holds the font, or the named group; or none
  int32_t number;  // of the font in its group
};

struct NameIndex {
  Name *places = nullptr;
  uint32_t capacity = 0;  // places, a power of two
  uint32_t count = 0;     // names, at most half as many as places
};

[[nodiscard]] const Name *find(const NameIndex &index, std::string_view name);

// Makes room for that many more names. Throws memory::Exhausted; the index is then as before.
void reserve(NameIndex &index, uint32_t more);

// The entry of a name, added when it is new; room for it has been made.
[[nodiscard]] Name &enter(NameIndex &index, std::string_view name);

void release(NameIndex &index);

}  // namespace klib::fonts
