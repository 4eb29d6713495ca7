// The forward-backward algorithm, scaled at each position so that no length of a line underflows.
//
//   state i              the partner of the position is unit i
//   state i, staying     the position has none, or one out of order, near the diagonal; i was the
//                        last partner before it, and the next jump begins there
//   jump from i to k     weight(k - i) / norm(i), and a small share to any k
//   start, end           jumps from -1 and to the number of states
//
// Only the nearest jumps have weights of their own; longer ones share one, so that a position costs
// no more than longest_jump times the states. States that are nearly impossible are passed over.
#include "programs/align/chain.h"

#include <algorithm>
#include <cstdlib>

#include "programs/align/constants.h"

namespace klib::programs::align {
namespace {

size_t at(int32_t index) { return static_cast<size_t>(index); }

float weight(const Jumps &jumps, int32_t distance) {
  if (std::abs(distance) > longest_jump) return jumps.far;
  return jumps.far + jumps.ahead[at(distance + longest_jump)];
}

// The states that are within longest_jump of one of them.
struct Range {
  int32_t first, last;
};
Range near(int32_t state, int32_t states) {
  return {std::max(0, state - longest_jump), std::min(states - 1, state + longest_jump)};
}

// 1 / norm of the jumps from -1 to states - 1: each to any state or to the end.
void find_norms(const Jumps &jumps, int32_t states, std::vector<float> &norms) {
  norms.resize(at(states + 1));
  for (int32_t from = -1; from < states; from++) {
    const Range range = near(from, states + 1);
    float sum = jumps.far * static_cast<float>(states + 1);
    for (int32_t to = range.first; to <= range.last; to++)
      sum += jumps.ahead[at(to - from + longest_jump)];
    norms[at(from + 1)] = 1 / sum;
  }
}

// Adds share * table[distance] to each sum whose distance from the state is in the table.
void spread(const std::array<float, 2 * longest_jump + 1> &table, int32_t state, float share,
            int32_t states, float *sums) {
  const Range range = near(state, states);
  const float *const weights = table.data() + at(range.first - state + longest_jump);
  float *const begin = sums + range.first;
  const int32_t count = range.last - range.first + 1;
  for (int32_t i = 0; i < count; i++) begin[i] += share * weights[i];
}

// The sum in a fixed order that suits vectors.
float sum_of(const float *values, int32_t count) {
  constexpr int32_t lanes = 8;
  std::array<float, lanes> sums{};
  int32_t i = 0;
  for (; i + lanes <= count; i += lanes)
    for (int32_t lane = 0; lane < lanes; lane++) sums[at(lane)] += values[i + lane];
  for (int32_t lane = 0; i < count; lane++, i++) sums[at(lane)] += values[i];
  return ((sums[0] + sums[4]) + (sums[1] + sums[5])) + ((sums[2] + sums[6]) + (sums[3] + sums[7]));
}

// The sum of values[state] * table[distance] over the states whose distance is in the table.
float gather(const std::array<float, 2 * longest_jump + 1> &table, int32_t state, int32_t states,
             const float *values) {
  constexpr int32_t lanes = 8;
  const Range range = near(state, states);
  const float *const weights = table.data() + at(range.first - state + longest_jump);
  const float *const begin = values + range.first;
  const int32_t count = range.last - range.first + 1;
  std::array<float, lanes> sums{};
  int32_t i = 0;
  for (; i + lanes <= count; i += lanes)
    for (int32_t lane = 0; lane < lanes; lane++)
      sums[at(lane)] += begin[i + lane] * weights[i + lane];
  float sum =
      ((sums[0] + sums[4]) + (sums[1] + sums[5])) + ((sums[2] + sums[6]) + (sums[3] + sums[7]));
  for (; i < count; i++) sum += begin[i] * weights[i];
  return sum;
}

// How close to the diagonal each state is at a position; the result is the sum.
float find_diagonal(const Line &line, int32_t position, float *close) {
  const float here = (static_cast<float>(position) + 0.5F) / static_cast<float>(line.positions);
  for (int32_t i = 0; i < line.states; i++) {
    const float there = (static_cast<float>(i) + 0.5F) / static_cast<float>(line.states);
    const float away = diagonal_slope * (here - there);
    close[i] = 1 / (1 + away * away);
  }
  return sum_of(close, line.states);
}

void multiply(const float *first, const float *second, float factor, int32_t count,
              float *product) {
  for (int32_t i = 0; i < count; i++) product[i] = factor * first[i] * second[i];
}

// Fills scratch.reach: how likely it is to jump to each state from the position before, whose
// states are `likely`, which add up to 1.
void reach_next(const Jumps &jumps, const float *likely, int32_t states, ChainScratch &scratch) {
  float *const reach = scratch.reach.data(), *const weighted = scratch.next.data();
  const float *const norms = scratch.norms.data() + 1;
  multiply(likely, norms, 1 - any_jump_share, states, weighted);
  const float everywhere =
      any_jump_share / static_cast<float>(states) + jumps.far * sum_of(weighted, states);
  std::fill_n(reach, states, everywhere);
  for (int32_t i = 0; i < states; i++)
    if (likely[i] > negligible) spread(jumps.ahead, i, weighted[i], states, reach);
}

// How likely positions are whose partners are not in order: by state in scratch.strays, and
// together with those that have none in scratch.stay.
void find_strays(const Line &line, ChainScratch &scratch) {
  for (int32_t j = 0; j < line.positions; j++) {
    float *const strays = scratch.strays.data() + at(j) * at(line.states);
    const float *const likelihood = line.likelihood.data() + at(j) * at(line.states);
    const float norm = find_diagonal(line, j, strays);
    multiply(strays, likelihood, stray_share / norm, line.states, strays);
    scratch.stay[at(j)] = unlinked_share * line.alone[at(j)] + sum_of(strays, line.states);
  }
}

// Fills scratch.ahead and its like, scaled so that the states of a position add up to 1.
void go_forward(const Line &line, const Jumps &jumps, ChainScratch &scratch) {
  const int32_t states = line.states;
  // Before the first position, all states are as likely as each other, and the jump is from -1.
  std::fill_n(scratch.likely.data(), states, 1 / static_cast<float>(states));
  for (int32_t i = 0; i < states; i++)
    scratch.reach[at(i)] = any_jump_share / static_cast<float>(states) +
                           (1 - any_jump_share) * weight(jumps, i + 1) * scratch.norms[0];
  for (int32_t j = 0; j < line.positions; j++) {
    const size_t row = at(j) * at(states);
    const float *const before = scratch.likely.data() + row;
    float *const likely = scratch.likely.data() + row + at(states);
    float *const ahead = scratch.ahead.data() + row, *const staying = scratch.staying.data() + row;
    if (j > 0) reach_next(jumps, before, states, scratch);
    multiply(scratch.reach.data(), line.likelihood.data() + row, linked_share, states, ahead);
    for (int32_t i = 0; i < states; i++) {
      staying[i] = scratch.stay[at(j)] * before[i];
      likely[i] = ahead[i] + staying[i];
    }
    const float scale = 1 / sum_of(likely, states);
    for (int32_t i = 0; i < states; i++) {
      ahead[i] *= scale;
      staying[i] *= scale;
      likely[i] *= scale;
    }
  }
}

// The partners of a position; `back` holds how likely the rest of the line is.
void meet(const Line &line, int32_t position, ChainScratch &scratch, Partners &partners) {
  const int32_t states = line.states;
  const size_t row = at(position) * at(states);
  float *const linked = partners.linked.data() + row;
  multiply(scratch.staying.data() + row, scratch.back.data(), 1, states, scratch.next.data());
  const float staying = sum_of(scratch.next.data(), states);
  multiply(scratch.ahead.data() + row, scratch.back.data(), 1, states, linked);
  const float scale = 1 / (sum_of(linked, states) + staying);
  const float *const strays = scratch.strays.data() + row;
  const float stray_scale = staying * scale / scratch.stay[at(position)];
  for (int32_t i = 0; i < states; i++) linked[i] = linked[i] * scale + strays[i] * stray_scale;
  partners.unlinked[at(position)] = unlinked_share * line.alone[at(position)] * stray_scale;
}

// Counts the jumps from the likely states to the next ones, all of which are `total` together.
void count_jumps(const float *likely, int32_t states, float total, ChainScratch &scratch) {
  for (int32_t from = 0; from < states; from++) {
    if (likely[from] <= countable) continue;
    const float share = (1 - any_jump_share) * likely[from] * scratch.norms[at(from + 1)] / total;
    const Range range = near(from, states);
    const float *const next = scratch.next.data() + range.first;
    float *const jumped = scratch.jumped.data() + at(range.first - from + longest_jump);
    const int32_t count = range.last - range.first + 1;
    for (int32_t i = 0; i < count; i++) jumped[i] += share * next[i];
  }
}

// Brings `back` from a position to the one before it, and counts the jumps between the two.
void go_back(const Line &line, int32_t position, const Jumps &jumps, ChainScratch &scratch) {
  const int32_t states = line.states;
  const size_t row = at(position) * at(states);
  const float *const likely = scratch.likely.data() + row;  // at the position before
  float *const next = scratch.next.data(), *const reach = scratch.reach.data();
  multiply(line.likelihood.data() + row, scratch.back.data(), linked_share, states, next);
  const float sum = sum_of(next, states);
  const float any = sum * any_jump_share / static_cast<float>(states);
  for (int32_t from = 0; from < states; from++) {
    reach[from] = any + scratch.stay[at(position)] * scratch.back[at(from)];
    if (likely[from] <= negligible) continue;
    const float jumped = sum * jumps.far + gather(jumps.ahead, from, states, next);
    reach[from] += (1 - any_jump_share) * jumped * scratch.norms[at(from + 1)];
  }
  multiply(likely, reach, 1, states, scratch.back.data());
  count_jumps(likely, states, sum_of(scratch.back.data(), states), scratch);
  const float scale = 1 / sum_of(reach, states);
  for (int32_t i = 0; i < states; i++) scratch.back[at(i)] = reach[i] * scale;
}

}  // namespace

Jumps jumps_of(const JumpCounts &counts) {
  double sum = 0;
  for (const double count : counts) sum += count;
  Jumps jumps{};
  for (int32_t distance = -longest_jump; distance <= longest_jump; distance++) {
    // As usual: to the next unit, rarely to the same one or far away.
    const double away = std::abs(distance - 1);
    const double usual = distance == 1 ? 1 : distance == 0 ? 0.1 : 0.5 / (1 + away * away);
    jumps.ahead[at(distance + longest_jump)] = static_cast<float>(
        (counts[at(distance + longest_jump)] + jump_weight * usual) / (sum + jump_weight));
  }
  jumps.far = *std::min_element(jumps.ahead.begin(), jumps.ahead.end());
  for (float &value : jumps.ahead) value -= jumps.far;
  std::reverse_copy(jumps.ahead.begin(), jumps.ahead.end(), jumps.back.begin());
  return jumps;
}

void find_partners_on_diagonal(const Line &line, Partners &partners) {
  const size_t states = at(line.states), positions = at(line.positions);
  partners.linked.resize(states * positions);
  partners.unlinked.resize(positions);
  for (int32_t j = 0; j < line.positions; j++) {
    float *const linked = partners.linked.data() + at(j) * states;
    const float *const likelihood = line.likelihood.data() + at(j) * states;
    const float norm = find_diagonal(line, j, linked);
    multiply(linked, likelihood, (1 - unlinked_share) / norm, line.states, linked);
    const float unlinked = unlinked_share * line.alone[at(j)];
    const float scale = 1 / (sum_of(linked, line.states) + unlinked);
    for (size_t i = 0; i < states; i++) linked[i] *= scale;
    partners.unlinked[at(j)] = unlinked * scale;
  }
}

void find_partners_in_chain(const Line &line, const Jumps &jumps, ChainScratch &scratch,
                            Partners &partners, JumpCounts &counts) {
  const size_t cells = at(line.states) * at(line.positions);
  for (std::vector<float> *part :
       {&scratch.ahead, &scratch.staying, &scratch.strays, &partners.linked})
    part->resize(cells);
  scratch.stay.resize(at(line.positions));
  scratch.likely.resize(cells + at(line.states));
  for (std::vector<float> *part : {&scratch.reach, &scratch.back, &scratch.next})
    part->resize(at(line.states));
  partners.unlinked.resize(at(line.positions));
  scratch.jumped.fill(0);
  find_norms(jumps, line.states, scratch.norms);
  find_strays(line, scratch);
  go_forward(line, jumps, scratch);
  for (int32_t i = 0; i < line.states; i++)
    scratch.back[at(i)] =
        any_jump_share / static_cast<float>(line.states) +
        (1 - any_jump_share) * weight(jumps, line.states - i) * scratch.norms[at(i + 1)];
  for (int32_t j = line.positions - 1; j >= 0; j--) {
    meet(line, j, scratch, partners);
    if (j > 0) go_back(line, j, jumps, scratch);
  }
  for (size_t i = 0; i < counts.size(); i++)
    counts[i] += scratch.jumped[i] * (jumps.far + jumps.ahead[i]);
}

}  // namespace klib::programs::align
