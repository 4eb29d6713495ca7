// The case mapping's part that only the library and its tests use.
#pragma once

namespace klib::case_mapping {

// Makes the Western table the active one again.
void reset();

}  // namespace klib::case_mapping
