// The counters; see allocations.h. The functions of the C library are replaced by ones that count
// and then call them by their other names, which the GNU C library has.

#include "bench/allocations.h"

#include <cstddef>

namespace {

int64_t count = 0;

}  // namespace

extern "C" {

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t number, size_t size);
void *__libc_realloc(void *block, size_t size);

void *malloc(size_t size) {
  count++;
  return __libc_malloc(size);
}
void *calloc(size_t number, size_t size) {
  count++;
  return __libc_calloc(number, size);
}
void *realloc(void *block, size_t size) {
  count++;
  return __libc_realloc(block, size);
}
}

namespace klib::bench {

int64_t allocations() { return count; }

}  // namespace klib::bench
