// The fonts in force at the words of the source: one list for the words between two font codes.
//
// A list names a font for every group that the codes before its words have selected, so that a
// sentence with many codes of many groups has long lists, which differ in a font or two. They are
// kept as binary trees over the group numbers, and equal parts of trees are stored once: a list
// takes room for what no other list has, and where two lists differ is found without looking at
// what they share.
//
//     groups         0     1     2     3          list 1: Bold in group 1
//     list 1       { 0,    1 } {      0    }      list 2: Bold in group 1, font 2 in group 3
//     list 2       { 0,    1 } { 0,    2 }        {0, 1} is one node of both
//
// Named groups are numbered on, after the font groups. The leaf of a font group is the number of
// the font, that of a named group 1 + the index of its text.

#include "transfer/font_lists.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace klib::transfer {

namespace {

using Node = FontLists::Node;

size_t place_of(const FontLists &lists, Node node) {
  const uint64_t both = uint64_t{node.lower} << 32 | node.upper;
  size_t place = static_cast<size_t>(both * 0x9E3779B97F4A7C15U >> 32);
  for (;; ++place) {
    const uint32_t there = lists.places[place &= lists.places.size() - 1];
    if (there == 0 || lists.nodes[there] == node) return place;
  }
}

void make_room(FontLists &lists) {
  constexpr size_t least_places = 32;
  if (2 * (lists.nodes.size() + 1) <= lists.places.size()) return;
  lists.places.assign(std::max(2 * lists.places.size(), least_places), 0);
  for (size_t i = 1; i < lists.nodes.size(); ++i)
    lists.places[place_of(lists, lists.nodes[i])] = static_cast<uint32_t>(i);
}

// The number of a node, which is added when it is new.
uint32_t number_of(FontLists &lists, Node node) {
  if (node == Node{}) return 0;
  make_room(lists);
  uint32_t &number = lists.places[place_of(lists, node)];
  if (number == 0) {
    lists.nodes.push_back(node);
    number = static_cast<uint32_t>(lists.nodes.size() - 1);
  }
  return number;
}

bool is_upper(uint32_t group, int height) { return (group >> (height - 1) & 1) != 0; }

// The tree with another leaf for one group.
uint32_t with_leaf(FontLists &lists, uint32_t tree, int height, uint32_t group, uint32_t leaf) {
  if (height == 0) return leaf;
  Node node = lists.nodes[tree];
  uint32_t &half = is_upper(group, height) ? node.upper : node.lower;
  half = with_leaf(lists, half, height - 1, group, leaf);
  return number_of(lists, node);
}

uint32_t leaf_of(const FontLists &lists, uint32_t tree, uint32_t group) {
  for (int height = lists.height; height > 0; --height) {
    const Node &node = lists.nodes[tree];
    tree = is_upper(group, height) ? node.upper : node.lower;
  }
  return tree;
}

// Adds the groups of a tree that starts at group `first`, without those that are the same in
// another one.
void add_differing(const FontLists &lists, uint32_t other, uint32_t tree, int height,
                   uint32_t first, memory::ArenaVector<uint32_t> &groups) {
  if (tree == 0 || tree == other) return;
  if (height == 0) return groups.push_back(first);
  const Node &mine = lists.nodes[tree], &theirs = lists.nodes[other];
  const uint32_t middle = first + (uint32_t{1} << (height - 1));
  add_differing(lists, theirs.lower, mine.lower, height - 1, first, groups);
  add_differing(lists, theirs.upper, mine.upper, height - 1, middle, groups);
}

uint32_t leaf_of_change(FontLists &lists, const fonts::GroupChange &change) {
  if (change.named_font == nullptr) return static_cast<uint32_t>(change.font);
  const std::string_view text(change.named_font);
  const bool known = fonts::names_known_group(change.named_font);
  lists.named_fonts.push_back({lists.names.size(), text.size(), known});
  lists.all_known = lists.all_known && known;
  lists.names.insert(lists.names.end(), text.data(), text.data() + text.size() + 1);
  return static_cast<uint32_t>(lists.named_fonts.size());
}

// A font of an undefined named group is reported whenever it is asked for; it is listed in the
// first named group.
void add_unknown(const FontLists &lists, uint32_t tree, memory::ArenaVector<uint32_t> &groups) {
  const uint32_t first_named = fonts::count_font_groups();
  const uint32_t leaf = leaf_of(lists, tree, first_named);
  if (leaf != 0 && !lists.named_fonts[leaf - 1].known) groups.push_back(first_named);
}

bool is_named(uint32_t group) { return group >= fonts::count_font_groups(); }

}  // namespace

FontLists make_font_lists(memory::Arena &arena) {
  const uint32_t groups = fonts::count_font_groups() + fonts::count_named_groups();
  FontLists lists(arena);
  lists.height = static_cast<int>(std::bit_width(std::max(groups, 1U) - 1));
  constexpr size_t usual_lists = 8, usual_nodes = 16;
  lists.lists.reserve(usual_lists);
  lists.nodes.reserve(usual_nodes);
  lists.lists.push_back({0, nullptr});
  lists.nodes.push_back({});
  return lists;
}

uint32_t add_font_list(FontLists &lists) {
  uint32_t root = lists.lists.back().root;
  lists.changes.clear();
  fonts::take_changes(lists.changes);
  for (const fonts::GroupChange &change : lists.changes)
    root = with_leaf(lists, root, lists.height, change.group, leaf_of_change(lists, change));
  lists.lists.push_back({root, fonts::changed_packet()});
  return static_cast<uint32_t>(lists.lists.size() - 1);
}

void find_candidates(FontLists &lists, uint32_t last, uint32_t next,
                     memory::ArenaVector<uint32_t> &groups) {
  groups.clear();
  const uint32_t root = lists.lists[next].root, last_root = lists.lists[last].root;
  if (root == last_root && lists.all_known && !fonts::has_changes()) return;
  add_differing(lists, last_root, root, lists.height, 0, groups);
  const size_t differing = groups.size();
  if (fonts::has_changes()) {
    lists.changes.clear();
    fonts::take_changes(lists.changes);
    for (const fonts::GroupChange &change : lists.changes)
      if (leaf_of(lists, root, change.group) != 0) groups.push_back(change.group);
  }
  if (!lists.all_known) add_unknown(lists, root, groups);
  if (groups.size() == differing) return;
  std::sort(groups.begin(), groups.end());
  groups.erase(std::unique(groups.begin(), groups.end()), groups.end());
}

std::string_view listed_font(const FontLists &lists, uint32_t list, uint32_t group) {
  const uint32_t leaf = leaf_of(lists, lists.lists[list].root, group);
  if (!is_named(group)) return fonts::font_name(group, leaf);
  const FontLists::NamedFont &font = lists.named_fonts[leaf - 1];
  return {lists.names.data() + font.start, font.length};
}

}  // namespace klib::transfer
