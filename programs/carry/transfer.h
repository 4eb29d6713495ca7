// The transfer of the codes of a sentence into its translation.
#pragma once

#include <string>
#include <vector>

#include "programs/carry/alignments.h"
#include "programs/carry/source.h"

namespace klib::programs {

// Marks the aligned words. Anchors of words that are not aligned move to words that are; the result
// is the number of anchors that no aligned word had.
int64_t move_anchors(SourceSentence &sentence, const std::vector<Link> &links);

// Buffers that keep their room from one sentence to the next.
struct Transfer {
  std::string source;                // written for CopyFontsString
  std::vector<int32_t> new_numbers;  // in it, of each source word
  std::vector<int32_t> numbers;      // the lists of the alignment, one behind the other
  std::vector<int32_t *> lists;
};

// Carries the codes into `translation`, words in the target code page between single blanks, at
// least one, which stays as it is. The character table of the target must be active. The result is
// `result`; its words and blanks are those of the translation.
void transfer_codes(const SourceSentence &sentence, const std::vector<Link> &links,
                    std::string &translation, int32_t target_words, Transfer &transfer,
                    std::string &result);

}  // namespace klib::programs
