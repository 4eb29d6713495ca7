// Pieces of a sentence that come back as they are, whatever the translation has for them.
#pragma once

#include "programs/carry/evidence.h"
#include "programs/carry/spans.h"

namespace klib::programs {

// Writes the source text of each kept element in the place of the words of the translation that
// belong to it, as one block, or beside a neighbour when there are none, and moves the codes with
// the text. Words that belong to other parts of the source are not lost.
void put_kept_back(const Side &source, const Evidence &evidence, const Markup &markup, Side &target,
                   std::vector<Code> &codes);

}  // namespace klib::programs
