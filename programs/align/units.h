// Lines of text as the aligner sees them.
//
// Pairs count words between blanks. The models align units, which are smaller: letters and digits,
// without the punctuation at their edges, on either side of an apostrophe or a hyphen; each run of
// one punctuation mark; and in scripts without blanks the words that a dictionary finds.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "programs/align/vocabulary.h"

namespace klib::programs::align {

struct Unit {
  int32_t type;         // in the vocabulary
  int32_t word;         // the word between blanks that it is part of, from 0
  int32_t begin, end;   // bytes of the line
  bool without_blanks;  // its script has no blanks between words
};

// A line of a source as read_units() takes it. A sentence of kextract may have a vertical tab in a
// word; in a translation it parts words. Here it becomes a control of the same length.
std::string source_line(std::string_view line);

// Reads the units of a line of UTF-8. Every word has at least one; they are in order.
void read_units(std::string_view line, Vocabulary &vocabulary, std::vector<Unit> &units);

}  // namespace klib::programs::align
