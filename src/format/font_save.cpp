// A save of the font selection: what has changed since, and the way back.
//
// A save copies nothing when it is made. The old selection of a group is put aside when the group
// first changes, so that saving is free, and listing and restoring cost in proportion to what
// changed. A group that is declared during a save counts as if it had existed at the save. Tested
// by fonts_test.cpp.

#include <cstring>
#include <utility>

#include "format/fonts.h"
#include "parameters/parameters.h"

namespace klib::fonts {

namespace {

// Whether a named group that was selected since the save has another selection now.
bool named_font_differs(int32_t group) {
  const char *const current = state.selection.named_group_fonts[group];
  const char *const saved = state.save.named_fonts[group];
  return current == nullptr || saved == nullptr || std::strcmp(current, saved) != 0;
}

bool packet_differs() {
  return state.save.packet_changed && state.selection.current_packet != state.save.packet;
}

// The texts of a list of changes, visited in the order of the list: font groups, named groups, and
// the packet.
template <class Visit>
void for_each_font_change(bool all, bool old, bool skip_default, Visit visit) {
  for_each(state.save.touched_groups, [&](int32_t group) {
    const int32_t current = state.selection.selected_font[group];
    const int32_t saved = state.save.selected_font[group];
    const int32_t listed = old ? saved : current;
    if (!all && current == saved) return;
    if (skip_default && listed == 0) return;
    visit(state.tables.font_groups[group][listed]);
  });
}

template <class Visit>
void for_each_named_change(bool all, bool old, Visit visit) {
  for_each(state.save.touched_named, [&](int32_t group) {
    char *const current = state.selection.named_group_fonts[group];
    char *const saved = state.save.named_fonts[group];
    char *const listed = old ? saved : current;
    if (listed == nullptr) return;
    if (!all && !named_font_differs(group)) return;
    visit(listed);
  });
}

template <class Visit>
void for_each_change(bool all, bool old, bool skip_default, Visit visit) {
  if (!state.save.active) return;
  for_each_font_change(all, old, skip_default, visit);
  for_each_named_change(all, old, visit);
  if (!state.save.packet_changed || (!all && !packet_differs())) return;
  const int32_t packet = old ? state.save.packet : state.selection.current_packet;
  if (packet != none) visit(state.tables.font_packets[packet][0]);
}

// Replaces the selections of named groups in a list of changes, which putting the save back is
// going to release, by copies.
void keep_named_texts(char **list, bool all) {
  size_t size = 0;
  for_each_named_change(all, false, [&](const char *text) { size += std::strlen(text) + 1; });
  if (size == 0) return;
  memory::Text kept = memory::allocate_array<char>(size);
  char *next = kept.get();
  for_each_font_change(all, false, false, [&](const char *) { ++list; });
  for_each_named_change(all, false, [&](const char *text) {
    const size_t length = std::strlen(text) + 1;
    *list++ = static_cast<char *>(std::memcpy(next, text, length));
    next += length;
  });
  Kfree(state.listed_texts[0]);
  state.listed_texts[0] = std::exchange(state.listed_texts[1], kept.release());
}

}  // namespace

void make_room_for_font_group(Save &save, int32_t group) {
  make_room(save.selected_font, group);
  make_room(save.touched_groups, group);
  make_room(save.recent_groups, group);
}

void make_room_for_named_group(Save &save, int32_t group) {
  make_room(save.named_fonts, group);
  make_room(save.touched_named, group);
  make_room(save.replaced_named, group);
  make_room(save.recent_named, group);
}

void release(Save &save) {
  drop_save();
  Kfree(save.selected_font);
  Kfree(save.named_fonts);
  for (GroupSet *set : {&save.touched_groups, &save.touched_named, &save.replaced_named,
                        &save.recent_groups, &save.recent_named})
    release(*set);
}

void change_selected_font(int32_t group, int32_t number) {
  if (state.save.active) {
    if (!contains(state.save.touched_groups, group)) {
      state.save.selected_font[group] = state.selection.selected_font[group];
      insert(state.save.touched_groups, group);
    }
    insert(state.save.recent_groups, group);
  }
  state.selection.selected_font[group] = number;
}

void change_named_font(int32_t group, char *text) {
  char *const old = std::exchange(state.selection.named_group_fonts[group], text);
  if (text != nullptr) insert(state.selection.named_in_use, group);
  if (state.save.active && !contains(state.save.replaced_named, group)) {
    state.save.named_fonts[group] = old;
    insert(state.save.replaced_named, group);
  } else {
    Kfree(old);
  }
}

void drop_save() {
  for_each(state.save.replaced_named, [](int32_t group) { Kfree(state.save.named_fonts[group]); });
  clear(state.save.touched_groups);
  clear(state.save.touched_named);
  clear(state.save.replaced_named);
  clear(state.save.recent_groups);
  clear(state.save.recent_named);
  state.save.active = false;
}

void take_changes(memory::ArenaVector<GroupChange> &changes) {
  for_each(state.save.recent_groups, [&](int32_t group) {
    const int32_t font = state.selection.selected_font[group];
    const bool changed = font != state.save.selected_font[group];
    changes.push_back({static_cast<uint32_t>(group), changed ? font : 0, nullptr});
  });
  for_each(state.save.recent_named, [&](int32_t group) {
    const bool changed = named_font_differs(group);
    changes.push_back({count_font_groups() + static_cast<uint32_t>(group), 0,
                       changed ? state.selection.named_group_fonts[group] : nullptr});
  });
  clear(state.save.recent_groups);
  clear(state.save.recent_named);
}

const char *changed_packet() {
  if (!packet_differs() || state.selection.current_packet == none) return nullptr;
  return state.tables.font_packets[state.selection.current_packet][0];
}

}  // namespace klib::fonts

// Exported names

using namespace klib;
using namespace klib::fonts;

void Ksave_font_state() {
  drop_save();
  state.save.packet = state.selection.current_packet;
  state.save.packet_selected = state.selection.packet_selected;
  state.save.packet_changed = false;
  state.save.active = true;
}

void Krestore_font_state() {
  if (!state.save.active) return;
  state.selection.packet_selected = state.save.packet_selected;
  state.selection.current_packet = state.save.packet;
  for_each(state.save.touched_groups, [](int32_t group) {
    state.selection.selected_font[group] = state.save.selected_font[group];
  });
  for_each(state.save.replaced_named, [](int32_t group) {
    // The text changes places with the one saved, which drop_save then releases.
    std::swap(state.selection.named_group_fonts[group], state.save.named_fonts[group]);
    if (state.selection.named_group_fonts[group] != nullptr)
      insert(state.selection.named_in_use, group);
  });
  drop_save();
}

void Kcleanup_font_save() { drop_save(); }

char **Kfont_changes_since_save(int32_t all, int32_t old, int32_t skip_default) {
  const auto visit_changes = [&](auto visit) {
    for_each_change(all != 0, old != 0, skip_default != 0, visit);
  };
  size_t count = 0;
  visit_changes([&](const char *) { ++count; });
  if (count == 0) return nullptr;
  return memory::guarded<char **>(nullptr, [&] {
    memory::Array<char *> list = make_list(count);
    count = 0;
    visit_changes([&](char *text) { list[count++] = text; });
    return list.release();
  });
}

char **Kfont_changes(const char *text, int32_t all, int32_t old) {
  const memory::TextList fonts(Kfonts_in_string(text));
  if (!fonts) return nullptr;
  Ksave_font_state();
  // The single font is not part of a save, and where there is one nothing else can change.
  if (parameters::number(parameters::Number::single_font_group) == 0)
    for (char **font = fonts.get(); *font != nullptr; ++font) Kselect_font(*font);
  char **list = memory::guarded<char **>(nullptr, [&] {
    memory::Array<char *> changes(Kfont_changes_since_save(all, old, 0));
    if (changes && old == 0) keep_named_texts(changes.get(), all != 0);
    return changes.release();
  });
  Krestore_font_state();
  return list;
}

void reset_named_font_groups() {
  for_each(state.selection.named_in_use, [](int32_t group) { change_named_font(group, nullptr); });
  clear(state.selection.named_in_use);
}
