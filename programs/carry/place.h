// Placing: the markup of a sentence goes where a person would put it in the translation.
// docs/pipeline.md has the rules.
#pragma once

#include <vector>

#include "programs/carry/evidence.h"
#include "programs/carry/projection.h"
#include "programs/carry/spans.h"

namespace klib::programs {

// Keeps its room from one sentence to the next.
struct Placement {
  Side source, target;  // the caller fills their texts and words
  Markup markup;
  Evidence evidence;
  std::vector<Code> codes;  // the result: codes between the characters of target.text

  // What is reported about the sentence.
  int64_t dropped_fonts = 0;
  int64_t fallback_anchors = 0;  // none of whose own words is aligned
};

// Places the markup, which has been read, along the alignment. The translation must have a word.
void place_markup(const std::vector<Link> &alignment, Placement &placement);

}  // namespace klib::programs
