// The constants of the models. They were chosen on human alignments of several languages; the
// results change little when one of them is doubled or halved.
#pragma once

namespace klib::programs::align {

// How often a round is repeated. The first model looks for partners near the diagonal, the second
// follows the order of partners; more rounds change little.
constexpr int diagonal_rounds = 2, jump_rounds = 4;

// What is known about the translation of a word before any was seen, counted in occurrences: what
// the words with its stem suggest, what looks like it, and that it may be any word of the other
// language.
constexpr float stem_weight = 2, spelling_weight = 2, any_weight = 0.6F;
constexpr float any_stem_weight = 1;  // of a stem: that it may be any stem

// The share of units without a partner, and how many occurrences it takes to learn which they are.
constexpr float unlinked_share = 0.15F, unlinked_weight = 50;

// The share of units whose partner is out of order: the next one follows the partner before it.
constexpr float stray_share = 0.06F;
constexpr float linked_share = 1 - unlinked_share - stray_share;

// The share of jumps that go anywhere, and the weight of the usual jumps against those seen.
constexpr float any_jump_share = 0.01F, jump_weight = 5;

// States and jumps that are less likely are passed over, which hardly changes any result.
constexpr float negligible = 1e-5F, countable = 1e-4F;

// How fast partners become unlikely away from the diagonal.
constexpr float diagonal_slope = 5;

// Both directions must agree on a link: the geometric mean of what they say.
constexpr float link_threshold = 0.25F;

}  // namespace klib::programs::align
