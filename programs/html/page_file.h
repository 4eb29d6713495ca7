// A page, brought from its encoding to UTF-8.
#pragma once

#include <string>

#include "programs/document/kind.h"

namespace klib::programs {

// Reads a page (standard input under the name "-") in the encoding of its byte order mark, else the
// one it declares, else the one that the label `undeclared` means; when that is empty, UTF-8. A
// page that is all ASCII and says nothing about its encoding is ASCII. A page that is not valid in
// its encoding, would not come back as it was, or holds a NUL ends the job (fail()).
Document read_page(const char *name, const std::string &undeclared);

}  // namespace klib::programs
