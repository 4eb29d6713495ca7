// The anchors of one sentence, brought into an order in which they can be nested.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "programs/common/sentence.h"
#include "programs/document/anchor_file.h"

namespace klib::programs {

struct SentenceMarkup {
  std::unordered_map<int32_t, Anchor> anchors;   // of this sentence, fonts too, by number
  std::unordered_map<int32_t, int32_t> closers;  // of pairs, by the number of the opening tag
};

// Reads the anchors of a sentence and repairs the order of its codes, with a report for each
// repair: second copies and closing tags without partner are left out, pairs that came out inverted
// are put around both their words, and tags of elements that reach out of the sentence come in the
// order of the document. `file` says where.
void repair_markup(const SentenceFile &file, AnchorFile &anchors, Sentence &sentence,
                   SentenceMarkup &markup);

}  // namespace klib::programs
