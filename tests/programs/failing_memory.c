/* Put before the C library (LD_PRELOAD): the n-th allocation of the process fails, n being the
   number in the environment variable FAILING_MEMORY; with a '+' after it, so do all that follow.
   The number of allocations goes to the file FAILING_MEMORY_COUNT at the end of the process. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t elements, size_t size);
void *__libc_realloc(void *block, size_t size);

static long count, first = -2;
static int all;

static int fails(void) {
  if (first == -2) {
    const char *text = getenv("FAILING_MEMORY");
    first = text ? atol(text) : -1;
    all = text && strchr(text, '+') != NULL;
  }
  count++;
  if (count != first && !(all && first > 0 && count > first)) return 0;
  errno = ENOMEM;
  return 1;
}

void *malloc(size_t size) { return fails() ? NULL : __libc_malloc(size); }

void *calloc(size_t elements, size_t size) {
  return fails() ? NULL : __libc_calloc(elements, size);
}

void *realloc(void *block, size_t size) { return fails() ? NULL : __libc_realloc(block, size); }

__attribute__((destructor)) static void tell(void) {
  const char *name = getenv("FAILING_MEMORY_COUNT");
  const int file = name ? open(name, O_WRONLY | O_CREAT | O_TRUNC, 0600) : -1;
  if (file >= 0) {
    dprintf(file, "%ld\n", count);
    close(file);
  }
}
