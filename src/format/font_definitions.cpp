// The font tables: font groups, named font groups and font packets, as parameter lines declare
// them.
//
//     FONT=Roman{FF}Bold{FF}Italic      a font group: names of fonts that exclude each other
//     FONTGROUPS=H1{FF}H2               named font groups, whose fonts are listed nowhere
//     FONT-PACKET=Heading{FF}Bold{FF}H  a packet: its name, then what selecting it selects
//
// The byte {FF} separates fields; there is no other syntax, and an empty field is an empty name.
// The tables only grow until they are released as a whole. Equal names are accepted, the first
// definition is found. Tested by fonts_test.cpp.

#include <iterator>
#include <utility>

#include "containers/slots.h"
#include "format/fonts.h"
#include "frame/resets.h"
#include "text/bytes.h"

namespace klib::fonts {

constinit State state;

namespace {

constexpr int32_t table_room = 50;  // elements at first, and the step by which a table grows
constexpr int32_t duplicate_in_group = -6;
constexpr int32_t duplicate_of_other_group = -7;
constexpr int32_t duplicate_named_group = -8;
constexpr int32_t exhausted = -1;  // of memory, reported already

constexpr int32_t table_slots[] = {slots::font_groups, slots::selected_font,
                                   slots::named_group_names, slots::named_group_fonts,
                                   slots::font_packets};

char no_font_yet[] = "?";

// The fields of a value as owned copies; the value itself is split in place.
memory::TextList copy_fields(char *value) {
  memory::TextList fields(checked(a_separator(value, u8(separator), 0)));
  for (char **field = fields.get(); *field != nullptr; ++field) {
    const char *text = std::exchange(*field, nullptr);  // so that what is copied ends here
    *field = memory::copy(text).release();
  }
  return fields;
}

void make_tables() {
  if (state.tables.font_groups != nullptr) return;
  char **made[std::size(table_slots)];
  for (size_t i = 0; i < std::size(table_slots); ++i) {
    made[i] = a_make(table_slots[i], table_room, table_room);
    if (made[i] != nullptr) continue;
    while (i-- > 0) a_free(table_slots[i]);
    throw memory::Exhausted{};
  }
  state.tables.font_groups = reinterpret_cast<char ***>(made[0]);
  state.selection.selected_font = reinterpret_cast<int32_t *>(made[1]);
  state.tables.named_group_names = made[2];
  state.selection.named_group_fonts = made[3];
  state.tables.font_packets = reinterpret_cast<char ***>(made[4]);
}

// Room for element `count` of a table that lives in a slot.
template <class T>
void grow_table(T *&table, int32_t slot, int32_t count) {
  char **const base = reinterpret_cast<char **>(table);
  table = reinterpret_cast<T *>(checked(a_check(slot, base + count)));
}

void make_room_for_font_group(Tables &tables, int32_t group, size_t fonts) {
  grow_table(tables.font_groups, slots::font_groups, group);
  reserve(tables.names, static_cast<uint32_t>(fonts));
}

void make_room_for_font_group(Selection &selection, int32_t group) {
  grow_table(selection.selected_font, slots::selected_font, group);
}

void make_room_for_named_group(Tables &tables, int32_t group) {
  grow_table(tables.named_group_names, slots::named_group_names, group);
  reserve(tables.named_groups, 1);
}

void make_room_for_named_group(Selection &selection, int32_t group) {
  grow_table(selection.named_group_fonts, slots::named_group_fonts, group);
  make_room(selection.named_in_use, group);
}

void make_room_for_packet(Tables &tables, int32_t packet) {
  grow_table(tables.font_packets, slots::font_packets, packet);
  reserve(tables.names, 1);
}

// The arrays in slots are left to a_free.
void release(Tables &tables) {
  for (int32_t i = 0; i < tables.font_group_count; ++i) {
    memory::TextList(tables.font_groups[i]).reset();
  }
  for (int32_t i = 0; i < tables.font_packet_count; ++i) {
    Kfree(tables.font_packets[i][0]);
    Kfree(tables.font_packets[i]);
  }
  for (int32_t i = 0; i < tables.named_group_count; ++i) Kfree(tables.named_group_names[i]);
  release(tables.names);
  release(tables.named_groups);
}

void release(Selection &selection, int32_t named_groups) {
  for (int32_t i = 0; i < named_groups; ++i) Kfree(selection.named_group_fonts[i]);
  release(selection.named_in_use);
}

void add_group(memory::TextList fonts) {
  const int32_t group = state.tables.font_group_count;
  make_tables();
  char **const texts = fonts.get();
  const int32_t count = a_length(texts);
  make_room_for_font_group(state.tables, group, static_cast<size_t>(count));
  make_room_for_font_group(state.selection, group);
  make_room_for_font_group(state.save, group);
  make_room_for_font_group(state.walks, group);
  // Nothing can fail from here on.
  for (int32_t number = 0; number < count; ++number) {
    Name &name = enter(state.tables.names, texts[number]);
    if (name.group != none) continue;
    name.group = group;
    name.number = number;
  }
  state.tables.font_groups[group] = fonts.release();
  state.selection.selected_font[group] = 0;
  ++state.tables.font_group_count;
  state.selection.current_packet = none;
  state.selection.packet_selected = true;
}

int32_t find_duplicate(char **fonts) {
  struct Seen : NameIndex {
    ~Seen() { release(*this); }
  } seen;
  reserve(seen, static_cast<uint32_t>(a_length(fonts)));
  for (char **font = fonts; *font != nullptr; ++font) {
    const Name *found = find(state.tables.names, *font);
    if (found != nullptr && found->group != none) return duplicate_of_other_group;
    Name &name = enter(seen, *font);
    if (name.group != none) return duplicate_in_group;
    name.group = 0;
  }
  return 0;
}

}  // namespace

uint32_t count_font_groups() { return static_cast<uint32_t>(state.tables.font_group_count); }

uint32_t count_named_groups() { return static_cast<uint32_t>(state.tables.named_group_count); }

const char *font_name(uint32_t group, uint32_t font) {
  return state.tables.font_groups[group][font];
}

void replace_single_font(char *text) {
  if (single_font != no_font_yet) Kfree(single_font);
  single_font = text;
}

void reset() {
  P_cleanup_fonts();
  single_font = no_font_yet;
}

}  // namespace klib::fonts

// Exported names

using namespace klib;
using namespace klib::fonts;

constinit char *single_font = no_font_yet;

int32_t P_init_fonts() {
  P_cleanup_fonts();
  return memory::guarded(exhausted, [] {
    make_tables();
    return 0;
  });
}

int32_t P_set_fonts(int32_t, char *value) {
  return memory::guarded(exhausted, [&] {
    memory::TextList fonts = copy_fields(value);
    const int32_t result = find_duplicate(fonts.get());
    add_group(std::move(fonts));
    return result;
  });
}

int32_t P_set_fontgroups(int32_t, char *value) {
  return memory::guarded(exhausted, [&] {
    const memory::Array<char *> fields(checked(a_separator(value, u8(separator), 0)));
    for (char **field = fields.get(); *field != nullptr; ++field) {
      if (find_named_font_group(*field) != none) return duplicate_named_group;
      if (set_font_group(*field) != 0) return exhausted;
    }
    return 0;
  });
}

int32_t P_set_fontpacket(int32_t, const char *value) {
  return memory::guarded(exhausted, [&] {
    const int32_t packet = state.tables.font_packet_count;
    make_tables();
    memory::Text text = memory::copy(value);
    memory::Array<char *> fields(checked(a_separator(text.get(), u8(separator), 0)));
    make_room_for_packet(state.tables, packet);
    make_room_for_packet(state.walks, packet);
    // Nothing can fail from here on.
    Name &name = enter(state.tables.names, text.release());
    if (name.packet == none) name.packet = packet;
    state.walks.packets[packet] = {
        .fields = a_length(fields.get()) - 1, .left = 0, .parent = none, .open = false, .walk = 0};
    state.tables.font_packets[packet] = fields.release();
    ++state.tables.font_packet_count;
    return 0;
  });
}

void P_cleanup_fonts() {
  const bool made = state.tables.font_groups != nullptr;
  release(state.save);
  release(state.walks);
  release(state.selection, state.tables.named_group_count);
  release(state.tables);
  if (made)
    for (const int32_t slot : table_slots) a_free(slot);
  for (char *texts : state.listed_texts) Kfree(texts);
  state = State{};
  replace_single_font(nullptr);
}

int32_t Kget_font_group_and_number(const char *font, int32_t *group, int32_t *number) {
  const Name *found = find(state.tables.names, font);
  const bool is_font = found != nullptr && found->group != none;
  *group = is_font ? found->group : 0;
  *number = is_font ? found->number : 0;
  return is_font ? 0 : none;
}

int32_t find_named_font_group(const char *name) {
  const Name *found = find(state.tables.named_groups, name);
  return found != nullptr ? found->group : none;
}

int32_t set_font_group(const char *name) {
  return memory::guarded(exhausted, [&] {
    const int32_t group = state.tables.named_group_count;
    make_tables();
    memory::Text text = memory::copy(name);
    make_room_for_named_group(state.tables, group);
    make_room_for_named_group(state.selection, group);
    make_room_for_named_group(state.save, group);
    // Nothing can fail from here on.
    Name &entry = enter(state.tables.named_groups, text.get());
    if (entry.group == none) entry.group = group;
    state.tables.named_group_names[group] = text.release();
    state.selection.named_group_fonts[group] = nullptr;
    ++state.tables.named_group_count;
    return 0;
  });
}

int32_t check_fonts_for_duplicates(char **fonts) {
  return memory::guarded(exhausted, [&] { return find_duplicate(fonts); });
}

void add_font_group(char **fonts) {
  memory::guarded([&] { add_group(memory::TextList(fonts)); });
}
