// From what the two directions found to the links of a line.
#pragma once

#include <vector>

#include "programs/align/align.h"
#include "programs/align/chain.h"
#include "programs/align/lexicon.h"

namespace klib::programs::align {

// Writes to linked[source][target] how likely both directions find each link: the product.
void agree(const Line &forward, const Partners &ahead, const Partners &back, float *linked);

// Adds the links of the words of a stretch, unsorted, some of them more than once.
void join_links(const Model &model, const Stretch &stretch, const Partners &ahead,
                const Partners &back, std::vector<WordLink> &links);

}  // namespace klib::programs::align
