// Character references of HTML.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace klib::programs {

// The character of the reference that begins at the '&' at `position`, and in `end` the position
// after its ';'. 0 when there is none, when it is not known, or when its character could not be
// in the page in its place.
char32_t read_reference(std::string_view text, size_t position, size_t &end);

}  // namespace klib::programs
