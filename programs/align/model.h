// What has been learned about a pair of languages, and the text that it is learned from.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "programs/align/vocabulary.h"

namespace klib::programs::align {

// How often the partner of the next unit is that many units further on; the first and last entry
// take the longer jumps.
constexpr int longest_jump = 50;
using JumpCounts = std::array<double, 2 * longest_jump + 1>;

struct PairCount {
  int32_t target;
  float count;
};

// Of one language: its types, and how often each had no partner.
struct LanguageModel {
  Vocabulary vocabulary;
  std::vector<float> unlinked;  // by type; shorter than the vocabulary when the last are new
};

// Counts are fractions: how likely each link was, summed up.
struct Model {
  LanguageModel source, target;
  std::vector<size_t> pair_ends;  // of each source type, in `pairs`; the last may be missing
  std::vector<PairCount> pairs;   // by source type, then by target type
  JumpCounts forward_jumps{}, backward_jumps{};  // forward: along the source, for a target unit
};

// A unit in a corpus.
struct Occurrence {
  int32_t type;
  int32_t word;  // of its line
};

// One side of the lines, in order.
struct Text {
  std::vector<Occurrence> units;
  std::vector<size_t> ends;  // of each line, in `units`
};

struct Corpus {
  Text source, target;
};

}  // namespace klib::programs::align
