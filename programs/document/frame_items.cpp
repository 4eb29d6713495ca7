#include "programs/document/frame_items.h"

namespace klib::programs {
namespace {

// The end of the item at `i`, or of the element that it opens, if it can be part of a piece that
// comes back as it is; else `i`.
size_t end_of_kept_item(const FrameItems &look, size_t i) {
  const Item &item = look.item(i);
  if (!item.kept || item.kind == Item::close) return i;
  if (item.kind != Item::open) return i + 1;
  const size_t partner = look.partner(i);
  return partner != Item::none && look.known[partner].free_before == look.known[i].free_before
             ? partner + 1
             : i;
}

}  // namespace

FrameItems look_at(const std::vector<Item> &items, const Frame &frame, bool takes_atoms) {
  FrameItems look{items, frame, {}};
  const size_t size = look.size();
  look.known.resize(size + 1);
  size_t content = Item::none;
  for (size_t i = 0; i < size; i++) {
    if (!look.item(i).is_markup()) content = i;
    look.known[i].content_before = content;
  }
  content = Item::none;
  for (size_t i = size; i-- > 0;) {
    if (!look.item(i).is_markup()) content = i;
    look.known[i].content_after = content;
  }
  const auto is_text = [&](size_t i) {
    return look.item(i).visible || (takes_atoms && look.item(i).atom);
  };
  while (!is_text(look.first_text)) look.first_text++;
  look.last_text = size - 1;
  while (!is_text(look.last_text)) look.last_text--;
  for (size_t i = 0; i < size; i++) {
    const Item &item = look.item(i);
    look.known[i + 1].free_before = look.known[i].free_before + (item.visible && !item.kept);
    look.known[i + 1].kept_before = look.known[i].kept_before + (item.visible && item.kept);
  }
  return look;
}

size_t end_of_kept_piece(const FrameItems &look, size_t i) {
  size_t end = i;
  for (size_t next = i, after; next < look.size(); next = after) {
    after = end_of_kept_item(look, next);
    if (after == next) break;
    if (look.known[after].kept_before > look.known[next].kept_before)
      end = after;
    else if (end == i)
      break;  // it begins with text or the tags around it
  }
  return end;
}

int font_of(const FrameItems &look, size_t i, size_t partner) {
  const int group = look.item(i).font_group;
  if (group < 0 || look.is_open[group]) return -1;
  const bool text = look.item(look.known[i].content_after).kind == Item::text &&
                    look.item(look.known[partner].content_before).kind == Item::text;
  return text ? group : -1;
}

size_t begin_of_tag(const FrameItems &look, size_t i) {
  return look.item(i > 0 && look.is_at_edge(i - 1) && i > look.last_text ? i - 1 : i).begin;
}
size_t end_of_tag(const FrameItems &look, size_t i) {
  return look.item(i < look.first_text && look.is_at_edge(i + 1) ? i + 1 : i).end;
}

}  // namespace klib::programs
