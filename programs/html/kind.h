// HTML pages as a kind of document.
#pragma once

#include "programs/document/kind.h"

namespace klib::programs {

extern const DocumentKind html;

}  // namespace klib::programs
