// A wrong link costs more than a missing one, since it moves markup to the wrong words. So a link
// counts only as far as both directions agree on it, in training and in the result.
#include "programs/align/join.h"

#include <algorithm>

#include "programs/align/constants.h"

namespace klib::programs::align {
namespace {

// Whether the unit is all of its word.
bool is_alone(std::span<const Occurrence> units, size_t i) {
  return (i == 0 || units[i - 1].word != units[i].word) &&
         (i + 1 == units.size() || units[i + 1].word != units[i].word);
}

bool is_mark(const LanguageModel &language, int32_t type) {
  return language.vocabulary.types[static_cast<size_t>(type)].kind == UnitKind::mark;
}

}  // namespace

void agree(const Line &forward, const Partners &ahead, const Partners &back, float *linked) {
  const auto sources = static_cast<size_t>(forward.states);
  const auto targets = static_cast<size_t>(forward.positions);
  for (size_t i = 0; i < sources; i++)
    for (size_t j = 0; j < targets; j++)
      linked[i * targets + j] = ahead.linked[j * sources + i] * back.linked[i * targets + j];
}

void join_links(const Model &model, const Stretch &stretch, const Partners &ahead,
                const Partners &back, std::vector<WordLink> &links) {
  const size_t sources = stretch.source.size(), targets = stretch.target.size();
  for (size_t i = 0; i < sources; i++)
    for (size_t j = 0; j < targets; j++) {
      const float both = ahead.linked[j * sources + i] * back.linked[i * targets + j];
      if (both <= link_threshold * link_threshold) continue;
      // Marks at the edges of words say nothing about the words.
      const bool marks = is_mark(model.source, stretch.source[i].type) &&
                         is_mark(model.target, stretch.target[j].type);
      if (marks && !is_alone(stretch.source, i) && !is_alone(stretch.target, j)) continue;
      links.push_back({stretch.source[i].word, stretch.target[j].word});
    }
}

}  // namespace klib::programs::align
