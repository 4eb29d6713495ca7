// The training, and the result of its last round.
//
// In each round the units of every line get partners in both directions by what the counts say, and
// the links on which the directions agree are the counts of the next round. The first rounds look
// at the diagonal, the others at the order of partners. Text with more pairs of units than fit in
// memory is taken in parts, each of which starts with what was learned before.
#include "programs/align/align.h"

#include <algorithm>

#include "programs/align/chain.h"
#include "programs/align/constants.h"
#include "programs/align/join.h"
#include "programs/align/lexicon.h"
#include "programs/align/parallel.h"

namespace klib::programs::align {
namespace {

constexpr size_t pairs_at_once = 12'000'000;  // 8 bytes each, and the candidates
constexpr size_t pairs_of_line = 4'000'000;   // a line with more is cut
constexpr size_t pairs_of_piece = 200 * 200;  // ... into pieces with about as many
constexpr size_t stretches_of_part = 16;      // that a thread takes at a time

// One of `parts` equal parts of the units.
std::span<const Occurrence> part_of(std::span<const Occurrence> units, size_t part, size_t parts) {
  const size_t begin = units.size() * part / parts, end = units.size() * (part + 1) / parts;
  return units.subspan(begin, end - begin);
}

std::span<const Occurrence> units_of(const Text &text, size_t line) {
  const size_t begin = line == 0 ? 0 : text.ends[line - 1];
  return {text.units.data() + begin, text.ends[line] - begin};
}

size_t pairs_of(const Stretch &stretch) { return stretch.source.size() * stretch.target.size(); }

// The lines with units on both sides; very long ones in pieces that follow the diagonal.
std::vector<Stretch> divide(const Corpus &corpus, const AlignmentJob &job) {
  std::vector<Stretch> stretches;
  for (size_t line = 0; line < corpus.source.ends.size(); line++) {
    const std::span<const Occurrence> source = units_of(corpus.source, line);
    const std::span<const Occurrence> target = units_of(corpus.target, line);
    if (source.empty() || target.empty()) continue;
    size_t pieces = 1;
    if (target.size() > pairs_of_line / source.size()) {
      while (source.size() / pieces * (target.size() / pieces) > pairs_of_piece) pieces++;
      job.cut(static_cast<int64_t>(line));
    }
    for (size_t piece = 0; piece < pieces; piece++) {
      const Stretch stretch = {static_cast<int64_t>(line),
                               part_of(source, piece, pieces),
                               part_of(target, piece, pieces),
                               0,
                               0,
                               0};
      if (pairs_of(stretch) > 0) stretches.push_back(stretch);
    }
  }
  return stretches;
}

// The number of stretches at the beginning that are taken at once: all if they fit, otherwise about
// equal parts. Their places in Found are set.
size_t take_part(std::span<Stretch> stretches) {
  size_t all = 0;
  for (const Stretch &stretch : stretches) all += pairs_of(stretch);
  const size_t parts = std::max<size_t>(1, (all + pairs_at_once - 1) / pairs_at_once);
  size_t count = 0, pairs = 0, sources = 0, targets = 0;
  for (; count < stretches.size() && pairs < (all + parts - 1) / parts; count++) {
    Stretch &stretch = stretches[count];
    stretch.pairs = pairs;
    stretch.sources = sources;
    stretch.targets = targets;
    pairs += pairs_of(stretch);
    sources += stretch.source.size();
    targets += stretch.target.size();
  }
  return count;
}

// What a thread works with.
struct Worker {
  LikelihoodScratch likelihood;
  ChainScratch chain;
  Line forward, backward;
  Partners ahead, back;
};

// What one part of a round adds to the jumps. Parts are summed up in order.
struct PartJumps {
  JumpCounts forward, backward;
};

// How a round looks for partners.
struct Steps {
  bool in_chain;
  Jumps forward, backward;
};

struct Training {
  const Model &model;
  std::span<const Stretch> stretches;
  Lexicon lexicon;
  Found found;
  JumpCounts forward_jumps, backward_jumps;  // of the last round and of the model
  std::vector<Worker> workers;
};

// Finds the partners of the units of a stretch in both directions.
void find_partners(const Training &training, const Stretch &stretch, const Steps &steps,
                   Worker &worker, PartJumps &jumps) {
  find_likelihoods(training.model, training.lexicon, stretch, training.found, worker.likelihood,
                   worker.forward, worker.backward);
  if (steps.in_chain) {
    find_partners_in_chain(worker.forward, steps.forward, worker.chain, worker.ahead,
                           jumps.forward);
    find_partners_in_chain(worker.backward, steps.backward, worker.chain, worker.back,
                           jumps.backward);
  } else {
    find_partners_on_diagonal(worker.forward, worker.ahead);
    find_partners_on_diagonal(worker.backward, worker.back);
  }
}

void keep_partners(const Stretch &stretch, const Worker &worker, Found &found) {
  agree(worker.forward, worker.ahead, worker.back, found.linked.data() + stretch.pairs);
  std::copy(worker.ahead.unlinked.begin(), worker.ahead.unlinked.end(),
            found.unlinked_target.data() + stretch.targets);
  std::copy(worker.back.unlinked.begin(), worker.back.unlinked.end(),
            found.unlinked_source.data() + stretch.sources);
}

// Calls work(stretch number, worker, jumps) for all stretches; returns the jumps of each part.
template <typename Work>
std::vector<PartJumps> for_stretches(Training &training, const Work &work) {
  const size_t count = training.stretches.size();
  std::vector<PartJumps> parts((count + stretches_of_part - 1) / stretches_of_part);
  in_parallel(static_cast<int>(training.workers.size()), parts.size(),
              [&](size_t part, int worker) {
                const size_t end = std::min((part + 1) * stretches_of_part, count);
                for (size_t k = part * stretches_of_part; k < end; k++)
                  work(k, training.workers[static_cast<size_t>(worker)], parts[part]);
              });
  return parts;
}

void add_jumps(const JumpCounts &more, JumpCounts &sum) {
  for (size_t i = 0; i < sum.size(); i++) sum[i] += more[i];
}

Steps steps_of(const Training &training, bool in_chain) {
  return {in_chain, jumps_of(training.forward_jumps), jumps_of(training.backward_jumps)};
}

void run_round(Training &training, bool in_chain) {
  const Steps steps = steps_of(training, in_chain);
  const std::vector<PartJumps> parts =
      for_stretches(training, [&](size_t k, Worker &worker, PartJumps &jumps) {
        find_partners(training, training.stretches[k], steps, worker, jumps);
        keep_partners(training.stretches[k], worker, training.found);
      });
  count_links(training.model, training.stretches, training.found, training.lexicon);
  if (!in_chain) return;
  training.forward_jumps = training.model.forward_jumps;
  training.backward_jumps = training.model.backward_jumps;
  for (const PartJumps &part : parts) {
    add_jumps(part.forward, training.forward_jumps);
    add_jumps(part.backward, training.backward_jumps);
  }
}

// The links of the stretches whose lines are wanted.
std::vector<std::vector<WordLink>> find_links(Training &training, int64_t first_wanted) {
  const Steps steps = steps_of(training, true);
  std::vector<std::vector<WordLink>> links(training.stretches.size());
  for_stretches(training, [&](size_t k, Worker &worker, PartJumps &jumps) {
    const Stretch &stretch = training.stretches[k];
    if (stretch.line < first_wanted) return;
    find_partners(training, stretch, steps, worker, jumps);
    join_links(training.model, stretch, worker.ahead, worker.back, links[k]);
  });
  return links;
}

// Links units by their places alone, as a beginning.
void start(Training &training) {
  for (const Stretch &stretch : training.stretches) {
    Line line{static_cast<int32_t>(stretch.source.size()),
              static_cast<int32_t>(stretch.target.size()), std::vector<float>(pairs_of(stretch), 1),
              std::vector<float>(stretch.target.size(), 1)};
    Partners partners;
    find_partners_on_diagonal(line, partners);
    const float most = std::min(1.0F, static_cast<float>(stretch.source.size()) /
                                          static_cast<float>(stretch.target.size()));
    float *const linked = training.found.linked.data() + stretch.pairs;
    for (size_t i = 0; i < stretch.source.size(); i++)
      for (size_t j = 0; j < stretch.target.size(); j++)
        linked[i * stretch.target.size() + j] =
            most * partners.linked[j * stretch.source.size() + i];
  }
  count_links(training.model, training.stretches, training.found, training.lexicon);
}

void train(Training &training) {
  collect_candidates(training.model, training.stretches, training.lexicon, training.found);
  if (training.model.pairs.empty()) start(training);
  for (int round = 0; round < diagonal_rounds; round++) run_round(training, false);
  for (int round = 0; round < jump_rounds; round++) run_round(training, true);
}

void add_text(const std::vector<Unit> &units, LanguageModel &model, Text &text) {
  for (const Unit &unit : units) {
    text.units.push_back({unit.type, unit.word});
    spell(model.vocabulary, unit.type);
    count_occurrences(model.vocabulary, unit.type, 1);
  }
  text.ends.push_back(text.units.size());
}

}  // namespace

void add_units(const std::vector<Unit> &source, const std::vector<Unit> &target, Model &model,
               Corpus &corpus) {
  add_text(source, model.source, corpus.source);
  add_text(target, model.target, corpus.target);
}

void add_line(std::string_view source, std::string_view target, Model &model, Corpus &corpus) {
  std::vector<Unit> units, partners;
  read_units(source_line(source), model.source.vocabulary, units);
  read_units(target, model.target.vocabulary, partners);
  add_units(units, partners, model, corpus);
}

void align_words(
    const Corpus &corpus, const AlignmentJob &job, Model &model,
    const std::function<void(int64_t line, const std::vector<WordLink> &links)> &take) {
  std::vector<Stretch> stretches = divide(corpus, job);
  std::vector<WordLink> links;
  int64_t line = job.first_wanted;
  const auto finish_lines = [&](int64_t end) {
    for (; line < end; line++) {
      std::sort(links.begin(), links.end());
      links.erase(std::unique(links.begin(), links.end()), links.end());
      take(line, links);
      links.clear();
    }
  };
  for (std::span<Stretch> rest = stretches; !rest.empty();) {
    const std::span<const Stretch> part = rest.first(take_part(rest));
    rest = rest.subspan(part.size());
    Training training{model,
                      part,
                      {},
                      {},
                      model.forward_jumps,
                      model.backward_jumps,
                      std::vector<Worker>(static_cast<size_t>(std::max(job.jobs, 1)))};
    train(training);
    const std::vector<std::vector<WordLink>> found = find_links(training, job.first_wanted);
    for (size_t k = 0; k < part.size(); k++) {
      if (part[k].line < job.first_wanted) continue;
      finish_lines(part[k].line);
      links.insert(links.end(), found[k].begin(), found[k].end());
    }
    keep_counts(training.lexicon, model);
    model.forward_jumps = training.forward_jumps;
    model.backward_jumps = training.backward_jumps;
  }
  finish_lines(static_cast<int64_t>(corpus.source.ends.size()));
}

}  // namespace klib::programs::align
