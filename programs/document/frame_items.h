// The items of a frame, and what they become in it: parts of a piece that comes back as it is,
// fonts, anchors.
#pragma once

#include <cstdint>
#include <vector>

#include "programs/common/codes.h"
#include "programs/document/kind.h"

namespace klib::programs {

// What is known of an item of a frame while it is written.
struct FrameItem {
  size_t content_before = 0, content_after = 0;  // the nearest items that are no markup
  size_t free_before = 0, kept_before = 0;       // visible texts of either kind before the item
  int32_t number = 0;                            // of its anchor
  int group = -1;                                // of an opening tag that became a font
};

struct FrameItems {
  const std::vector<Item> &items;
  const Frame &frame;
  std::vector<FrameItem> known;          // of each item, and of the end what is before it
  bool is_open[font_group_count] = {};   // whether a font of the group is in force
  size_t first_text = 0, last_text = 0;  // the first and last visible texts

  const Item &item(size_t i) const { return items[frame.first + i]; }
  size_t size() const { return frame.last - frame.first; }
  // White space before the first text or after the last is no part of the sentence, but of a tag
  // beside it.
  bool is_at_edge(size_t i) const {
    return item(i).kind == Item::white && (i < first_text || i > last_text);
  }
  // The place of a tag's partner, or Item::none when it is not in the frame.
  size_t partner(size_t i) const {
    const size_t place = item(i).partner;
    return place != Item::none && place >= frame.first && place < frame.last ? place - frame.first
                                                                             : Item::none;
  }
};

// Atoms are among the visible texts where they are taken for words.
FrameItems look_at(const std::vector<Item> &items, const Frame &frame, bool takes_atoms);

// The end of the piece beginning at `i` that comes back as it is, or `i` when there is none: text
// that is not to be translated, with the markup in it.
size_t end_of_kept_piece(const FrameItems &look, size_t i);

// The font group by which the element from `i` to `partner` can be said, or -1: it holds text, has
// no white space at its edges, and is not inside a font of its group.
int font_of(const FrameItems &look, size_t i, size_t partner);

// Where the raw text of a tag begins and ends, with white space at the edge of the sentence.
size_t begin_of_tag(const FrameItems &look, size_t i);
size_t end_of_tag(const FrameItems &look, size_t i);

}  // namespace klib::programs
