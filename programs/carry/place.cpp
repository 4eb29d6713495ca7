#include "programs/carry/place.h"

#include <algorithm>

#include "programs/carry/blanks.h"
#include "programs/carry/keep.h"
#include "programs/carry/order.h"
#include "programs/carry/points.h"

namespace klib::programs {

void place_markup(const std::vector<Link> &alignment, Placement &placement) {
  Markup &markup = placement.markup;
  const Sides sides{placement.source, placement.target};
  survey(placement.target);
  weigh_evidence(placement.source, placement.target, alignment, placement.evidence);
  constexpr size_t rounds = 64;  // of nesting that are looked at as a whole
  Projection projection{sides, placement.evidence, markup.spans,
                        rounds * (alignment.size() + placement.source.word_count() + 64)};
  for (Span &span : markup.spans) project(projection, span);
  place_points(sides, placement.evidence, markup.points);
  settle_order(placement.source, placement.target, markup);
  write_codes(markup, placement.codes);
  if (std::ranges::any_of(markup.spans, &Span::kept))
    put_kept_back(placement.source, placement.evidence, markup, placement.target, placement.codes);
  if (!markup.points.empty())
    put_blanks_around(placement.source, markup.points, placement.target.text, placement.codes);
  placement.dropped_fonts = markup.lost_fonts;
  placement.fallback_anchors = 0;
  for (const Span &span : markup.spans) {
    if (span.is_font())
      placement.dropped_fonts += span.dropped;
    else if (span.fallback)
      placement.fallback_anchors += 2;
  }
  for (const Point &point : markup.points) placement.fallback_anchors += point.fallback;
}

}  // namespace klib::programs
