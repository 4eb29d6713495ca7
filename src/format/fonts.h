// What the files of the font code share: the tables, the selection and the save, and the steps by
// which they change.
//
//     font_definitions.cpp   the tables, built from the values of "FONT", "FONTGROUPS" and
//                            "FONT-PACKET"; lookups by name
//     font_selection.cpp     selecting a font and asking whether it is in force
//     font_packets.cpp       the same for packets, which may name packets
//     font_save.cpp          saving the selection, putting it back, listing what changed
//
// For the transfer of codes: take_changes reports what is new for a list of changes; select and
// its like are Kselect_font and Kis_font_selected that throw.
#pragma once

#include <cstdint>
#include <memory>

#include "format/group_tables.h"
#include "format/name_index.h"
#include "frame/memory.h"

namespace klib::fonts {

// Between the fields of a value, and between the name of a named group and that of its font.
inline constexpr char separator = '\xFF';

// What is declared. The tables are in the array slots that containers/slots.h names; null before
// the first P_init_fonts and after P_cleanup_fonts.
struct Tables {
  char ***font_groups = nullptr;       // per font group its owned names, null-terminated
  char **named_group_names = nullptr;  // owned
  char ***font_packets = nullptr;      // per packet the fields of one owned text
  int32_t font_group_count = 0;
  int32_t named_group_count = 0;
  int32_t font_packet_count = 0;
  NameIndex names;         // of fonts and packets, the first definition of each
  NameIndex named_groups;  // likewise
};

// What is selected; the arrays are in array slots, too.
struct Selection {
  int32_t *selected_font = nullptr;    // per font group the number of its selected font
  char **named_group_fonts = nullptr;  // per named group its selection, owned, or null
  int32_t current_packet = none;       // selected last
  bool packet_selected = false;  // the last selection was a packet, or a font group was added since
  GroupSet named_in_use;         // the named groups that have a selection, perhaps more
};

// What was selected at the save. It is put aside when the group first changes after the save.
struct Save {
  bool active = false;
  int32_t packet = none;
  bool packet_selected = false;
  bool packet_changed = false;       // a packet was selected since
  int32_t *selected_font = nullptr;  // per font group, valid in `touched_groups`
  char **named_fonts = nullptr;      // per named group, owned or null, valid in `replaced_named`
  GroupSet touched_groups;           // font groups selected from since
  GroupSet touched_named;            // named groups selected since
  GroupSet replaced_named;           // named groups selected or reset since
  GroupSet recent_groups;            // of `touched_groups`, since take_changes was last called
  GroupSet recent_named;             // of `touched_named`, likewise
};

// A packet's place in a walk through packets. Every packet is open at most once at a time, so that
// the walk needs no other stack.
struct PacketWalk {
  int32_t fields;  // of the packet, without its name; set when it is declared
  int32_t left;    // of them, still to be visited
  int32_t parent;  // the packet that named this one, or none
  bool open;       // being walked through
  uint64_t walk;   // number of the walk that last opened it
};
struct Walks {
  PacketWalk *packets = nullptr;  // per packet
  uint64_t latest = 0;            // number of the latest walk
  GroupSet settled;               // font groups that a walk backwards has dealt with
};

struct State {
  Tables tables;
  Selection selection;
  Save save;
  Walks walks;
  // Copies of the named groups' texts in the latest two lists of Kfont_changes that have such
  // texts, the older one first; owned.
  char *listed_texts[2] = {nullptr, nullptr};
};
extern State state;

// font_definitions.cpp. The text is owned, or null; the old one is released unless it is static.
void replace_single_font(char *text);

// Each part makes room for one more font group, named group or packet, and releases what it has.
// Making room throws memory::Exhausted; what there was stays.
void make_room_for_font_group(Save &save, int32_t group);
void make_room_for_named_group(Save &save, int32_t group);
void release(Save &save);
void make_room_for_font_group(Walks &walks, int32_t group);
void make_room_for_packet(Walks &walks, int32_t packet);
void release(Walks &walks);

// font_packets.cpp
void select_packet(int32_t packet);
[[nodiscard]] bool is_packet_selected(int32_t packet);

// font_selection.cpp. `found` is what the index holds for the name, null when that is nothing.
void select_font(const Name *found, const char *name);
[[nodiscard]] bool is_font_selected(const Name *found, const char *name);
// Kselect_font and Kis_font_selected for callers that must not go on without memory: they throw
// memory::Exhausted.
void select(const char *name);
[[nodiscard]] bool is_selected(const char *name);
// Both at once: selects the name unless it is in force, with the reports of both. Returns whether
// it was selected.
bool select_unless_selected(const char *name);
// Whether the named group of a selection is declared: is_selected then reports nothing.
[[nodiscard]] bool names_known_group(const char *name);

// font_save.cpp. Every change of a selection goes through one of these two, so that a save in
// force puts aside what it saves.
void change_selected_font(int32_t group, int32_t number);
void change_named_font(int32_t group, char *text);  // an owned text, or null

// Ends the save, if there is one, and leaves the selection as it is.
void drop_save();

// What Kfont_changes_since_save(0, 0, 1) has to say of one group.
struct GroupChange {
  uint32_t group;          // named groups are numbered on, after the font groups
  int32_t font;            // of a font group: the number of the font listed, 0 when none is
  const char *named_font;  // of a named group: the text listed; null when none is
};

// Whether there are any for take_changes.
[[nodiscard]] inline bool has_changes() {
  return !is_empty(state.save.recent_groups) || !is_empty(state.save.recent_named);
}

// Adds to `changes`, in ascending order, the groups that were selected since the save and since
// this was last called. May throw memory::Exhausted.
void take_changes(memory::ArenaVector<GroupChange> &changes);

// The name of the packet that Kfont_changes_since_save(0, 0, 1) would list; null when none is.
[[nodiscard]] const char *changed_packet();

// font_definitions.cpp
[[nodiscard]] uint32_t count_font_groups();
[[nodiscard]] uint32_t count_named_groups();
[[nodiscard]] const char *font_name(uint32_t group, uint32_t font);

// A null-terminated list of that many texts, still to be filled, in the scratch slot. The caller
// owns it. Throws memory::Exhausted.
[[nodiscard]] memory::Array<char *> make_list(size_t count);

// What an operation on arrays has returned, null being exhausted memory, reported already.
inline char **checked(char **array) {
  if (array == nullptr) throw memory::Exhausted{};
  return array;
}

}  // namespace klib::fonts
