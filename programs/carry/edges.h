// The places of tags inside and around words.
#pragma once

#include "programs/carry/evidence.h"
#include "programs/carry/side.h"

namespace klib::programs {

struct Sides {
  const Side &source, &target;
};

// Where a span begins that begins at `begin` in the source and in `word` in the translation.
uint32_t place_begin(const Sides &sides, const Evidence &evidence, Range span, uint32_t word);

// Where it ends, when it ends in `word`.
uint32_t place_end(const Sides &sides, const Evidence &evidence, Range span, uint32_t word);

// Lets a span that ends with a closing bracket or quotation mark, and has the opening one, do
// so in the translation; the same for its beginning.
Range keep_pairs_whole(const Sides &sides, Range span, Range placed);

// The place in the word of the translation that is like the place `at` inside a word of the source;
// no_position when there is none.
uint32_t place_inside(const Sides &sides, uint32_t at, uint32_t word);

}  // namespace klib::programs
