// Font packets: selecting everything that a packet names, and asking whether all of it is in force.
//
// A packet may name packets, itself included. A walk goes through the fields in order and into the
// packets among them; the way back is kept in the packets themselves, since each can be open only
// once at a time. So neither depth nor loops matter.
//
// Packets that name others twice can make the walk exponentially long. Going again through a packet
// changes no answer and repeats only reports, so after `repeat_limit` names a walk enters only
// packets that it has not entered before. What a selection then left out is settled by a walk
// backwards, in which the first font met of each group is the one selected last.

#include "format/fonts.h"
#include "frame/messages.h"

namespace klib::fonts {

namespace {

constexpr int64_t repeat_limit = 10'000;

// Opens a packet at one of its elements. Returns the packet.
int32_t open(int32_t packet, int32_t parent, int32_t element) {
  PacketWalk &walk = state.packet_walks[packet];
  walk.next = element;
  walk.parent = parent;
  walk.open = true;
  walk.walk = state.walk;
  return packet;
}

// Closes the packet and returns the one that named it.
int32_t close(int32_t packet) {
  state.packet_walks[packet].open = false;
  return state.packet_walks[packet].parent;
}

bool was_opened(int32_t packet) { return state.packet_walks[packet].walk == state.walk; }

// Selects again what the packet selects, each group's last font first and only that one.
void settle(int32_t packet) {
  ++state.walk;
  clear(state.settled);
  int32_t at = open(packet, none, state.packet_walks[packet].elements - 1);
  while (at != none) {
    PacketWalk &walk = state.packet_walks[at];
    if (walk.next == 0) {
      at = close(at);
      continue;
    }
    const Name *found = find(state.names, state.font_packets[at][walk.next--]);
    if (found == nullptr) continue;
    if (found->packet != none) {
      if (!was_opened(found->packet))
        at = open(found->packet, at, state.packet_walks[found->packet].elements - 1);
    } else if (!contains(state.settled, found->group)) {
      insert(state.settled, found->group);
      change_selected_font(found->group, found->number);
    }
  }
}

}  // namespace

void select_packet(int32_t packet) {
  bool left_out = false;
  int64_t names = 0;
  ++state.walk;
  int32_t at = open(packet, none, 1);
  while (at != none) {
    PacketWalk &walk = state.packet_walks[at];
    if (walk.next == walk.elements) {
      at = close(at);
      continue;
    }
    const char *name = state.font_packets[at][walk.next++];
    const Name *found = find(state.names, name);
    ++names;
    if (found == nullptr || found->packet == none)
      select_font(found, name);
    else if (state.packet_walks[found->packet].open)
      continue;
    else if (names > repeat_limit && was_opened(found->packet))
      left_out = true;
    else
      at = open(found->packet, at, 1);
  }
  if (left_out) settle(packet);
  if (state.save_active) state.packet_changed = true;
  state.current_packet = packet;
  state.packet_selected = true;
}

bool is_packet_selected(int32_t packet) {
  if (state.packet_selected) return state.current_packet == packet;
  bool packet_check_active = true;  // until a packet's fields have all been tested
  int64_t names = 0;
  ++state.walk;
  int32_t at = open(packet, none, 1);
  while (at != none) {
    PacketWalk &walk = state.packet_walks[at];
    if (walk.next == walk.elements) {
      packet_check_active = false;
      at = close(at);
      continue;
    }
    const char *name = state.font_packets[at][walk.next++];
    const Name *found = find(state.names, name);
    ++names;
    bool in_force = true;
    if (found == nullptr || found->packet == none) {
      in_force = is_font_selected(found, name);
    } else {
      if (packet_check_active) {
        report_and_abort(MESSAGE_RECURSIVE_PACKET);
      }
      in_force = !state.packet_walks[found->packet].open;
      packet_check_active = in_force && !(names > repeat_limit && was_opened(found->packet));
      if (packet_check_active) at = open(found->packet, at, 1);
    }
    if (in_force) continue;
    while (at != none) at = close(at);
    return false;
  }
  return true;
}

}  // namespace klib::fonts
