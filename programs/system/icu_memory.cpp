// ICU takes its allocator before its first use, once for a process.
#include "programs/system/icu_memory.h"

#include <unicode/uclean.h>

#include <cstdlib>

#include "programs/system/exhaustion.h"

namespace klib::programs {
namespace {

void *or_end(void *block) {
  if (!block) end_without_memory();
  return block;
}

void *allocate(const void *, size_t size) { return or_end(malloc(size)); }
void *reallocate(const void *, void *block, size_t size) { return or_end(realloc(block, size)); }
void release(const void *, void *block) { free(block); }

}  // namespace

void guard_icu_memory() {
  static const bool done = [] {
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, allocate, reallocate, release, &status);
    return true;
  }();
  (void)done;
}

}  // namespace klib::programs
