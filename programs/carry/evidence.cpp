// Names, numbers, commands and addresses come through a translation as they are. Where both sides
// have such a word equally often, its occurrences belong together in their order; that is surer
// than any statistics, and what a noisy alignment says about these words is left out.
#include "programs/carry/evidence.h"

#include <algorithm>

namespace klib::programs {
namespace {

constexpr size_t most_alike = 32;
constexpr size_t shortest_plain_word = 4;

void add_piece(const Side &side, Range range, uint32_t word, bool whole,
               std::vector<TextPiece> &pieces) {
  if (!range.empty()) pieces.push_back({hash_of(side.view(range)), range, word, whole});
}

// Adds what is before and after the first and the last hyphen or apostrophe of a word.
void add_parts(const Side &side, Range key, uint32_t word, std::vector<TextPiece> &pieces) {
  uint32_t first = no_position, last = no_position;
  for (uint32_t i = key.begin; i < key.end; i++) {
    if (!is_hyphen(side.text[i]) && !is_apostrophe(side.text[i])) continue;
    first = std::min(first, i);
    last = i;
  }
  if (first == no_position) return;
  add_piece(side, {key.begin, first}, word, false, pieces);
  add_piece(side, {first + 1, key.end}, word, false, pieces);
  if (last == first) return;
  add_piece(side, {key.begin, last}, word, false, pieces);
  add_piece(side, {last + 1, key.end}, word, false, pieces);
}

// Adds the stretches of a word in scripts that have blanks, when others are around them.
void add_stretches(const Side &side, Range key, uint32_t word, std::vector<TextPiece> &pieces) {
  for (uint32_t i = key.begin; i < key.end;) {
    uint32_t end = i;
    while (end < key.end && side.kinds[end] != CharKind::unspaced) end++;
    const Range stretch{i, end};
    if (stretch != key && !stretch.empty() && side.has_core(stretch))
      add_piece(side, key_of(side, stretch), word, false, pieces);
    while (end < key.end && side.kinds[end] == CharKind::unspaced) end++;
    i = end;
  }
}

// Whether the word has nothing but letters and digits of scripts that have blanks.
bool is_in_one_piece(const Side &side, Range word) {
  const CharKind *const kinds = side.kinds.data();
  bool plain = true;
  for (uint32_t i = word.begin; i < word.end; i++)
    plain &= kinds[i] != CharKind::mark && kinds[i] != CharKind::unspaced;
  return plain;
}

void find_all_pieces(const Side &side, std::vector<TextPiece> &pieces) {
  pieces.clear();
  for (uint32_t w = 0; w < side.word_count(); w++) {
    if (is_in_one_piece(side, side.words[w])) {
      add_piece(side, side.words[w], w, true, pieces);
      continue;
    }
    const Range key = key_of(side, side.words[w]);
    add_piece(side, key, w, true, pieces);
    add_parts(side, key, w, pieces);
    add_stretches(side, key, w, pieces);
  }
  std::sort(pieces.begin(), pieces.end());
}

// Whether a word is unlikely to be another one by chance in another language.
bool is_telling(const Side &side, Range key) {
  const size_t length = key.end - key.begin;
  bool plain = true;
  for (uint32_t i = key.begin; i < key.end; i++) plain = plain && side.kinds[i] == CharKind::letter;
  if (plain) return length >= shortest_plain_word;
  return length > 1 || !side.is_core(key.begin) || side.kinds[key.begin] == CharKind::digit;
}

// Where both sides have as many whole words among pieces that are alike, these come first: they
// belong together, however the parts of other words are spread.
void put_whole_words_first(std::span<TextPiece> ours, std::span<TextPiece> theirs) {
  if (ours.size() == 1 && theirs.size() == 1) return;
  const auto is_whole = [](const TextPiece &piece) { return piece.whole; };
  if (std::ranges::count_if(ours, is_whole) != std::ranges::count_if(theirs, is_whole)) return;
  for (const auto pieces : {ours, theirs})
    std::stable_partition(pieces.begin(), pieces.end(), is_whole);
}

// Finds the words that both sides share, going through the pieces of both in step.
void match_same_words(const Side &source, const Side &target, Evidence &evidence) {
  evidence.same.assign(source.word_count(), -1);
  evidence.taken.assign(target.word_count(), false);
  std::vector<TextPiece> &ours = evidence.source_pieces, &theirs = evidence.target_pieces;
  const auto end_of_alike = [](const std::vector<TextPiece> &pieces, size_t i) {
    const uint64_t hash = pieces[i].hash;
    while (i < pieces.size() && pieces[i].hash == hash) i++;
    return i;
  };
  for (size_t i = 0, k = 0; i < ours.size() && k < theirs.size();) {
    if (ours[i].hash != theirs[k].hash) {
      ours[i].hash < theirs[k].hash ? i++ : k++;
      continue;
    }
    const size_t end = end_of_alike(ours, i), their_end = end_of_alike(theirs, k);
    put_whole_words_first({&ours[i], end - i}, {&theirs[k], their_end - k});
    if (end - i == their_end - k && end - i <= most_alike && is_telling(source, ours[i].range))
      for (; i < end; i++, k++) {
        if (!ours[i].whole) continue;
        evidence.same[ours[i].word] = static_cast<int32_t>(theirs[k].word);
        evidence.taken[theirs[k].word] = true;
      }
    i = end;
    k = their_end;
  }
}

void add_same_words(Evidence &evidence) {
  std::vector<Link> &links = evidence.links;
  const size_t before = links.size();
  std::erase_if(links, [&](const Link &link) {
    const int32_t same = evidence.same[static_cast<size_t>(link.source)];
    return same < 0 ? evidence.taken[static_cast<size_t>(link.target)] : true;
  });
  bool added = links.size() != before;
  for (size_t w = 0; w < evidence.same.size(); w++) {
    if (evidence.same[w] < 0) continue;
    links.push_back({evidence.same[w], static_cast<int32_t>(w)});
    added = true;
  }
  if (added) std::sort(links.begin(), links.end());
}

void index_links(const Side &source, const Side &target, Evidence &evidence) {
  const std::vector<Link> &links = evidence.links;
  evidence.first_of_target.assign(target.word_count() + 1, 0);
  evidence.first_of_source.assign(source.word_count() + 2, 0);
  for (const Link &link : links) {
    evidence.first_of_target[static_cast<size_t>(link.target) + 1]++;
    evidence.first_of_source[static_cast<size_t>(link.source) + 2]++;
  }
  for (size_t i = 1; i < evidence.first_of_target.size(); i++)
    evidence.first_of_target[i] += evidence.first_of_target[i - 1];
  for (size_t i = 1; i < evidence.first_of_source.size(); i++)
    evidence.first_of_source[i] += evidence.first_of_source[i - 1];
  evidence.targets.resize(links.size());
  for (const Link &link : links)
    evidence.targets[evidence.first_of_source[static_cast<size_t>(link.source) + 1]++] =
        static_cast<uint32_t>(link.target);
  evidence.first_of_source.pop_back();
}

// What it costs a span to reach over a word that none of its own words has.
int64_t outside_cost(const Side &target, const Evidence &evidence, uint32_t word) {
  constexpr int64_t for_marks = full_weight / 10000, for_unaligned = full_weight / 10;
  if (!target.has_core(target.words[word])) return for_marks;
  const auto sources = evidence.sources_of(word);
  int64_t cost = 0;
  for (const Link &link : sources)
    cost += evidence.weight(static_cast<uint32_t>(link.source), word);
  return sources.empty() ? for_unaligned : cost;
}

void find_aligned_neighbours(const Side &source, Evidence &evidence) {
  const uint32_t words = source.word_count();
  evidence.aligned_before.assign(words + 1, no_position);
  evidence.aligned_after.assign(words + 1, no_position);
  for (uint32_t w = 0; w < words; w++)
    evidence.aligned_before[w + 1] = evidence.is_aligned(w) ? w : evidence.aligned_before[w];
  for (uint32_t w = words; w-- > 0;)
    evidence.aligned_after[w] = evidence.is_aligned(w) ? w : evidence.aligned_after[w + 1];
}

}  // namespace

uint64_t hash_of(std::u32string_view text) {
  uint64_t hash = 0xCBF29CE484222325;
  for (const char32_t c : text) hash = (hash ^ c) * 0x100000001B3;
  return hash;
}

std::span<const TextPiece> find_pieces(const std::vector<TextPiece> &pieces,
                                       std::u32string_view text) {
  const uint64_t hash = hash_of(text);
  const auto first = std::ranges::lower_bound(pieces, hash, {}, &TextPiece::hash);
  const auto last = std::ranges::upper_bound(pieces, hash, {}, &TextPiece::hash);
  if (static_cast<size_t>(last - first) > most_alike) return {};
  return {first, last};
}

void weigh_evidence(const Side &source, const Side &target, const std::vector<Link> &alignment,
                    Evidence &evidence) {
  evidence.links = alignment;
  find_all_pieces(source, evidence.source_pieces);
  find_all_pieces(target, evidence.target_pieces);
  match_same_words(source, target, evidence);
  add_same_words(evidence);
  index_links(source, target, evidence);
  find_aligned_neighbours(source, evidence);
  evidence.cost.assign(target.word_count() + 1, 0);
  for (uint32_t w = 0; w < target.word_count(); w++)
    evidence.cost[w + 1] = evidence.cost[w] + outside_cost(target, evidence, w);
}

}  // namespace klib::programs
