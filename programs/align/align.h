// Word alignment: which words of two texts translate each other, line by line.
//
// The texts alone are enough, and whatever else is known of the two languages helps: lines that
// are there to learn from, and the model of an earlier run. The same input leads to the same links,
// whatever the number of jobs, the compiler and its options.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "programs/align/model.h"
#include "programs/align/units.h"

namespace klib::programs::align {

// Word `source` of a line and word `target` of its translation, both from 0.
struct WordLink {
  int32_t source, target;
  auto operator<=>(const WordLink &) const = default;
};

// Adds a line of UTF-8 and its translation. The words are those between blanks.
void add_line(std::string_view source, std::string_view target, Model &model, Corpus &corpus);

// The same for units that have been read; `word` of each unit is what links speak of.
void add_units(const std::vector<Unit> &source, const std::vector<Unit> &target, Model &model,
               Corpus &corpus);

struct AlignmentJob {
  int jobs = 1;              // threads
  int64_t first_wanted = 0;  // lines before are only learned from
  // Called for each line that is so long that it is aligned in pieces.
  std::function<void(int64_t line)> cut = [](int64_t) {};
};

// Learns from all lines of the corpus, adds that to the model, and calls take(line, links) for each
// line from `first_wanted`, in order; the links are sorted.
void align_words(const Corpus &corpus, const AlignmentJob &job, Model &model,
                 const std::function<void(int64_t line, const std::vector<WordLink> &links)> &take);

}  // namespace klib::programs::align
