// The blanks around points.
#pragma once

#include <string>
#include <vector>

#include "programs/carry/spans.h"

namespace klib::programs {

// A point that comes to a blank, or to an edge of the text, gets a blank on each side on which it
// has one in the source. Words are never split.
void put_blanks_around(const Side &source, const std::vector<Point> &points, std::u32string &text,
                       std::vector<Code> &codes);

}  // namespace klib::programs
