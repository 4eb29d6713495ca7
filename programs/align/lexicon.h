// Which types are translated by which: counts, and what they say about the units of a line.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "programs/align/chain.h"
#include "programs/align/model.h"

namespace klib::programs::align {

// What is aligned as one: a line of the corpus, or a piece of a very long one.
struct Stretch {
  int64_t line;
  std::span<const Occurrence> source, target;
  // Where its pairs of units, source by source, and its units begin in Found.
  size_t pairs, sources, targets;
};

// What the last round has found.
struct Found {
  std::vector<int32_t> candidates;                      // of each pair of units
  std::vector<float> linked;                            // how likely each pair of units is linked
  std::vector<float> unlinked_source, unlinked_target;  // how likely each unit has no partner
};

// Sums of how likely the links of a type and of a stem are, of one language.
struct LanguageCounts {
  std::vector<float> types, stems, unlinked;
  double all_unlinked = 0;
};

// Every pair of types that are in one stretch together is a candidate; those of a source type are
// side by side, in the order of the text.
struct Candidate {
  float count;     // the sum of how likely its links are
  float likeness;  // of the spellings, 0 to 1
  int32_t target;
  int32_t stems;  // the pair of its stems
};

// What likelihoods ask about a candidate, side by side for the cache.
struct CandidateEvidence {
  float direct;  // its count, and what its spelling is worth
  float stems;   // the count of the pair of its stems
};

struct Counts {
  std::vector<float> stems;  // of the pairs of stems
  LanguageCounts source, target;
};

struct Lexicon {
  std::vector<Candidate> candidates;
  std::vector<CandidateEvidence> evidence;  // of the candidates
  std::vector<size_t> ends;                 // of each source type
  std::vector<float> base_counts;           // of the candidates, from earlier text; none: all 0
  Counts base, now;                         // now: base and what was found
};

// Collects the candidates of the stretches. Found is given room; nothing is linked yet.
void collect_candidates(const Model &model, std::span<const Stretch> stretches, Lexicon &lexicon,
                        Found &found);

// Counts what was found.
void count_links(const Model &model, std::span<const Stretch> stretches, const Found &found,
                 Lexicon &lexicon);

// Adds the counts to those of the model, without what is negligible.
void keep_counts(const Lexicon &lexicon, Model &model);

// What a unit contributes to the likelihood of all its partners.
struct Scales {
  float all;   // 1 / (its count and the weights)
  float stem;  // stem_weight / (the count of its stem and the weight)
  float part;  // its share in the occurrences of its stem
};

// Memory that is reused for the next stretch.
struct LikelihoodScratch {
  std::vector<float> own_source, own_target;
  std::vector<Scales> source, target;
};

// How likely the units of a stretch are by the counts of everything but themselves. Forward: a
// position is a target unit, backward: a source unit.
void find_likelihoods(const Model &model, const Lexicon &lexicon, const Stretch &stretch,
                      const Found &found, LikelihoodScratch &scratch, Line &forward,
                      Line &backward);

}  // namespace klib::programs::align
