// Font packets: selecting everything that a packet names, and asking whether all of it is in force.
//
// A packet may name packets, itself included. A walk visits the fields in order and enters the
// packets among them; the way back is kept in the packets themselves, since each can be open only
// once at a time. So neither depth nor loops matter.
//
// Packets that name others twice can make the walk exponentially long. Walking through a packet
// again changes no answer and repeats only reports, so after `repeat_limit` names a walk enters
// only packets that it has not entered before. What a selection then left out is settled by a walk
// backwards, in which the first font met of each group is the one selected last.

#include "format/fonts.h"
#include "frame/messages.h"

namespace klib::fonts {

namespace {

constexpr int64_t repeat_limit = 10'000;

enum class Order { forwards, backwards };
enum class Step {
  go_on,
  enter,
  stop
};  // to the next field; into the packet that it names; nowhere

// Opens a packet. Returns its number.
int32_t open(int32_t packet, int32_t parent) {
  PacketWalk &walk = state.walks.packets[packet];
  walk.left = walk.fields;
  walk.parent = parent;
  walk.open = true;
  walk.walk = state.walks.latest;
  return packet;
}

// Closes the packet and returns the one that named it.
int32_t close(int32_t packet) {
  state.walks.packets[packet].open = false;
  return state.walks.packets[packet].parent;
}

const char *next_field(int32_t packet, Order order) {
  PacketWalk &walk = state.walks.packets[packet];
  const int32_t element = order == Order::backwards ? walk.left : walk.fields - walk.left + 1;
  --walk.left;
  return state.tables.font_packets[packet][element];
}

bool is_packet(const Name *found) { return found != nullptr && found->packet != none; }

bool was_opened(const Name *packet) {
  return state.walks.packets[packet->packet].walk == state.walks.latest;
}

bool is_open(const Name *packet) { return state.walks.packets[packet->packet].open; }

// Calls `visit(found, name)`, which returns a Step, for every field, and `leave()` at the end of
// each packet. False when a step was to stop.
template <class Visit, class Leave>
bool walk_through(int32_t packet, Order order, Visit visit, Leave leave) {
  ++state.walks.latest;
  for (int32_t at = open(packet, none); at != none;) {
    if (state.walks.packets[at].left == 0) {
      leave();
      at = close(at);
      continue;
    }
    const char *name = next_field(at, order);
    const Name *found = find(state.tables.names, name);
    const Step step = visit(found, name);
    if (step == Step::enter) at = open(found->packet, at);
    if (step != Step::stop) continue;
    while (at != none) at = close(at);
    return false;
  }
  return true;
}

// Selects again what the packet selects, each group's last font first and only that one.
void settle(int32_t packet) {
  clear(state.walks.settled);
  const auto visit = [](const Name *found, const char *) {
    if (is_packet(found)) return was_opened(found) ? Step::go_on : Step::enter;
    if (found == nullptr || contains(state.walks.settled, found->group)) return Step::go_on;
    insert(state.walks.settled, found->group);
    change_selected_font(found->group, found->number);
    return Step::go_on;
  };
  walk_through(packet, Order::backwards, visit, [] {});
}

}  // namespace

void make_room_for_font_group(Walks &walks, int32_t group) { make_room(walks.settled, group); }

void make_room_for_packet(Walks &walks, int32_t packet) { make_room(walks.packets, packet); }

void release(Walks &walks) {
  Kfree(walks.packets);
  release(walks.settled);
}

void select_packet(int32_t packet) {
  bool left_out = false;
  int64_t names = 0;
  const auto visit = [&](const Name *found, const char *name) {
    ++names;
    if (!is_packet(found)) {
      select_font(found, name);
      return Step::go_on;
    }
    if (is_open(found)) return Step::go_on;
    if (names <= repeat_limit || !was_opened(found)) return Step::enter;
    left_out = true;
    return Step::go_on;
  };
  walk_through(packet, Order::forwards, visit, [] {});
  if (left_out) settle(packet);
  if (state.save.active) state.save.packet_changed = true;
  state.selection.current_packet = packet;
  state.selection.packet_selected = true;
}

bool is_packet_selected(int32_t packet) {
  if (state.selection.packet_selected) return state.selection.current_packet == packet;
  bool packet_check_active = true;  // until a packet's fields have all been tested
  int64_t names = 0;
  const auto visit = [&](const Name *found, const char *name) {
    ++names;
    if (!is_packet(found)) return is_font_selected(found, name) ? Step::go_on : Step::stop;
    if (packet_check_active) report_and_abort(MESSAGE_RECURSIVE_PACKET);
    if (is_open(found)) return Step::stop;
    packet_check_active = names <= repeat_limit || !was_opened(found);
    return packet_check_active ? Step::enter : Step::go_on;
  };
  return walk_through(packet, Order::forwards, visit, [&] { packet_check_active = false; });
}

}  // namespace klib::fonts
