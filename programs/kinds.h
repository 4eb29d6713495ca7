// The kinds of documents that kextract and kmerge take.
#pragma once

#include <string_view>

#include "programs/document/kind.h"

namespace klib::programs {

// The kind of a file with this name.
const DocumentKind &kind_of_file(std::string_view name);

// The kind of this name, or null.
const DocumentKind *find_kind(std::string_view name);

}  // namespace klib::programs
