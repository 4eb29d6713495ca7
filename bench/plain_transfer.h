// The transfer written plainly, to compare CopyFontsString with: the same results for a valid
// alignment and sentences without segments and brackets.
#pragma once

#include <cstdint>
#include <string>

namespace klib::bench {

[[nodiscard]] std::string plain_transfer(const std::string &source, const std::string &target,
                                         const int32_t *const *alignment);

}  // namespace klib::bench
