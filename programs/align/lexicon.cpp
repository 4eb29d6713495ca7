// The likelihood of a unit of type f, given that its partner is of type e (and likewise the other
// way round, with the same counts):
//
//   count(e, f) + spelling_weight * likeness(e, f) + stem_weight * stem(f | e) + any_weight / types
//   ---------------------------------------------------------------------------------------------
//          count(e) + stem_weight + any_weight + spelling_weight * usual_likeness
//
//   stem(f | e) = share of f in the occurrences of its stem *
//                 (count(stems of e, f) + any_stem_weight / types) / (count(stem of e) +
//                 any_stem_weight)
//
// The counts leave out what the unit itself has contributed in the round before, or words that
// occur once would confirm whatever they were linked with first.
#include "programs/align/lexicon.h"

#include <algorithm>
#include <iterator>

#include "programs/align/constants.h"
#include "programs/align/spelling.h"

namespace klib::programs::align {
namespace {

constexpr float usual_likeness = 0.3F;
constexpr float kept_count = 0.01F;  // a pair of types with a smaller count is left out of a model

size_t at(int32_t index) { return static_cast<size_t>(index); }

int32_t stem_of(const LanguageModel &language, int32_t type) {
  return language.vocabulary.types[at(type)].stem;
}

// For each type or stem of the source the stretches or types that it is in, side by side.
struct Groups {
  std::vector<size_t> ends;
  std::vector<int32_t> members;
};

// `keys` calls its argument with each key and member, in ascending order of members.
template <typename Keys>
Groups group(size_t count, const Keys &keys) {
  Groups groups;
  groups.ends.assign(count + 1, 0);
  keys([&](int32_t key, int32_t) { groups.ends[at(key) + 1]++; });
  for (size_t i = 0; i < count; i++) groups.ends[i + 1] += groups.ends[i];
  groups.members.resize(groups.ends[count]);
  keys([&](int32_t key, int32_t member) { groups.members[groups.ends[at(key)]++] = member; });
  groups.ends.pop_back();
  return groups;
}

std::span<const int32_t> members(const Groups &groups, size_t key) {
  const size_t begin = key == 0 ? 0 : groups.ends[key - 1];
  return {groups.members.data() + begin, groups.ends[key] - begin};
}

std::span<const PairCount> known_pairs(const Model &model, size_t source) {
  if (source >= model.pair_ends.size()) return {};
  const size_t begin = source == 0 ? 0 : model.pair_ends[source - 1];
  return {model.pairs.data() + begin, model.pair_ends[source] - begin};
}

// Numbers the candidates of one source type after the other. `number_of` is, of each target type,
// its last candidate.
void number_candidates(const Model &model, std::span<const Stretch> stretches, Lexicon &lexicon,
                       Found &found) {
  const Groups stretches_of = group(model.source.vocabulary.types.size(), [&](const auto &add) {
    for (size_t k = 0; k < stretches.size(); k++)
      for (size_t i = 0; i < stretches[k].source.size(); i++)
        add(stretches[k].source[i].type, static_cast<int32_t>(k));
  });
  std::vector<int32_t> number_of(model.target.vocabulary.types.size(), -1);
  lexicon.ends.reserve(model.source.vocabulary.types.size());
  for (size_t type = 0; type < model.source.vocabulary.types.size(); type++) {
    const auto first = static_cast<int32_t>(lexicon.candidates.size());
    int32_t before = -1;
    for (const int32_t k : members(stretches_of, type)) {
      if (k == before) continue;
      before = k;
      const Stretch &stretch = stretches[at(k)];
      for (const Occurrence &unit : stretch.target) {
        int32_t &number = number_of[at(unit.type)];
        if (number >= first) continue;
        number = static_cast<int32_t>(lexicon.candidates.size());
        lexicon.candidates.push_back({0, 0, unit.type, 0});
      }
      for (size_t i = 0; i < stretch.source.size(); i++) {
        if (at(stretch.source[i].type) != type) continue;
        int32_t *const row = found.candidates.data() + stretch.pairs + i * stretch.target.size();
        for (size_t j = 0; j < stretch.target.size(); j++)
          row[j] = number_of[at(stretch.target[j].type)];
      }
    }
    lexicon.ends.push_back(lexicon.candidates.size());
  }
}

std::span<Candidate> candidates_of(Lexicon &lexicon, size_t source) {
  const size_t begin = source == 0 ? 0 : lexicon.ends[source - 1];
  return {lexicon.candidates.data() + begin, lexicon.ends[source] - begin};
}

void compare_spellings(const Model &model, Lexicon &lexicon) {
  Spelling spelling;
  for (size_t type = 0; type < lexicon.ends.size(); type++) {
    prepare(model.source.vocabulary.types[type], spelling);
    for (Candidate &candidate : candidates_of(lexicon, type))
      candidate.likeness =
          similarity(spelling, model.target.vocabulary.types[at(candidate.target)]);
  }
}

// Numbers the pairs of stems that candidates have, and adds up what the model knows of each.
void number_stems(const Model &model, Lexicon &lexicon) {
  const Vocabulary &source = model.source.vocabulary;
  const Groups types_of = group(source.stem_occurrences.size(), [&](const auto &add) {
    for (size_t type = 0; type < source.types.size(); type++)
      add(source.types[type].stem, static_cast<int32_t>(type));
  });
  std::vector<int32_t> number_of(model.target.vocabulary.stem_occurrences.size(), -1);
  std::vector<float> &base = lexicon.base.stems;
  for (size_t stem = 0; stem < source.stem_occurrences.size(); stem++) {
    const auto first = static_cast<int32_t>(base.size());
    for (const int32_t type : members(types_of, stem))
      for (Candidate &candidate : candidates_of(lexicon, at(type))) {
        int32_t &number = number_of[at(stem_of(model.target, candidate.target))];
        if (number < first) {
          number = static_cast<int32_t>(base.size());
          base.push_back(0);
        }
        candidate.stems = number;
      }
    for (const int32_t type : members(types_of, stem))
      for (const PairCount &pair : known_pairs(model, at(type))) {
        const int32_t number = number_of[at(stem_of(model.target, pair.target))];
        if (number >= first) base[at(number)] += pair.count;
      }
  }
}

void make_room(const LanguageModel &model, LanguageCounts &counts) {
  counts.types.assign(model.vocabulary.types.size(), 0);
  counts.stems.assign(model.vocabulary.stem_occurrences.size(), 0);
  counts.unlinked = model.unlinked;
  counts.unlinked.resize(model.vocabulary.types.size(), 0);
  for (const float count : counts.unlinked) counts.all_unlinked += count;
}

void add_pair(const Model &model, size_t source, int32_t target, float count, Counts &counts) {
  counts.source.types[source] += count;
  counts.source.stems[at(stem_of(model.source, static_cast<int32_t>(source)))] += count;
  counts.target.types[at(target)] += count;
  counts.target.stems[at(stem_of(model.target, target))] += count;
}

// What the model knows of the candidates, and of all pairs together.
void take_counts(const Model &model, Lexicon &lexicon) {
  make_room(model.source, lexicon.base.source);
  make_room(model.target, lexicon.base.target);
  if (model.pairs.empty()) return;
  lexicon.base_counts.assign(lexicon.candidates.size(), 0);
  std::vector<float> known(model.target.vocabulary.types.size(), 0);
  for (size_t type = 0; type < lexicon.ends.size(); type++) {
    for (const PairCount &pair : known_pairs(model, type)) {
      known[at(pair.target)] = pair.count;
      add_pair(model, type, pair.target, pair.count, lexicon.base);
    }
    const size_t begin = type == 0 ? 0 : lexicon.ends[type - 1];
    for (size_t i = begin; i < lexicon.ends[type]; i++)
      lexicon.candidates[i].count = lexicon.base_counts[i] =
          known[at(lexicon.candidates[i].target)];
    for (const PairCount &pair : known_pairs(model, type)) known[at(pair.target)] = 0;
  }
}

void find_evidence(Lexicon &lexicon) {
  lexicon.evidence.resize(lexicon.candidates.size());
  for (size_t i = 0; i < lexicon.candidates.size(); i++) {
    const Candidate &candidate = lexicon.candidates[i];
    lexicon.evidence[i] = {candidate.count + spelling_weight * candidate.likeness,
                           lexicon.now.stems[at(candidate.stems)]};
  }
}

void count_unlinked(std::span<const Occurrence> units, const float *unlinked,
                    LanguageCounts &counts) {
  for (size_t i = 0; i < units.size(); i++) {
    counts.unlinked[at(units[i].type)] += unlinked[i];
    counts.all_unlinked += unlinked[i];
  }
}

// What the units of a stretch have contributed to the counts of their types.
void find_own(const Stretch &stretch, const float *linked, LikelihoodScratch &own) {
  own.own_source.assign(stretch.source.size(), 0);
  own.own_target.assign(stretch.target.size(), 0);
  for (size_t i = 0; i < stretch.source.size(); i++)
    for (size_t j = 0; j < stretch.target.size(); j++) {
      const float share = linked[i * stretch.target.size() + j];
      own.own_source[i] += share;
      own.own_target[j] += share;
    }
}

float without(float count, float own) { return std::max(count - own, 0.0F); }

void find_scales(const LanguageModel &language, const LanguageCounts &counts,
                 std::span<const Occurrence> units, const std::vector<float> &own,
                 std::vector<Scales> &scales) {
  const float weight = stem_weight + any_weight + spelling_weight * usual_likeness;
  scales.resize(units.size());
  for (size_t i = 0; i < units.size(); i++) {
    const UnitType &type = language.vocabulary.types[at(units[i].type)];
    scales[i] = {1 / (without(counts.types[at(units[i].type)], own[i]) + weight),
                 stem_weight / (without(counts.stems[at(type.stem)], own[i]) + any_stem_weight),
                 type.occurrences / language.vocabulary.stem_occurrences[at(type.stem)]};
  }
}

void find_alone(const LanguageModel &language, const LanguageCounts &counts,
                std::span<const Occurrence> units, const float *own, Line &line) {
  const auto occurrences = static_cast<float>(language.vocabulary.all_occurrences);
  const float norm = 1 / (static_cast<float>(counts.all_unlinked) + unlinked_weight);
  line.alone.resize(units.size());
  for (size_t i = 0; i < units.size(); i++) {
    const size_t type = at(units[i].type);
    const float share = language.vocabulary.types[type].occurrences / occurrences;
    line.alone[i] = (without(counts.unlinked[type], own[i]) + unlinked_weight * share) * norm;
  }
}

}  // namespace

void collect_candidates(const Model &model, std::span<const Stretch> stretches, Lexicon &lexicon,
                        Found &found) {
  size_t pairs = 0, sources = 0, targets = 0;
  for (const Stretch &stretch : stretches) {
    pairs += stretch.source.size() * stretch.target.size();
    sources += stretch.source.size();
    targets += stretch.target.size();
  }
  found.candidates.resize(pairs);
  found.linked.assign(pairs, 0);
  found.unlinked_source.assign(sources, 0);
  found.unlinked_target.assign(targets, 0);
  number_candidates(model, stretches, lexicon, found);
  compare_spellings(model, lexicon);
  number_stems(model, lexicon);
  take_counts(model, lexicon);
  lexicon.now = lexicon.base;
  find_evidence(lexicon);
}

void count_links(const Model &model, std::span<const Stretch> stretches, const Found &found,
                 Lexicon &lexicon) {
  for (size_t i = 0; i < lexicon.candidates.size(); i++)
    lexicon.candidates[i].count = lexicon.base_counts.empty() ? 0 : lexicon.base_counts[i];
  for (size_t i = 0; i < found.linked.size(); i++)
    lexicon.candidates[at(found.candidates[i])].count += found.linked[i];
  Counts &now = lexicon.now;
  now = lexicon.base;
  for (size_t type = 0; type < lexicon.ends.size(); type++) {
    size_t i = type == 0 ? 0 : lexicon.ends[type - 1];
    for (; i < lexicon.ends[type]; i++) {
      const Candidate &candidate = lexicon.candidates[i];
      const float count =
          candidate.count - (lexicon.base_counts.empty() ? 0 : lexicon.base_counts[i]);
      now.stems[at(candidate.stems)] += count;
      add_pair(model, type, candidate.target, count, now);
    }
  }
  find_evidence(lexicon);
  for (const Stretch &stretch : stretches) {
    count_unlinked(stretch.source, found.unlinked_source.data() + stretch.sources, now.source);
    count_unlinked(stretch.target, found.unlinked_target.data() + stretch.targets, now.target);
  }
}

void keep_counts(const Lexicon &lexicon, Model &model) {
  std::vector<PairCount> pairs, row;
  std::vector<size_t> pair_ends;
  for (size_t type = 0; type < lexicon.ends.size(); type++) {
    row.clear();
    const std::span<const PairCount> known = known_pairs(model, type);
    // What is no candidate stays as it is, so the row is the candidates and the rest of the known.
    size_t i = type == 0 ? 0 : lexicon.ends[type - 1];
    for (; i < lexicon.ends[type]; i++)
      row.push_back({lexicon.candidates[i].target, lexicon.candidates[i].count});
    row.insert(row.end(), known.begin(), known.end());
    std::stable_sort(row.begin(), row.end(),
                     [](const PairCount &a, const PairCount &b) { return a.target < b.target; });
    row.erase(
        std::unique(row.begin(), row.end(),
                    [](const PairCount &a, const PairCount &b) { return a.target == b.target; }),
        row.end());
    std::copy_if(row.begin(), row.end(), std::back_inserter(pairs),
                 [](const PairCount &pair) { return pair.count >= kept_count; });
    pair_ends.push_back(pairs.size());
  }
  model.pairs = std::move(pairs);
  model.pair_ends = std::move(pair_ends);
  model.source.unlinked = lexicon.now.source.unlinked;
  model.target.unlinked = lexicon.now.target.unlinked;
}

void find_likelihoods(const Model &model, const Lexicon &lexicon, const Stretch &stretch,
                      const Found &found, LikelihoodScratch &scratch, Line &forward,
                      Line &backward) {
  const size_t sources = stretch.source.size(), targets = stretch.target.size();
  const float *const linked = found.linked.data() + stretch.pairs;
  const int32_t *const numbers = found.candidates.data() + stretch.pairs;
  find_own(stretch, linked, scratch);
  find_scales(model.source, lexicon.now.source, stretch.source, scratch.own_source, scratch.source);
  find_scales(model.target, lexicon.now.target, stretch.target, scratch.own_target, scratch.target);
  find_alone(model.target, lexicon.now.target, stretch.target,
             found.unlinked_target.data() + stretch.targets, forward);
  find_alone(model.source, lexicon.now.source, stretch.source,
             found.unlinked_source.data() + stretch.sources, backward);
  forward.states = backward.positions = static_cast<int32_t>(sources);
  backward.states = forward.positions = static_cast<int32_t>(targets);
  forward.likelihood.resize(sources * targets);
  backward.likelihood.resize(sources * targets);
  const float any_source = 1 / static_cast<float>(model.source.vocabulary.types.size());
  const float any_target = 1 / static_cast<float>(model.target.vocabulary.types.size());
  for (size_t i = 0; i < sources; i++)
    for (size_t j = 0; j < targets; j++) {
      const size_t cell = i * targets + j;
      const CandidateEvidence &evidence = lexicon.evidence[at(numbers[cell])];
      const Scales &source = scratch.source[i], &target = scratch.target[j];
      const float own = linked[cell];
      const float stems = without(evidence.stems, own);
      const float both = without(evidence.direct, own);
      forward.likelihood[j * sources + i] =
          source.all * (both + any_weight * any_target +
                        source.stem * target.part * (stems + any_stem_weight * any_target));
      backward.likelihood[cell] =
          target.all * (both + any_weight * any_source +
                        target.stem * source.part * (stems + any_stem_weight * any_source));
    }
}

}  // namespace klib::programs::align
