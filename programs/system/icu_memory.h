// The memory of ICU, which crashes or changes its answers when an allocation fails.
#pragma once

namespace klib::programs {

// Makes failed allocations of ICU end the process (end_without_memory()). To be called before ICU
// is used; all calls but the first do nothing. Only what uses ICU calls it, so that other programs
// need not load it.
void guard_icu_memory();

}  // namespace klib::programs
