/* klib: the text-processing base library of a machine-translation engine. */
#ifndef KLIB_H
#define KLIB_H
#include <stdint.h>
#include <stdio.h>

#if defined(_WIN32)
#define KLIB_API __declspec(dllexport)
#else
#define KLIB_API __attribute__((visibility("default")))
#endif
#if defined(__GNUC__)
#define KLIB_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define KLIB_PRINTF(text, first)
#endif

/* Any arguments: programs pass what they like. */
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ > 201710L)
#define K_ANY ...
#else
#define K_ANY
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t (*K_abort_function)(K_ANY); /* called with the caller's own arguments */
typedef void (*K_process_function)(
    K_ANY); /* really void f(char *, ...): exactly files_per_call arguments of type char *; klib
               casts to that type before it calls */
typedef void (*K_hook)(void);

/* Kinds of tokens; flag word of init_parser is their OR, plus P_COUNT to keep positions. */
enum {
  P_END = -1,
  P_TEXT = 0,
  P_ANCHOR = 1,
  P_SENTENCE = 2,
  P_CODE_1E = 4,
  P_TO_EOL = 8,
  P_CODE_LINE = 16,
  P_FONT = 32,
  P_CODE_9B = 64,
  P_MARK_1D = 128,
  P_ALIEN = 256,
  P_WHITE = 512,
  P_LINE = 1024,
  P_COUNT = 0x4000
};

struct parser_frame { /* in this order */
  int32_t flags, token_line, line, token_column, column, last_line_columns, status, counting;
  int32_t token_real_line, real_line, token_real_column, real_column, last_line_real_columns;
  int32_t min_real_column, max_real_column, hidden_real_line, hidden_real_column;
  const char *string_pos;
  char *token;
  char *saved_pushback;
};
struct byte_stack {
  char *base, *top;
  int32_t size, increment;
};

/* Memory, messages and abort hooks */
KLIB_API void *Kmalloc(uint32_t size);
KLIB_API void *Kcalloc(uint32_t elements, uint32_t size);
KLIB_API void *Krealloc(void *pointer, uint32_t size);
KLIB_API void Kfree(void *pointer);
KLIB_API char *string_copy(const char *source_text);
KLIB_API void Kdisplay(const char *format, ...) KLIB_PRINTF(1, 2);
KLIB_API void Kmessage(int32_t set, int32_t number, const char *format, ...) KLIB_PRINTF(3, 4);
KLIB_API const char *Msg(int32_t set, int32_t number, const char *text);
KLIB_API void open_message_catalog(K_ANY);
KLIB_API void close_message_catalog(K_ANY);
KLIB_API void Kexplain_error(K_ANY);
KLIB_API void Kread_char_types(K_ANY);
KLIB_API void Kdestroy_char_types(K_ANY);
KLIB_API void klib_get_info(char *version, char *build_date);
KLIB_API void set_abort_function(K_abort_function function);
KLIB_API int32_t abort_function(K_ANY);

/* Program lifecycle and main loop */
KLIB_API void Kmain_loop(int32_t argc, char **argv, const char *program_name, const char *catalog,
                         int32_t files_per_call, K_process_function process, K_hook start_hook,
                         K_hook end_hook);
KLIB_API int32_t Kstart_prog(const char *directory, const char *language);
KLIB_API void Kend_prog(void);
KLIB_API void Kabort_prog(void);
KLIB_API void Kprocess(const char *file_name);

/* Logging */
KLIB_API void Kstart_logging_file(const char *path);
KLIB_API void Kstop_logging_file(void);
KLIB_API void Klogging(const char *message);

/* Parameter tables and defaults */
KLIB_API void Ksourcecode_defaults_for_parms(const char *directory);
KLIB_API void Kinit_parameters(void);
KLIB_API void Kcleanup_parameters(void);
KLIB_API void Ksave_parameter_values(void);
KLIB_API void Krestore_parameter_values(void);
KLIB_API void Kdestroy_kparm(void);

/* Command-line arguments and usage */
KLIB_API int32_t Kparse_command_arguments(int32_t argc, char **argv);
KLIB_API void Kusage(int32_t reason, int32_t group_size);

/* Parameter files */
KLIB_API void Kread_all_parameter_files(const char *file_name);
KLIB_API void Manage_parameter_file(const char *file_name);
KLIB_API int32_t Kmanage_parameter_line(const char *parameter_line);

/* Checked file operations */
KLIB_API int32_t Kopen(const char *name, int32_t flags);
KLIB_API int32_t Kcreat(const char *name, int32_t mode);
KLIB_API FILE *Kfopen(const char *name, const char *mode);
KLIB_API FILE *Kfopen2(const char *name, const char *mode);
KLIB_API FILE *Kfopen_i(const char *name, const char *mode, int32_t flag);
KLIB_API void Kclose(int32_t descriptor, int32_t flag);
KLIB_API void Kfclose(FILE *stream, int32_t flag);
KLIB_API int32_t Kfile_size(int32_t descriptor);
KLIB_API int32_t Kread(int32_t descriptor, void *buffer, int32_t count);
KLIB_API int32_t Kwrite(int32_t descriptor, const void *buffer, int32_t count);
KLIB_API int32_t Kfread(FILE *stream, void *buffer, int32_t count);
KLIB_API int32_t Kfwrite(FILE *stream, const void *buffer, int32_t count);
KLIB_API int32_t Kprobe_file(const char *name);
KLIB_API void Kdelete_file(const char *name);
KLIB_API void Kcopy_file(const char *source, const char *target);

/* Path names and file types */
KLIB_API char *Kfile_type(const char *name);
KLIB_API char *Knew_type(const char *name, const char *type, int32_t flag);
KLIB_API char *Klib_pathname(const char *name, int32_t with_language);
KLIB_API char *Kdirectory_append(const char *directory, const char *name);
KLIB_API char *Kbin_pathname(const char *name);
KLIB_API char **Ksearch_path(const char *path, const char *base_name);
KLIB_API char *Kcwd(void);
KLIB_API char *Kpathname(const char *name);

/* Language names */
KLIB_API const char *Klang_sh_lo(const char *short_name);
KLIB_API const char *Klang_lo_sh(const char *long_name);

/* Format-code parser */
KLIB_API void init_parser(int32_t flags);
KLIB_API void parse_from_string(const char *text);
KLIB_API int32_t parse(FILE *stream);
KLIB_API int32_t parse_to(FILE *stream, int32_t line, int32_t column);
KLIB_API int32_t p_getchar(FILE *stream);
KLIB_API void exit_parser(void);
KLIB_API char *body(char *token);
KLIB_API int32_t real_string_length(const char *text);
KLIB_API int32_t Kparse_alien(const char *token);

/* Font definitions and font groups */
KLIB_API int32_t P_init_fonts(void);
KLIB_API int32_t P_set_fonts(int32_t number, char *value);
KLIB_API int32_t P_set_fontgroups(int32_t number, char *value);
KLIB_API int32_t P_set_fontpacket(int32_t number, const char *value);
KLIB_API void P_cleanup_fonts(void);
KLIB_API int32_t Kget_font_group_and_number(const char *font, int32_t *group, int32_t *number);
KLIB_API int32_t find_named_font_group(const char *name);
KLIB_API int32_t set_font_group(const char *name);
KLIB_API int32_t check_fonts_for_duplicates(char **fonts);
KLIB_API void add_font_group(char **fonts);

/* Font selection and font state */
KLIB_API void Kselect_font(char *name);
KLIB_API int32_t Kis_font_selected(char *name);
KLIB_API char **Kfonts_in_string(const char *text);
KLIB_API void Ksave_font_state(void);
KLIB_API void Krestore_font_state(void);
KLIB_API void Kcleanup_font_save(void);
KLIB_API char **Kfont_changes_since_save(int32_t all, int32_t old, int32_t skip_default);
KLIB_API char **Kfont_changes(const char *text, int32_t all, int32_t old);
KLIB_API void reset_named_font_groups(void);

/* Sentence output format and counter */
KLIB_API void init_counter(int32_t counter, int32_t start, int32_t step);
KLIB_API int32_t count(int32_t counter, int32_t delta);
KLIB_API void c_init(void);
KLIB_API void c_tick(int32_t delta);
KLIB_API void c_exit(int32_t set0, int32_t number0, const char *format0, int32_t set1,
                     int32_t number1, const char *format1, int32_t setN, int32_t numberN,
                     const char *formatN);
KLIB_API void init_kti_format(int32_t numbered);
KLIB_API void kti_format(FILE *stream, char *sentence, int32_t tick);
KLIB_API char *kti_body(char *token);
KLIB_API void exit_kti_format(void);

/* Font-code transfer into a translation */
KLIB_API char *CopyFontsString(const char *source, const char *target, int32_t **alignment);

/* Alien characters */
KLIB_API char *WithoutAlienCharacters(char *text);
KLIB_API char *CopyAlienCharacters(const char *source, char *translation, int32_t without_fonts);

/* Anchors */
KLIB_API void init_anchor_index_file(void);
KLIB_API char *make_anchor(void);
KLIB_API char *make_font_anchor(void);
KLIB_API void store_anchor(int32_t text_file, int32_t index_file, const char *text);
KLIB_API void finish_anchor_index_file(int32_t text_file, int32_t index_file);
KLIB_API void read_anchor_indexes(int32_t index_file);
KLIB_API char *read_anchor(int32_t text_file, int32_t n);
KLIB_API void Kcheck_all_anchors_used(void);
KLIB_API void free_anchor_indexes(void);

/* Character types */
KLIB_API void initCT(const char *language);
KLIB_API uint32_t cprops(int32_t c);
KLIB_API uint32_t fiprops(int32_t key);
KLIB_API char **Kcharacter_types_regex(void);

/* Regular expressions */
KLIB_API int32_t Kregex_search(const char *text);
KLIB_API int32_t Kspecial_regex_search(const char *text, int32_t use_first);
KLIB_API int32_t regex_search(const char *text, int32_t count, char **expressions);

/* Dynamic string arrays */
KLIB_API char **a_make(int32_t slot, int32_t initial_count, int32_t increment);
KLIB_API char **a_check(int32_t slot, char **next);
KLIB_API void a_free(int32_t slot);
KLIB_API char *a_string(int32_t slot, int32_t from, int32_t to);
KLIB_API char **a_copy(int32_t slot, int32_t from, int32_t to);
KLIB_API int32_t a_length(char **array);
KLIB_API char **a_separator(char *s, int32_t separator, int32_t collapse);

/* Stacks and double stacks */
KLIB_API void s_make(int32_t n, int32_t initial_size, int32_t increment);
KLIB_API void s_push(int32_t n, int32_t c);
KLIB_API void s_fill(int32_t n, const char *string);
KLIB_API char *s_stack(int32_t n);
KLIB_API void init_double_stack(void);
KLIB_API void push_on_double_stack(int32_t tag, const char *string);
KLIB_API void zap_double_object(int32_t index);
KLIB_API void reuse_double_stack(void);
KLIB_API void empty_double_stack(FILE *stream);
KLIB_API void free_double_stack(void);

/* Word lists */
KLIB_API char **Kfile_to_array(const char *name, int32_t *count);
KLIB_API char **Kndxfile_to_array(const char *name, int32_t *count);
KLIB_API int32_t Klist_in(const char *name);
KLIB_API void Ksort_list(void);
KLIB_API int32_t Klist_search(const char *word);
KLIB_API void Kdump_list(const char *name);
KLIB_API void Kdestroy_list(void);

/* String utilities and case mapping */
KLIB_API void leftshift(char *s);
KLIB_API void rightshift(char *s, int32_t n);
KLIB_API int32_t search(const char *pattern, const char *text);
KLIB_API char *replace(char *s, const char *old_text, const char *new_text);
KLIB_API char *substring(const char *s, uint32_t from, uint32_t to);
KLIB_API void remove_if(char *s, uint32_t mask);
KLIB_API int32_t *positions_of(const char *s, int32_t c, int32_t *count);
KLIB_API int32_t ustrcmp(const char *a, const char *b);
KLIB_API void initUpcase(const char *language);
KLIB_API void uppercase_string(char *s);
KLIB_API int32_t upcaseRu(int32_t c);
KLIB_API int32_t upcaseGr(int32_t c);
KLIB_API int32_t islowerRu(int32_t c);
KLIB_API int32_t islowerGr(int32_t c);
KLIB_API void s_uppercase(char *s);

/* Data */
KLIB_API extern int32_t *kparm;
KLIB_API extern char **skparm;
KLIB_API extern int32_t last_parameter_type;
KLIB_API extern struct parser_frame p_root[5];
KLIB_API extern int32_t parser_level;
KLIB_API extern char *single_font;
KLIB_API extern int32_t current_sentence_number;
KLIB_API extern int32_t _count_length[16];
KLIB_API extern const uint32_t *c_t;
KLIB_API extern int32_t c_t_len;
KLIB_API extern const char *ct_names[12];
KLIB_API extern uint32_t ct_props[12];
KLIB_API extern const uint32_t *fc_t;
KLIB_API extern int32_t fc_t_len;
KLIB_API extern char **_sa;
KLIB_API extern int32_t *_ta;
KLIB_API extern int32_t _sa_index;
KLIB_API extern struct byte_stack _stack[10];
KLIB_API extern char **l_array;
KLIB_API extern int32_t l_length;

#ifdef __cplusplus
}
#endif
#endif
