// The built-in word aligner over all pages of a run.
#pragma once

#include <vector>

#include "programs/translate/sentences.h"

namespace klib::programs {

// Aligns the lines of translated pages that have no alignment. Learns from the lines of all pages.
void align_pages(std::vector<PageFiles> &pages, int jobs);

}  // namespace klib::programs
