/* Carries the format codes of a sentence into its translation: declares fonts, parses the sentence
   into tokens, and places its codes along a word alignment. output.txt is what it prints; a code
   byte is shown as {98}.

       cc -o carry_codes carry_codes.c $(pkg-config --cflags --libs klib) && ./carry_codes */
#include <klib.h>

/* In the literals a code byte is a string of its own, since "\x98Bold" would read B as a hex digit.
 */
/* clang-format off */
#define BOLD "\x98" "Bold" "\x99"
#define ROMAN "\x98" "Roman" "\x99"
#define ANCHOR "\x94" "1" "\x95"
/* clang-format on */

static const char *const source = "The " BOLD "red house" ROMAN " is old" ANCHOR ".";
static const char *const translation = "La maison rouge est vieille.";

static void show(const char *text) {
  for (; *text != '\0'; text++) {
    const unsigned char byte = (unsigned char)*text;
    if (byte < 0x20 || byte > 0x7E)
      printf("{%02X}", byte);
    else
      putchar(byte);
  }
  putchar('\n');
}

static void show_tokens(const char *text) {
  int32_t kind;
  init_parser(P_FONT | P_ANCHOR);
  parse_from_string(text);
  while ((kind = parse(NULL)) != P_END) {
    printf("%-7s ", kind == P_FONT ? "font" : kind == P_ANCHOR ? "anchor" : "text");
    show(p_root[parser_level].token);
  }
  exit_parser();
}

int main(void) {
  /* For each word of the translation, the words of the source (from 0) that it translates. */
  int32_t la[] = {0, -1}, maison[] = {2, -1}, rouge[] = {1, -1}, est[] = {3, -1},
          vieille[] = {4, -1};
  int32_t *alignment[] = {la, maison, rouge, est, vieille, NULL};
  char *carried;

  Kstart_prog("/usr/share/klib/", "ENGLISH");
  Kmanage_parameter_line("FONT=Roman\377Bold"); /* a group of fonts that exclude each other */

  show_tokens(source);

  reset_named_font_groups(); /* before each sentence: see CopyFontsString */
  carried = CopyFontsString(source, translation, alignment);
  printf("%-7s ", "carried");
  show(carried);

  Kfree(carried);
  P_cleanup_fonts();
  Kdestroy_kparm();
  return 0;
}
