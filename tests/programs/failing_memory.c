/* Put before the C library (LD_PRELOAD): the n-th allocation of the process fails, n being the
   number in the environment variable FAILING_MEMORY; with a '+' after it, so do all that follow.
   The processes that it forks count with it, the programs that it runs do not. The number of
   allocations goes to the file FAILING_MEMORY_COUNT at the end. A process that hangs is ended. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t elements, size_t size);
void *__libc_realloc(void *block, size_t size);

enum { most_seconds = 20 };

static long *count; /* shared with forked processes */
static long first;
static int all;

static void begin(void) {
  const char *text = getenv("FAILING_MEMORY");
  first = text ? atol(text) : -1;
  all = text && strchr(text, '+') != NULL;
  count = mmap(NULL, sizeof *count, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (count == MAP_FAILED) _exit(2);
  alarm(most_seconds);
}

static int fails(void) {
  if (!count) begin();
  const long number = __atomic_add_fetch(count, 1, __ATOMIC_RELAXED);
  if (number != first && !(all && first > 0 && number > first)) return 0;
  errno = ENOMEM;
  return 1;
}

void *malloc(size_t size) { return fails() ? NULL : __libc_malloc(size); }

void *calloc(size_t elements, size_t size) {
  return fails() ? NULL : __libc_calloc(elements, size);
}

void *realloc(void *block, size_t size) { return fails() ? NULL : __libc_realloc(block, size); }

__attribute__((constructor)) static void keep_from_others(void) { unsetenv("LD_PRELOAD"); }

__attribute__((destructor)) static void tell(void) {
  const char *name = getenv("FAILING_MEMORY_COUNT");
  const int file = name ? open(name, O_WRONLY | O_CREAT | O_TRUNC, 0600) : -1;
  if (file >= 0) {
    dprintf(file, "%ld\n", count ? *count : 0);
    close(file);
  }
}
