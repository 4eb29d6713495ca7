// Apertium's stream format: sentences into it, alignments out of it.
//
// In the stream \ [ ] { } < > @ / ^ $ are escaped; [...] is a blank that is carried along,
// [[t:w:5]]
// ... [[/]] a blank that is bound to words: where the words go, it goes; ^surface/analysis$ is a
// lexical unit. Words that one unit covers ("in spite of") share a blank, as a blank between them
// would break the unit.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace klib::programs {

// A sentence on its way into the stream, as Apertium's own reader of plain text writes a line: with
// a full stop of its own, so that what follows does not belong to the sentence, and ".[][\n]".
std::string apertium_block(std::string_view sentence);

// Which words of the sentence, at blanks and from 0, each lexical unit covers.
using UnitWords = std::vector<std::vector<int32_t>>;

// Puts a bound blank with its number around each unit in the analysis of a sentence's block. False
// when the analysis does not spell the sentence: then nothing is known of its words.
bool mark_units(std::string_view analysis, std::string_view sentence, std::string &marked,
                UnitWords &units);

struct ApertiumAnswer {
  std::string text;
  std::vector<std::vector<int32_t>> units;  // of each word at blanks: those it comes from
};

// Reads a translated block; false when its end is missing: the block was lost.
bool read_answer(std::string_view block, ApertiumAnswer &answer);

// The pairs i-j of a sentence and `plain`, its translation without blanks. Where that is not quite
// the one with blanks, `answer`, their common words are aligned.
std::vector<std::pair<int32_t, int32_t>> apertium_pairs(std::string_view sentence,
                                                        const UnitWords &units,
                                                        const ApertiumAnswer &answer,
                                                        std::string_view plain);

}  // namespace klib::programs
