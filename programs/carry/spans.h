// The markup of a sentence as spans around stretches of its text, and points between characters.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "programs/carry/side.h"
#include "programs/common/sentence.h"
#include "programs/document/anchor_kinds.h"

namespace klib::programs {

constexpr uint32_t no_span = UINT32_MAX;

// A font, or what is between two anchors that are a pair.
struct Span {
  Range source;           // no blanks at its edges; never empty
  int32_t number;         // of the font or the opening anchor
  int32_t closer;         // the closing anchor, or 0
  int group;              // of a font, else -1
  uint32_t parent;        // the innermost span around it, which comes before it, or no_span
  Range target{};         // where it goes
  bool dropped = false;   // a font that has no place
  bool fallback = false;  // none of its words is aligned
  bool kept = false;      // its text comes back as it is in the source

  bool is_font() const { return group >= 0; }
};

// An anchor by itself.
struct Point {
  // What is said of its span, the other half of which is in another sentence.
  enum Role { single, opens_out, closes_from };
  uint32_t source;
  int32_t number;
  Role role;
  uint32_t parent;  // the innermost span around it, or no_span
  uint32_t target = 0;
  bool fallback = false;  // it had to go to other words than its own
  // Of the tags of an element that has nothing but blanks in it, and of what is between them.
  enum { outside, begins_blank, inside_blank, ends_blank } blank = outside;
};

struct Markup {
  std::vector<Span> spans;    // in the order of their beginnings
  std::vector<Point> points;  // in their order
  int64_t lost_fonts = 0;     // fonts without any text

  std::unordered_map<int32_t, uint32_t> pairs;  // room for read_markup(): spans by opening anchor
  std::vector<uint32_t> open;
};

// Reads the markup of a sentence, whose text is that of `source`. Without `kinds` nothing is known
// about its anchors, and each is a point. A font code that names no font, or an anchor that names
// one, ends the job (fail()); `file` says where.
void read_markup(const SentenceFile &file, const Sentence &sentence, const Side &source,
                 AnchorKinds *kinds, Markup &markup);

}  // namespace klib::programs
