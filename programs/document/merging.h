// Puts the sentences of a translation and the anchors of a document together again.
#pragma once

#include <string_view>

#include "programs/document/kind.h"

namespace klib::programs {

// The kind of document of a name, or null.
using FindKind = const DocumentKind *(*)(std::string_view name);

// Reads OUT.kti and JOB.anc and writes the document under the name `result` ("-": standard output)
// when all of it is complete. Repairs and what is missing are reported; failures end the job
// (fail()).
void merge_document(FindKind find, const char *sentences, const char *anchors, const char *result);

}  // namespace klib::programs
