// Anchors inside the library.
#pragma once

namespace klib::anchors {

void reset();

}  // namespace klib::anchors
