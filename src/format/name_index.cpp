// The hash table for the lookups of fonts, packets and named groups. A collision takes the next
// free place; names are only removed with the whole table.

#include "format/name_index.h"

#include <algorithm>
#include <bit>

#include "frame/memory.h"
#include "text/bytes.h"

namespace klib::fonts {

namespace {

constexpr uint32_t least_capacity = 32;

// FNV-1a, started from an address that differs from run to run where the system allows it, so that
// nobody can make the names in a parameter file collide.
uint32_t hash_of(std::string_view name) {
  static const char anywhere = 0;
  uint64_t hash = 0xCBF29CE484222325U ^ reinterpret_cast<uintptr_t>(&anywhere);
  for (const char c : name) hash = (hash ^ u8(c)) * 0x100000001B3U;
  return static_cast<uint32_t>(hash >> 32);
}

// The place of the name, or the free place that it would take.
Name &place_of(const NameIndex &index, std::string_view name, uint32_t hash) {
  for (uint32_t i = hash;; ++i) {
    Name &place = index.places[i & (index.capacity - 1)];
    if (place.text == nullptr) return place;
    if (place.hash == hash && std::string_view(place.text, place.length) == name) return place;
  }
}

}  // namespace

const Name *find(const NameIndex &index, std::string_view name) {
  if (index.count == 0) return nullptr;
  const Name &place = place_of(index, name, hash_of(name));
  return place.text != nullptr ? &place : nullptr;
}

void reserve(NameIndex &index, uint32_t more) {
  const uint64_t wanted = 2 * (uint64_t{index.count} + more);
  if (wanted <= index.capacity) return;
  const uint64_t capacity = std::bit_ceil(std::max<uint64_t>(wanted, least_capacity));
  NameIndex larger{memory::allocate_array<Name>(static_cast<size_t>(capacity)).release(),
                   static_cast<uint32_t>(capacity), index.count};
  std::fill_n(larger.places, capacity, Name{});
  for (uint32_t i = 0; i < index.capacity; ++i) {
    const Name &name = index.places[i];
    if (name.text != nullptr) place_of(larger, {name.text, name.length}, name.hash) = name;
  }
  Kfree(index.places);
  index = larger;
}

Name &enter(NameIndex &index, std::string_view name) {
  const uint32_t hash = hash_of(name);
  Name &place = place_of(index, name, hash);
  if (place.text == nullptr) {
    place = {name.data(), static_cast<uint32_t>(name.size()), hash, none, none, 0};
    ++index.count;
  }
  return place;
}

void release(NameIndex &index) {
  Kfree(index.places);
  index = NameIndex{};
}

}  // namespace klib::fonts
