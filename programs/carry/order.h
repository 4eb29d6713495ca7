// Brings the places of the spans and points of a sentence into an order that can be written.
#pragma once

#include "programs/carry/evidence.h"
#include "programs/carry/spans.h"

namespace klib::programs {

// Makes spans contain what they contain in the source, keeps those apart that are apart there, and
// moves points to where they split no span that does not contain them.
void settle_order(const Side &source, const Side &target, Markup &markup);

// Writes the codes of the spans and points to `codes`, in their order.
void write_codes(const Markup &markup, std::vector<Code> &codes);

}  // namespace klib::programs
