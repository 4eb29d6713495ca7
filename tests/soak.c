/* A million sentences and ten thousand groups of files in one process: memory at the end must be as
   at the beginning. Run in a scratch directory, with a parameter file beside the group's file. */
#include <klib.h>
#include <string.h>
#include <unistd.h>

enum { sentences = 1000000, groups = 10000 };

static long resident_pages(void) {
  long size = 0, resident = 0;
  FILE *status = fopen("/proc/self/statm", "r");
  if (status == NULL) return 0;
  if (fscanf(status, "%ld %ld", &size, &resident) != 2) resident = 0;
  fclose(status);
  return resident;
}

static void carry(int count) {
  static const char source[] =
      "a\x94"
      "1\x95 \x98"
      "Bold\x99"
      "b c\x98"
      "Roman\x99 \x1E"
      "d \x98H\xFFx\x99"
      "e\x1F f, g \x94"
      "2\x95";
  int i;
  for (i = 0; i < count; i++) {
    int32_t lists[][3] = {{1, -1, 0}, {0, 2, -1}, {126, -1, 0}, {200, 3, -1}, {4, -1, 0}};
    int32_t *alignment[6] = {lists[0], lists[1], lists[2], lists[3], lists[4], NULL};
    Kfree(CopyFontsString(source, "q r s, t u", alignment));
    Kfree(
        CopyAlienCharacters("\x9D"
                            "00E9 x",
                            string_copy("y \x9D"), i & 1));
  }
}

static int runs = 0;
static long after_warm_up = 0;
static void process(char *name) {
  (void)name;
  carry(sentences / groups);
  if (++runs == groups / 10) after_warm_up = resident_pages();
  if (runs % 3 == 0) Kcleanup_parameters();
}

int main(void) {
  static char program[] = "soak", name[] = "doc.txt";
  static char *arguments[groups + 1];
  FILE *parameters = fopen("doc.par", "w");
  int i;
  if (parameters == NULL) return 1;
  fputs(
      "\x96"
      "FONT=Roman\xFF"
      "Bold\n\x96"
      "FONTGROUPS=H\n\x96"
      "FONT-PACKET=P\xFF"
      "Bold\n"
      "\x96"
      "DIRECTION=ENGLISH-GERMAN\n\x96"
      "TASK=soak\n",
      parameters);
  fclose(parameters);
  arguments[0] = program;
  for (i = 1; i <= groups; i++) arguments[i] = name;
  Kmain_loop(groups + 1, arguments, "soak", "", 1, (K_process_function)process, NULL, NULL);
  Kdestroy_kparm();
  printf("%d groups, %ld pages after a tenth, %ld at the end\n", runs, after_warm_up,
         resident_pages());
  return runs == groups && resident_pages() <= after_warm_up + 64 ? 0 : 1;
}
