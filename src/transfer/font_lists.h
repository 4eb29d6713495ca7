// The fonts in force at the words of the source, and which of them a word of the translation may
// have to select; see font_lists.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "format/fonts.h"
#include "frame/memory.h"

namespace klib::transfer {

struct FontLists {
  // One half of the groups each: a node again, or at the lowest level what is in force in one
  // group; 0 where nothing is listed.
  struct Node {
    uint32_t lower, upper;
    bool operator==(const Node &) const = default;
  };
  struct List {
    uint32_t root;       // a node
    const char *packet;  // or null
  };
  struct NamedFont {
    size_t start, length;  // in `names`
    bool known;            // asking for it reports nothing
  };

  explicit FontLists(memory::Arena &arena)
      : lists(arena),
        nodes(arena),
        places(arena),
        named_fonts(arena),
        names(arena),
        changes(arena) {}

  int height = 0;         // of the trees: 1 << height groups
  bool all_known = true;  // of the named fonts
  memory::ArenaVector<List> lists;
  memory::ArenaVector<Node> nodes;       // number 0 is unused
  memory::ArenaVector<uint32_t> places;  // of the nodes by their hash; 0 is a free place
  memory::ArenaVector<NamedFont> named_fonts;
  memory::ArenaVector<char> names;                  // of the named fonts, each ends with a NUL
  memory::ArenaVector<fonts::GroupChange> changes;  // scratch
};

// No list but number 0, which is empty. A save of the selection has just begun.
[[nodiscard]] FontLists make_font_lists(memory::Arena &arena);

// Adds the list of the fonts that are in force now and were not at the save. Returns its number.
uint32_t add_font_list(FontLists &lists);

// The groups, ascending, of list `next` whose font may not be in force: all but those that list
// `last` has too and that were not selected since this was last asked.
void find_candidates(FontLists &lists, uint32_t last, uint32_t next,
                     memory::ArenaVector<uint32_t> &groups);

// The font that a list has of a group. The text ends with a NUL.
[[nodiscard]] std::string_view listed_font(const FontLists &lists, uint32_t list, uint32_t group);

}  // namespace klib::transfer
