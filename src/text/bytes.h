// Text is bytes with the values 0 to 255, whatever the sign of char.
#pragma once

#include <cstdint>

namespace klib {

[[nodiscard]] constexpr uint8_t u8(char byte) { return static_cast<uint8_t>(byte); }

}  // namespace klib
