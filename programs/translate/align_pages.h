// The built-in word aligner over all pages of a run.
#pragma once

#include <vector>

#include "programs/align/material.h"
#include "programs/translate/sentences.h"

namespace klib::programs {

// Aligns the lines of translated pages that have no alignment, learning from the lines of all pages
// and from the material. Pages with a script without blanks get token lines, too, which their pairs
// then count.
void align_pages(std::vector<PageFiles> &pages, const align::Material &material);

}  // namespace klib::programs
