// Where spans go: the words of the translation that are theirs.
#pragma once

#include "programs/carry/edges.h"
#include "programs/carry/evidence.h"
#include "programs/carry/spans.h"

namespace klib::programs {

struct Projection {
  const Sides &sides;
  const Evidence &evidence;
  const std::vector<Span> &spans;
  size_t work_left;  // beyond it only the words at the edges of a span are looked at
  std::vector<std::pair<uint32_t, int64_t>> inside{};  // room: words of the translation, weights
};

// Sets the target of a span, or drops it when it is a font and has none.
void project(Projection &projection, Span &span);

}  // namespace klib::programs
