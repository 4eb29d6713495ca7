// Where single anchors go, and those whose partner is in another sentence.
#pragma once

#include "programs/carry/edges.h"
#include "programs/carry/evidence.h"
#include "programs/carry/spans.h"

namespace klib::programs {

// Sets the targets of all points.
void place_points(const Sides &sides, const Evidence &evidence, std::vector<Point> &points);

}  // namespace klib::programs
