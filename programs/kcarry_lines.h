// The lines of a job of kcarry in memory, when the alignment is not simply read line by line: the
// aligner needs to see all of them, and lines with tokens may have to be aligned again.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "programs/align/material.h"
#include "programs/carry/alignments.h"
#include "programs/carry/side.h"
#include "programs/common/code_page.h"

namespace klib::programs {

// The words of both texts are what the links count: stretches between blanks and, in scripts
// without blanks, parts of them. The texts have one blank between words.
struct CarryLine {
  std::string translation;
  std::vector<Range> source_words, target_words;
  std::vector<Link> links;  // sorted, each once
};

struct CarryFiles {
  const char *sentences, *translation;
  const char *alignment;                      // null: all lines are aligned here
  const char *source_tokens, *target_tokens;  // null: the alignment counts words between blanks
};

// Reads all files, and aligns what has no alignment. The character table of `page`, in which the
// sentences are, must be active. Files with different numbers of lines end the job (fail()). Adds
// the number of bad pairs.
std::vector<CarryLine> prepare_lines(const CarryFiles &files, const align::Material &material,
                                     const CodePage &page, int64_t &bad_pairs);

}  // namespace klib::programs
