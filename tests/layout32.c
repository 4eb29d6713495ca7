/* The exported records on a 32-bit machine, where every field has 32 bits, and a few sentences
   through the library there. */
#include <klib.h>
#include <stddef.h>
#include <string.h>

#define FIELD(record, field, number) \
  typedef char                       \
      record##_##field##_stands_right[offsetof(struct record, field) == 4 * (number) ? 1 : -1]

FIELD(parser_frame, flags, 0);
FIELD(parser_frame, token_line, 1);
FIELD(parser_frame, line, 2);
FIELD(parser_frame, token_column, 3);
FIELD(parser_frame, column, 4);
FIELD(parser_frame, last_line_columns, 5);
FIELD(parser_frame, status, 6);
FIELD(parser_frame, counting, 7);
FIELD(parser_frame, token_real_line, 8);
FIELD(parser_frame, real_line, 9);
FIELD(parser_frame, token_real_column, 10);
FIELD(parser_frame, real_column, 11);
FIELD(parser_frame, last_line_real_columns, 12);
FIELD(parser_frame, min_real_column, 13);
FIELD(parser_frame, max_real_column, 14);
FIELD(parser_frame, hidden_real_line, 15);
FIELD(parser_frame, hidden_real_column, 16);
FIELD(parser_frame, string_pos, 17);
FIELD(parser_frame, token, 18);
FIELD(parser_frame, saved_pushback, 19);
FIELD(byte_stack, base, 0);
FIELD(byte_stack, top, 1);
FIELD(byte_stack, size, 2);
FIELD(byte_stack, increment, 3);
typedef char parser_frame_is_80_bytes[sizeof(struct parser_frame) == 80 ? 1 : -1];
typedef char byte_stack_is_16_bytes[sizeof(struct byte_stack) == 16 ? 1 : -1];

static int32_t sum(int32_t a, double b, int32_t c) { return a + (int32_t)b + c; }

int main(void) {
  static const struct {
    const char *source, *target, *result;
  } rows[] = {
      {"ab\x94"
       "3\x95"
       "cd ef",
       "wxyz uv",
       "wx\x94"
       "3\x95"
       "yz uv"},
      {"x \x94"
       "7\x95 y",
       "a   b",
       "a\x94"
       "7\x95 b"},
      {"plain words", "bare   words", "bare   words"},
  };
  size_t i;
  Kstart_prog("./", "ENGLISH-GERMAN");
  for (i = 0; i < sizeof rows / sizeof *rows; i++) {
    char *result = CopyFontsString(rows[i].source, rows[i].target, NULL);
    if (result == NULL || strcmp(result, rows[i].result) != 0) return 1;
    Kfree(result);
  }
  set_abort_function((K_abort_function)sum);
  if (abort_function(1, 2.0, 4) != 7) return 2;
  Kend_prog();
  Kdestroy_kparm();
  return 0;
}
