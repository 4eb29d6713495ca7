// What an alignment of files learns from, in addition to the lines that are wanted.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "programs/align/align.h"

namespace klib::programs::align {

// The places of the programs' options.
struct Material {
  std::vector<const char *> memories;  // two files each: lines and their translations
  std::vector<const char *> lexicons;
  const char *model = nullptr;  // a file, or none
  int64_t jobs = 0;             // threads; 0: as many as there are processors
};

// The most jobs that an option may ask for.
constexpr int64_t most_jobs = 256;

// The names of all files that are read.
std::vector<std::string> files_of(const Material &material);

// A run of the aligner: add lines after start_alignment() and align_words() them.
struct Alignment {
  Model model;
  Corpus corpus;
  AlignmentJob job;
};

// Reads the material. Faults of its files end the job (fail()); lines of a lexicon that are not two
// columns are reported and left out. A line that is cut is reported as one of `source_name`.
void start_alignment(const Material &material, const char *source_name, Alignment &alignment);

}  // namespace klib::programs::align
