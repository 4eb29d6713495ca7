/* A program of the engine as its author would write it, in C, against the installed library. It has
   functions with names that the library also uses inside; the library must not take them for its
   own. */
#include <klib.h>
#include <string.h>

#define CHECK(condition)                                              \
  do {                                                                \
    if (!(condition)) {                                               \
      fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      failures++;                                                     \
    }                                                                 \
  } while (0)

static int failures = 0;
static int groups = 0;

/* Not the library's: with another type and another meaning. */
char *body(char *token) {
  (void)token;
  return NULL;
}

static int32_t hook(int32_t a, const char *b, double c) {
  return a == 1 && strcmp(b, "two") == 0 && c == 3.0 ? 4 : -1;
}

static void process(char *source, char *target) {
  char *result;
  int32_t own[] = {119, -1};
  int32_t *alignment[3] = {own, NULL, NULL};
  char sentence[] = "A small\nsentence.";
  FILE *file;

  CHECK(strcmp(source, "a.txt") == 0 && strcmp(target, "b.txt") == 0);
  groups++;

  result = CopyFontsString(
      "ab\x94"
      "3\x95"
      "cd ef",
      "wxyz uv", alignment);
  CHECK(result != NULL && strcmp(result,
                                 "wx\x94"
                                 "3\x95"
                                 "yz uv") == 0);
  Kfree(result);
  Kfree(alignment[0]);
  Kfree(alignment[1]);

  file = Kfopen("consumer.kti", "w");
  CHECK(file != NULL);
  init_kti_format(1);
  kti_format(file, sentence, 1);
  Kfclose(file, 0);
  exit_kti_format();
}

static void read_back(void) {
  FILE *file = Kfopen("consumer.kti", "r");
  CHECK(file != NULL);
  if (file == NULL) return;
  init_parser(P_SENTENCE);
  CHECK(parse(file) == P_SENTENCE);
  CHECK(strcmp(kti_body(p_root[parser_level].token), "A small sentence.") == 0);
  CHECK(current_sentence_number == 0);
  exit_parser();
  Kfclose(file, 0);
}

int main(int argc, char **argv) {
  char version[6], date[25];
  char *arguments[] = {argv[0], "-LOG-PATHNAME", "consumer.log", "a.txt", "b.txt", NULL};
  (void)argc;

  klib_get_info(version, date);
  CHECK(strcmp(version, "0.005") == 0);
  CHECK(abort_function(1, "two", 3.0) == 0);
  set_abort_function((K_abort_function)hook);
  CHECK(abort_function(1, "two", 3.0) == 4);

  Kmain_loop(5, arguments, "consumer", "Kavro", 2, (K_process_function)process, NULL, read_back);
  CHECK(groups == 1);
  CHECK(kparm[0] == 999999 && strcmp(skparm[18], "consumer.log") == 0);
  Kdestroy_kparm();
  return failures != 0;
}
