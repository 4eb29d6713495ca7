// What says which words belong together: the alignment, and words that both sides share.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "programs/carry/alignments.h"
#include "programs/carry/side.h"

namespace klib::programs {

// A piece of a word that may have come through unchanged: the word without the marks around it, and
// what is before or after its hyphens, apostrophes and changes of script.
struct TextPiece {
  uint64_t hash;
  Range range;
  uint32_t word;
  bool whole;  // all of the word

  bool operator<(const TextPiece &other) const {
    return hash != other.hash ? hash < other.hash : range.begin < other.range.begin;
  }
};

constexpr uint32_t full_weight = 1 << 20;

struct Evidence {
  std::vector<Link> links;  // by target
  std::vector<uint32_t> first_of_target, first_of_source;
  std::vector<uint32_t> targets;                        // by source
  std::vector<TextPiece> source_pieces, target_pieces;  // in order, see put_whole_words_first()
  std::vector<int64_t> cost;  // of the words of the translation before this one, as outside words
  std::vector<uint32_t> aligned_before, aligned_after;  // the nearest aligned source words

  std::span<const Link> sources_of(uint32_t target) const {
    return {links.data() + first_of_target[target], links.data() + first_of_target[target + 1]};
  }
  std::span<const uint32_t> targets_of(uint32_t source) const {
    return {targets.data() + first_of_source[source], targets.data() + first_of_source[source + 1]};
  }
  bool is_aligned(uint32_t source) const { return !targets_of(source).empty(); }
  // A link counts less the more others its two words have.
  int64_t weight(uint32_t source, uint32_t target) const {
    return full_weight / static_cast<uint32_t>(targets_of(source).size()) /
           static_cast<uint32_t>(sources_of(target).size());
  }

  std::vector<int32_t> same;  // room for weigh_evidence()
  std::vector<bool> taken;
};

// Fills the evidence from the alignment. A word that both sides have equally often belongs to its
// like, whatever the alignment says.
void weigh_evidence(const Side &source, const Side &target, const std::vector<Link> &alignment,
                    Evidence &evidence);

uint64_t hash_of(std::u32string_view text);

// The pieces of one side that are equal to `text`: none when there are too many to tell apart.
std::span<const TextPiece> find_pieces(const std::vector<TextPiece> &pieces,
                                       std::u32string_view text);

}  // namespace klib::programs
