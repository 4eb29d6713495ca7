// The order of partners: a hidden Markov model over the units of one line.
#pragma once

#include <vector>

#include "programs/align/model.h"

namespace klib::programs::align {

// How likely jumps are, up to a factor. All jumps have the weight `far`; those in the table have
// what `ahead` adds to it. `back` is the table in the other order.
struct Jumps {
  std::array<float, 2 * longest_jump + 1> ahead, back;
  float far;
};

// The weights that the counts lead to; with few of them, what is usual.
Jumps jumps_of(const JumpCounts &counts);

// A line in one direction: each position (a unit of one side) has a state as its partner (a unit
// of the other side), or none.
struct Line {
  int32_t states, positions;
  std::vector<float> likelihood;  // of the unit at a position, given its partner: [position][state]
  std::vector<float> alone;       // of the unit at a position, given that it has no partner
};

// The result: how likely each partner is, and how likely that there is none.
struct Partners {
  std::vector<float> linked;    // [position][state]
  std::vector<float> unlinked;  // [position]
};

// Memory that is reused for the next line.
struct ChainScratch {
  std::vector<float> ahead, staying, likely, norms, reach, back, next, strays, stay;
  std::array<float, 2 * longest_jump + 1> jumped;
};

// Partners by the diagonal alone (IBM model 1 with a prior on positions).
void find_partners_on_diagonal(const Line &line, Partners &partners);

// Partners by the order of their neighbours' partners; adds the jumps to `counts`.
void find_partners_in_chain(const Line &line, const Jumps &jumps, ChainScratch &scratch,
                            Partners &partners, JumpCounts &counts);

}  // namespace klib::programs::align
