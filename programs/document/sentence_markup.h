// The anchors of one sentence, brought into an order in which they can be nested.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "programs/common/sentence_file.h"
#include "programs/document/anchor_file.h"

namespace klib::programs {

// A piece of a sentence; for an anchor or a font, what stands under its number.
struct Part {
  Piece piece;
  const Anchor *anchor = nullptr;
};

struct SentenceMarkup {
  std::unordered_map<int32_t, Anchor> anchors;   // of this sentence, by number
  std::unordered_map<int32_t, int32_t> closers;  // of pairs, by the number of the opening tag
  std::vector<Part> parts;
};

// Reads the anchors of a sentence and mends their order, with a report for each mend: second copies
// and closing tags without partner are left out, pairs that came out inverted are put around both
// their words, and tags of elements that reach out of the sentence come in the order of the page.
void read_markup(const SentenceFile &file, const std::vector<Piece> &pieces, AnchorFile &anchors,
                 SentenceMarkup &markup);

}  // namespace klib::programs
