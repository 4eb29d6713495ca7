// The word alignment of a sentence and its translation.
#pragma once

#include <cstdint>
#include <vector>

#include "programs/common/line_reader.h"

namespace klib::programs {

// Word `source` of the sentence is translated by word `target` of the translation, both from 0.
struct Link {
  int32_t target, source;
  auto operator<=>(const Link &) const = default;
};

// Reads the current line of `file`, pairs "source-target" separated by white space, into `links`,
// sorted and each once. Pairs that are not of this form or name a word that does not exist are
// reported and left out; the result is their number.
int64_t read_links(const LineReader &file, int32_t source_words, int32_t target_words,
                   std::vector<Link> &links);

// Links word k with word k, as far as both sides have one.
void link_in_order(int32_t source_words, int32_t target_words, std::vector<Link> &links);

}  // namespace klib::programs
