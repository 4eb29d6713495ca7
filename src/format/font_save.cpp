// A save of the font selection: what has changed since, and the way back.
//
// A save copies nothing when it is made. The old selection of a group is put aside when the group
// first changes, so that saving costs nothing, and listing and putting back cost as much as was
// touched. A group that is declared during a save counts as if the save had found it there.
// Tested by fonts_test.cpp.

#include <cstring>
#include <utility>

#include "format/fonts.h"
#include "parameters/parameters.h"

namespace klib::fonts {

namespace {

// Whether a named group that was selected since the save has another selection now.
bool named_font_differs(int32_t group) {
  const char *const current = state.named_group_fonts[group];
  const char *const saved = state.saved_named_fonts[group];
  return current == nullptr || saved == nullptr || std::strcmp(current, saved) != 0;
}

bool packet_differs() { return state.packet_changed && state.current_packet != state.saved_packet; }

// The texts of a list of changes, visited in the order of the list: font groups, named groups, and
// the packet.
template <class Visit>
void for_each_font_change(bool all, bool old, bool skip_default, Visit visit) {
  for_each(state.group_touched, [&](int32_t group) {
    const int32_t current = state.selected_font[group];
    const int32_t saved = state.saved_selected_font[group];
    const int32_t listed = old ? saved : current;
    if (!all && current == saved) return;
    if (skip_default && listed == 0) return;
    visit(state.font_groups[group][listed]);
  });
}

template <class Visit>
void for_each_named_change(bool all, bool old, Visit visit) {
  for_each(state.named_touched, [&](int32_t group) {
    char *const current = state.named_group_fonts[group];
    char *const saved = state.saved_named_fonts[group];
    char *const listed = old ? saved : current;
    if (listed == nullptr) return;
    if (!all && !named_font_differs(group)) return;
    visit(listed);
  });
}

template <class Visit>
void for_each_change(bool all, bool old, bool skip_default, Visit visit) {
  if (!state.save_active) return;
  for_each_font_change(all, old, skip_default, visit);
  for_each_named_change(all, old, visit);
  if (!state.packet_changed || (!all && !packet_differs())) return;
  const int32_t packet = old ? state.saved_packet : state.current_packet;
  if (packet != none) visit(state.font_packets[packet][0]);
}

// Replaces the selections of named groups in a list of changes, which putting the save back is
// going to release, by copies.
void keep_named_texts(char **list, bool all) {
  size_t size = 0;
  for_each_named_change(all, false, [&](const char *text) { size += std::strlen(text) + 1; });
  if (size == 0) return;
  memory::Text kept(static_cast<char *>(memory::allocate(size)));
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

void change_selected_font(int32_t group, int32_t number) {
  if (state.save_active) {
    if (!contains(state.group_touched, group))
      state.saved_selected_font[group] = state.selected_font[group];
    insert(state.group_touched, group);
    insert(state.recent_groups, group);
  }
  state.selected_font[group] = number;
}

void change_named_font(int32_t group, char *text) {
  char *const old = std::exchange(state.named_group_fonts[group], text);
  if (text != nullptr) insert(state.named_in_use, group);
  if (state.save_active && !contains(state.named_saved, group)) {
    state.saved_named_fonts[group] = old;
    insert(state.named_saved, group);
  } else {
    Kfree(old);
  }
}

void drop_save() {
  for_each(state.named_saved, [](int32_t group) { Kfree(state.saved_named_fonts[group]); });
  clear(state.group_touched);
  clear(state.named_touched);
  clear(state.named_saved);
  clear(state.recent_groups);
  clear(state.recent_named);
  state.save_active = false;
}

void take_changes(memory::Vector<GroupChange> &changes) {
  for_each(state.recent_groups, [&](int32_t group) {
    const int32_t font = state.selected_font[group];
    changes.push_back({group, font != state.saved_selected_font[group] ? font : 0, nullptr});
  });
  for_each(state.recent_named, [&](int32_t group) {
    const bool changed = named_font_differs(group);
    changes.push_back(
        {state.font_group_count + group, 0, changed ? state.named_group_fonts[group] : nullptr});
  });
  clear(state.recent_groups);
  clear(state.recent_named);
}

const char *changed_packet() {
  if (!packet_differs() || state.current_packet == none) return nullptr;
  return state.font_packets[state.current_packet][0];
}

}  // namespace klib::fonts

// Exported names

using namespace klib;
using namespace klib::fonts;

void Ksave_font_state() {
  drop_save();
  state.saved_packet = state.current_packet;
  state.saved_packet_selected = state.packet_selected;
  state.packet_changed = false;
  state.save_active = true;
}

void Krestore_font_state() {
  if (!state.save_active) return;
  state.packet_selected = state.saved_packet_selected;
  state.current_packet = state.saved_packet;
  for_each(state.group_touched,
           [](int32_t group) { state.selected_font[group] = state.saved_selected_font[group]; });
  for_each(state.named_saved, [](int32_t group) {
    // The text changes places with the one saved, which drop_save then releases.
    std::swap(state.named_group_fonts[group], state.saved_named_fonts[group]);
    if (state.named_group_fonts[group] != nullptr) insert(state.named_in_use, group);
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
  for_each(state.named_in_use, [](int32_t group) { change_named_font(group, nullptr); });
  clear(state.named_in_use);
}
