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

// Visits the texts of a list of changes, in the order of the list.
template <class Visit>
void for_each_change(bool all, bool old, bool skip_default, Visit visit) {
  if (!state.save_active) return;
  for_each(state.group_touched, [&](int32_t group) {
    const int32_t current = state.selected_font[group];
    const int32_t saved = state.saved_selected_font[group];
    const int32_t listed = old ? saved : current;
    if (!all && current == saved) return;
    if (skip_default && listed == 0) return;
    visit(state.font_groups[group][listed]);
  });
  for_each(state.named_touched, [&](int32_t group) {
    char *const current = state.named_group_fonts[group];
    char *const saved = state.saved_named_fonts[group];
    char *const listed = old ? saved : current;
    if (listed == nullptr) return;
    if (!all && current != nullptr && saved != nullptr && std::strcmp(current, saved) == 0) return;
    visit(listed);
  });
  if (!state.packet_changed || (!all && state.current_packet == state.saved_packet)) return;
  const int32_t packet = old ? state.saved_packet : state.current_packet;
  if (packet != none) visit(state.font_packets[packet][0]);
}

// Lets the list's texts outlive the selection that they belong to.
void keep_texts(char **list) {
  size_t size = 0;
  for (char **text = list; *text != nullptr; text++) size += std::strlen(*text) + 1;
  memory::Text kept(static_cast<char *>(memory::allocate(size)));
  char *next = kept.get();
  for (char **text = list; *text != nullptr; text++) {
    const size_t length = std::strlen(*text) + 1;
    *text = static_cast<char *>(std::memcpy(next, *text, length));
    next += length;
  }
  Kfree(state.listed_texts[0]);
  state.listed_texts[0] = std::exchange(state.listed_texts[1], kept.release());
}

}  // namespace

void change_selected_font(int32_t group, int32_t number) {
  if (state.save_active && !contains(state.group_touched, group)) {
    state.saved_selected_font[group] = state.selected_font[group];
    insert(state.group_touched, group);
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
  state.save_active = false;
}

void append_changes(bool all, bool old, bool skip_default, memory::Vector<const char *> &texts) {
  for_each_change(all, old, skip_default, [&](const char *text) { texts.push_back(text); });
}

}  // namespace klib::fonts

// Exported operations

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
  visit_changes([&](const char *) { count++; });
  if (count == 0) return nullptr;
  return memory::guarded<char **>(nullptr, [&] {
    memory::Array<char *> list = make_list(count);
    count = 0;
    visit_changes([&](char *text) { list[count++] = text; });
    return list.release();
  });
}

char **Kfont_changes(const char *text, int32_t all, int32_t old) {
  const Texts fonts(Kfonts_in_string(text));
  if (!fonts) return nullptr;
  Ksave_font_state();
  // The single font is not part of a save, and where there is one nothing else can change.
  if (parameters::number(parameters::Number::single_font_group) == 0)
    for (char **font = fonts.get(); *font != nullptr; font++) Kselect_font(*font);
  char **list = memory::guarded<char **>(nullptr, [&] {
    memory::Array<char *> changes(Kfont_changes_since_save(all, old, 0));
    if (changes) keep_texts(changes.get());
    return changes.release();
  });
  Krestore_font_state();
  return list;
}

void reset_named_font_groups() {
  for_each(state.named_in_use, [](int32_t group) { change_named_font(group, nullptr); });
  clear(state.named_in_use);
}
