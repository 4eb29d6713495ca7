/* klib: the text-processing base library of a machine-translation engine.

   Conventions, for every entry below:
   1. Text is bytes with the values 0 to 255, ended by a NUL. The bytes 0x90 to 0x9D and 0x1D to
      0x1F are the engine's own codes; see "Format-code parser".
   2. A "new" text, array or block belongs to the caller, who releases it with Kfree.
   3. Arguments are not null unless an entry says so.
   4. A failure is reported in the log; the operation then returns null, -1 or a short count, as its
      entry says. Failures that cannot be tolerated abort the program first, in the sense of
      Kabort_prog: the log is closed and control returns. Exhausted memory is such a failure of
      every operation that allocates: message "NO MORE MEMORY!\n", abort, and the operation's
      failure result. The state stays usable: the same operation works once there is memory.
   5. Sizes and counts are 32-bit. A file or a result of 2 GiB or more fails as its entry says;
      where an entry says nothing, as exhausted memory does.
   6. All state is process-wide and used from one thread. No operation may run inside another that
      uses the same numbered array, stack or counter.
   7. Operations write only to the log and to the files and streams that they are given. The library
      reads no environment variable itself; the C runtime reads TZ for the local time in the log. */
#ifndef KLIB_H
#define KLIB_H
#include <stdint.h>
#include <stdio.h>

#if defined(_WIN32)
#error \
    "klib supports POSIX systems with ELF shared libraries, such as Linux; Windows is not supported"
#endif

#define KLIB_API __attribute__((visibility("default")))

/* printf rules, checked by compilers that can: the format is argument `text`, the first value is
   argument `first`. */
#if defined(__GNUC__)
#define KLIB_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define KLIB_PRINTF(text, first)
#endif

/* Any arguments: (...), which C has from C23 on; before that an empty list. The drafts of C23 are
   distinguished by the first release of each compiler that accepts (...) in them. */
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 202311L)
#define K_ANY ...
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ > 201710L && defined(__clang__) && \
    __clang_major__ >= 15
#define K_ANY ...
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ > 201710L && !defined(__clang__) && \
    defined(__GNUC__) && __GNUC__ >= 13
#define K_ANY ...
#else
#define K_ANY
#endif

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__clang__) && !defined(__cplusplus)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wstrict-prototypes"
#endif

/* ==== Memory, messages and abort hooks ========================================================

   Every block that passes between a program and the library comes from Kmalloc, Kcalloc, Krealloc
   or string_copy and is released with Kfree. When memory is exhausted they report
   "NO MORE MEMORY!\n" and abort (Kabort_prog), unless the numeric parameter "DEBUG" is set: then
   they report "Dumping core for debugging purpose..." and end the process.

   Messages go to the log and nowhere else; without an open log they are dropped. */

/* A block of `size` bytes, or null. Size 0 is reported as "Internal error. Allocating 0 bytes of
   memory.\n"; the result is null, without an abort. */
KLIB_API void *Kmalloc(uint32_t size);

/* A zeroed block for `elements` items of `size` bytes, or null. A product beyond 32 bits is a
   failed allocation; for a product of 0 the result is a block or null, without a report. */
KLIB_API void *Kcalloc(uint32_t elements, uint32_t size);

/* The block, moved to one of `size` bytes. Null when memory is exhausted; the block then stays as
   it was. A null pointer asks for a new block. Size 0 releases the block, is reported as exhausted
   memory and returns null. */
KLIB_API void *Krealloc(void *pointer, uint32_t size);

/* Releases a block; null is ignored. */
KLIB_API void Kfree(void *pointer);

/* A new copy of the text; null for null and when memory is exhausted. */
KLIB_API char *string_copy(const char *source_text);

/* Formats with printf rules and writes to the log. At most 2047 bytes; the rest is cut. */
KLIB_API void Kdisplay(const char *format, ...) KLIB_PRINTF(1, 2);

/* The same for a message identified by its set and number in a message catalogue. There is no
   catalogue, so the built-in format is always the one used. */
KLIB_API void Kmessage(int32_t set, int32_t number, const char *format, ...) KLIB_PRINTF(3, 4);

/* The catalogue's text for a message: always `text` itself, which may be null. */
KLIB_API const char *Msg(int32_t set, int32_t number, const char *text);

/* These do nothing. The library calls them where it would open and close a message catalogue,
   explain the platform's last error, and load and release external character types. */
KLIB_API void open_message_catalog(K_ANY);
KLIB_API void close_message_catalog(K_ANY);
KLIB_API void Kexplain_error(K_ANY);
KLIB_API void Kread_char_types(K_ANY);
KLIB_API void Kdestroy_char_types(K_ANY);

/* Writes "0.005" (6 bytes with the NUL) and "Fri May  9 12:53:26 2003" (25 bytes) to the buffers:
   the version and build date that existing programs expect, whatever the version of the package. */
KLIB_API void klib_get_info(char *version, char *build_date);

typedef int32_t (*K_abort_function)(K_ANY);

/* Registers the function that abort_function calls; null registers none. */
KLIB_API void set_abort_function(K_abort_function function);

/* Calls the registered function with the very arguments given here, whatever they are, and returns
   its result; 0 without one. The library itself never calls it. */
KLIB_API int32_t abort_function(K_ANY);

/* ==== Program life cycle and main loop ========================================================

   A command-line program passes its arguments and its processing function to Kmain_loop:

       static void process(char *source, char *target) { ... }
       int main(int argc, char **argv) {
         Kmain_loop(argc, argv, "align", "Kavro", 2, (K_process_function)process, NULL, NULL);
       }

   The command line is that of "Usage: align [-parameter value] ... filename ...". Parameters get
   their defaults, then the command line's values; then, for each group of file names, what the
   parameter files of the group's first name assign. A program that embeds the library calls
   Kstart_prog and Kend_prog instead. Operations that are called before either, or after
   Kdestroy_kparm, use the default of every parameter. */

typedef void (*K_process_function)(K_ANY); /* takes files_per_call file names of type char * */
typedef void (*K_hook)(void);

/* Runs the program and returns when it has ended. Element 0 of `argv` is never read; `program_name`
   (null allowed) must live as long as the library is used. `process` is called once for each group
   of `files_per_call` names (0 to 4), with the names as separate arguments; with 0, once for each
   name without arguments. Either hook may be null.
   An incomplete last group is a usage report (Kusage) and an abort. More than 4 files per call, or
   fewer than 0: "Main loop cannot handle more than 4 parameters.\n" and an abort at the first
   group. The end hook and Kend_prog follow in either case. */
KLIB_API void Kmain_loop(int32_t argc, char **argv, const char *program_name, const char *catalog,
                         int32_t files_per_call, K_process_function process, K_hook start_hook,
                         K_hook end_hook);

/* Makes the parameter tables with "LIB-DIRECTORY" below `directory` (which ends in a separator),
   sets "LANGUAGE" to `language` up to its first '-', and selects the character types of that text
   (initCT). Returns 0. Starts no log. */
KLIB_API int32_t Kstart_prog(const char *directory, const char *language);

/* Reports the run time ("Run time: %4ld sec\n", whole seconds, at least 1) if "TIME-PROG" is set
   and Kmain_loop took the start time: it does so when "TIME-PROG" is set by then and the program
   has a name. Then closes the log if "LOGGING" is set. The parameter tables stay. */
KLIB_API void Kend_prog(void);

/* Reports "Program '%s' aborted.\n" or "Program aborted.\n" if "SHOW-START-END-ABORT" is set, then
   does what Kend_prog does. It always returns: the caller goes on with its failure result. */
KLIB_API void Kabort_prog(void);

/* Reports "Processing file '%s'.\n" if "SHOW-FILENAME" is set. */
KLIB_API void Kprocess(const char *file_name);

/* ==== Log =====================================================================================

   One log file at a time, opened for appending and flushed after every message. Each non-empty line
   begins with the local time at which its first byte was written, "yy/mm/dd hh:mm:ss ", and ends
   only where a message contains a line feed. "LOGGING" decides whether a log is started and
   stopped; while one is open, everything is written. */

/* Starts the log in the file `path` with its three-character type replaced by "log", if "LOGGING"
   is set and `path` is not empty; a log that is open is closed once the new one is. A path without
   a three-character type, or a file that cannot be opened: reported, abort (which closes an open
   log), no log. */
KLIB_API void Kstart_logging_file(const char *path);

/* Closes the log, if "LOGGING" is set and one is open. */
KLIB_API void Kstop_logging_file(void);

/* Writes a text of any length to the log; without an open log nothing happens. Nothing reports a
   write error. */
KLIB_API void Klogging(const char *message);

/* ==== Parameter tables ========================================================================

   63 numeric parameters and 38 texts, each with a fixed number, name, built-in default and type.
   Numeric parameter N is kparm[N - 1], text parameter N is skparm[N - 1]; both pointers are null
   before the tables are made and after they are destroyed. A text is owned by its table: to change
   one directly, release the old one with Kfree and store a new one from string_copy.

   The main loop makes the tables and, for each group of files, calls Kinit_parameters. What the
   parameter files of a group assign stays for the next group, unless the processing function ends
   with Kcleanup_parameters. */

KLIB_API extern int32_t *kparm;
KLIB_API extern char **skparm;

/* Type of the parameter named last in a parameter line: a bit set with a meaning for programs only;
   0 for an unknown name. */
KLIB_API extern int32_t last_parameter_type;

/* Makes both tables again with the defaults; "LIB-DIRECTORY" becomes `directory` directly followed
   by "dfmt". Earlier tables are then released, so that `directory` may be one of their texts; they
   stay in use when memory is exhausted. */
KLIB_API void Ksourcecode_defaults_for_parms(const char *directory);

/* Saves all values and sets up the font tables (P_init_fonts). */
KLIB_API void Kinit_parameters(void);

/* Releases the font tables (P_cleanup_fonts) and restores the saved values. */
KLIB_API void Kcleanup_parameters(void);

/* Copies all values to the one save slot, replacing what it held. The slot outlives the tables. */
KLIB_API void Ksave_parameter_values(void);

/* Restores the saved values and empties the slot. Nothing happens while the slot is empty or there
   are no tables. */
KLIB_API void Krestore_parameter_values(void);

/* Releases both tables; harmless when repeated. */
KLIB_API void Kdestroy_kparm(void);

/* ==== Command line ============================================================================

   Any number of assignments, each a '-' with a parameter name and its value as the next argument,
   then the file names. Names must match exactly, case included; numeric parameters come first. The
   value is taken unchanged, even when it begins with '-'. */

/* Assigns the values and returns the index of the first file name, or `argc` when there is none;
   with `argc` of 1 or less that is `argc`. Element 0 of `argv` is never read. Numbers are decimal;
   a value that is not a number counts as 0, one beyond 32 bits as the nearest 32-bit number. An
   unknown name is reported by Kusage(0, 0) and skipped, and so is a name that comes last, without
   a value. */
KLIB_API int32_t Kparse_command_arguments(int32_t argc, char **argv);

/* Reports the usage and aborts. Reason 0: "Usage: %s [-parameter value] ... filename ...\n", "Legal
   parameters are: \n" and every parameter name on a line of its own. Reason 1: the usage line and
   "The number of supplied filenames is not a multiple of %d.\n" with `group_size`. Any other
   reason: nothing. */
KLIB_API void Kusage(int32_t reason, int32_t group_size);

/* ==== Parameter files =========================================================================

   A parameter line is NAME=value after any number of spaces and 0x96 bytes. In a file only
   lines that contain a 0x96 are read; all others are comments. For /a/doc.txt the chain is

       "LIB-DIRECTORY"/P   /P   /a/P   /a/doc.par          (P is "PARAMETER-FILE-BASENAME")

   and each file overrides those before it, as lines do within a file. A file that does not exist
   is passed over without a report, and so is a directory of such a name. */

/* Reads those files of the chain of `file_name` that exist; all names are made before the first
   file is read. A name that cannot be made (no three-character type: reported by Knew_type; no
   working directory: by Kcwd) is left out. */
KLIB_API void Kread_all_parameter_files(const char *file_name);

/* Assigns the parameter lines of one file, in order; a line that fails does not stop the others.
   Reports are those of Kfile_to_array and Kmanage_parameter_line. */
KLIB_API void Manage_parameter_file(const char *file_name);

/* Assigns one line. Spaces and line feeds at its end are dropped; the name ends at the first '=';
   spaces around the '=' belong to name and value. Sets last_parameter_type. 0, or what the
   operations of "FONT", "FONTGROUPS" and "FONT-PACKET" return; -2 without a '='; -1 for an unknown
   name: "Cannot get parameter type of parameter %d.\n", "I don't know this parameter: %s\n", and
   when memory is exhausted. */
KLIB_API int32_t Kmanage_parameter_line(const char *parameter_line);

/* ==== Checked file operations =================================================================

   The platform's descriptors and streams with the library's reports. Failures to open, create,
   close or size a descriptor, and to close a stream, are reported and tolerated. Failures to open a
   stream, to read, to write and to delete are reported and abort: the log is closed, and the
   operation returns its failure result. Descriptors and streams are the platform's own, so other
   calls may use them too.

   A call that a signal interrupts before it has done anything is made again, except for closing
   and for writing to a stream, where that would not be safe. */

/* Opens a file with the platform's open flags; a file that these create gets mode 0666 less the
   process's mask. The descriptor, or -1: "File '%s' cannot be opened.\n". */
KLIB_API int32_t Kopen(const char *name, int32_t flags);

/* Creates or empties a file for writing, with a permission mode. The descriptor, or -1: "File '%s'
   cannot be created.\n". */
KLIB_API int32_t Kcreat(const char *name, int32_t mode);

/* All three alike: the stream opened in the platform's mode, or null after "File '%s' cannot be
   opened.\n" and the abort. The flag has no effect. */
KLIB_API FILE *Kfopen(const char *name, const char *mode);
KLIB_API FILE *Kfopen2(const char *name, const char *mode);
KLIB_API FILE *Kfopen_i(const char *name, const char *mode, int32_t flag);

/* Close; a failure is reported: "A file could not be closed.\n". The flag has no effect. A null
   stream is reported as one that could not be closed. */
KLIB_API void Kclose(int32_t descriptor, int32_t flag);
KLIB_API void Kfclose(FILE *stream, int32_t flag);

/* The size in bytes of an open file. 0 for an empty one, and without a report for what has no size,
   such as a pipe. 0 and "Length of a file could not be determined.\n" for 2 GiB or more and for a
   descriptor that is not open. */
KLIB_API int32_t Kfile_size(int32_t descriptor);

/* Reads `count` bytes and returns `count`. Anything less, at the end of the file too, is a
   failure: "Tried to read %d bytes. Read only %d bytes.\n", abort, and the bytes read, -1 on an
   error. A negative count is an error. */
KLIB_API int32_t Kread(int32_t descriptor, void *buffer, int32_t count);

/* The same for writing: "Tried to write %d bytes. Wrote %d bytes.\n". */
KLIB_API int32_t Kwrite(int32_t descriptor, const void *buffer, int32_t count);

/* The same for streams, except that they return the bytes moved in every case, 0 for a negative
   count and for a null stream or buffer. */
KLIB_API int32_t Kfread(FILE *stream, void *buffer, int32_t count);
KLIB_API int32_t Kfwrite(FILE *stream, const void *buffer, int32_t count);

/* 1 when a file or directory of this name exists, else 0; never reports. */
KLIB_API int32_t Kprobe_file(const char *name);

/* Removes a file, never a directory; "Could not delete file '%s'\n" and abort when it cannot. */
KLIB_API void Kdelete_file(const char *name);

/* Copies a file over another, which is created or emptied first. A file copied onto itself, under
   whatever name or link, stays as it is, without a report. A source that cannot be opened (reported
   as by Kfopen) or read (a directory, for example: "File '%s' cannot be read.\n") leaves the target
   as it was. The same message reports a read error later on, where the copy ends; a target that
   cannot be written completely is reported as by Kfclose. */
KLIB_API void Kcopy_file(const char *source, const char *target);

/* ==== Path names and file types ===============================================================

   A type is the text after a name's last dot; those that the engine adds have three characters.
   These operations insert '/' as the separator, and read '/' and '\' as one.
   Every result is new. Failures abort and return null. The flags are 0 or not 0. */

/* The text after the last '.', which may be empty or contain a '/'. Without a '.': "The filename
   '%s' does not have a dot.\n", abort, null. */
KLIB_API char *Kfile_type(const char *name);

/* The name with the three characters after its dot replaced by `type`, which may have any length:
   doc.txt and par make doc.par. A name of less than 5 characters: "The filename '%s' is not long
   enough to give it type '%s'.\n"; one without a dot before its last three: "The filename '%s'
   does not have the dot at the right position.\n"; abort, null. The flag has no effect. */
KLIB_API char *Knew_type(const char *name, const char *type, int32_t flag);

/* "LIB-DIRECTORY"/name, or with the flag "LIB-DIRECTORY"/XX/name, where XX is the short form of
   "LANGUAGE" (Klang_lo_sh: UNKNOWN for one without). */
KLIB_API char *Klib_pathname(const char *name, int32_t with_language);

/* directory/name; "BIN-DIRECTORY"/name, which is /name by default. */
KLIB_API char *Kdirectory_append(const char *directory, const char *name);
KLIB_API char *Kbin_pathname(const char *name);

/* A new null-terminated array of new texts: for every separator in `path`, from the left, the path
   up to and including it, followed by `base_name`: of /a/doc.txt and P, /P and /a/P; of a name
   alone, none. A '\' that another byte follows is not a separator itself, but that byte may be one:
   "a\b" has none, "a\\b", "a\/b" and "a\" have one each. */
KLIB_API char **Ksearch_path(const char *path, const char *base_name);

/* The working directory. One that cannot be read or has more than 511 characters: "Unable to get
   current working directory.\n", abort, null. */
KLIB_API char *Kcwd(void);

/* The name itself if it begins with '/' or '\', else Kcwd()/name; null when Kcwd fails. */
KLIB_API char *Kpathname(const char *name);

/* ==== Language names ==========================================================================

   Eighteen languages have a long name ("GERMAN"), which the language parameters hold, and a
   short form ("DE"), which names directories. Names must match exactly, case included. The results
   are constant texts: the caller neither changes nor releases them. */

/* The long name of a short form, and the short form of a long name; "UNKNOWN" without one. */
KLIB_API const char *Klang_sh_lo(const char *short_name);
KLIB_API const char *Klang_lo_sh(const char *long_name);

/* ==== Format-code parser ======================================================================

   Splits a text or a stream into tokens: runs of plain text, and the codes that the level's flags
   ask for, complete with their code bytes. The bytes of all other codes stay in the plain text.

       init_parser(P_FONT);
       parse_from_string("a\x98" "Bold\x99" "b");
       while ((kind = parse(NULL)) != P_END)         P_TEXT a, P_FONT {98}Bold{99}, P_TEXT b
         use(kind, p_root[parser_level].token);
       exit_parser();

   Up to four levels can be open, closed innermost first. All levels share the token buffer (byte
   stack 4) and the stack of bytes taken back (byte stack 5): a token's text is valid until the
   next call that reads, at any level, so copy it first. What an outer level has taken back is
   kept for it while an inner level is open.

   One level more is refused: "Internal error. More than 4 parser levels.\n". So is a level for
   which there is no memory, after the report of that. A refused level reads nothing but the end,
   its exit_parser closes nothing, and the other levels stay as they are. Without an open level
   reading returns the end as well. */

/* Kinds of tokens; the flag word of init_parser is the OR of those that are wanted. */
enum {
  P_END = -1,       /* the end of the input; no token */
  P_TEXT = 0,       /* plain text, never empty */
  P_ANCHOR = 1,     /* 0x94 number 0x95 */
  P_SENTENCE = 2,   /* 0x90 number, blank, text 0x91 */
  P_CODE_1E = 4,    /* 0x1E text 0x1F: a segment */
  P_TO_EOL = 8,     /* 0x96 through the next newline */
  P_CODE_LINE = 16, /* a whole line, newline included, with 0x97 anywhere in it */
  P_FONT = 32,      /* 0x98 name 0x99 */
  P_CODE_9B = 64,   /* 0x9B text 0x9C */
  P_MARK_1D = 128,  /* the byte 0x1D alone */
  P_ALIEN = 256,    /* 0x9D and four more bytes, upper-case hexadecimal digits */
  P_WHITE = 512,    /* a run of bytes of character type "white" */
  P_LINE = 1024,    /* text through a newline */
  P_COUNT = 0x4000  /* not a kind: keep positions */
};

/* One level. Lines and columns count from 1; "real" ones are those of what a reader sees, in which
   codes take no room (an alien character one column). The fields of a closed level stay until the
   level is opened again. */
struct parser_frame {
  int32_t flags;      /* as given to init_parser */
  int32_t token_line; /* `line` when the token began; so with the other token_ fields */
  int32_t line;       /* every newline counts */
  int32_t token_column;
  int32_t column;            /* of the next byte; every byte counts */
  int32_t last_line_columns; /* `column` before the last newline was read */
  int32_t status;   /* P_MARK_1D (128): a pair of code bytes or a P_TO_EOL just read has a 0x1D */
  int32_t counting; /* flags AND P_COUNT */
  int32_t token_real_line;
  int32_t real_line; /* a P_CODE_LINE does not count */
  int32_t token_real_column;
  int32_t real_column;            /* of the next visible byte */
  int32_t last_line_real_columns; /* `real_column` before the last newline was read */
  int32_t min_real_column;    /* outermost real columns of printing bytes, those neither "white" */
  int32_t max_real_column;    /* nor "kavro", in the last P_SENTENCE */
  int32_t hidden_real_line;   /* where the last hidden stretch began: the real position goes back */
  int32_t hidden_real_column; /* there at its end */
  const char *string_pos;     /* next byte of the level's text */
  char *token; /* the token; null until a token of the level is delivered, and after P_END */
  char *saved_pushback; /* while an inner level is open: the bytes that this one has taken back */
};

/* Levels 1 to 4, and the number of the innermost open one, 0 when none is; level 0 is unused. */
KLIB_API extern struct parser_frame p_root[5];
KLIB_API extern int32_t parser_level;

/* Opens a level. With P_COUNT its line and column fields become 1, else they keep their values. */
KLIB_API void init_parser(int32_t flags);

/* The level reads from `text`, which is not copied and must not change while it is read. Bytes that
   have been taken back are still read first. */
KLIB_API void parse_from_string(const char *text);

/* Reads the next token, from `stream` or with null from the level's text, and returns its kind. The
   stream is read no further than through the byte that shows the token's end. With P_CODE_LINE that
   byte may be the 0x97 of a later line: what was read of that line is taken back and read again by
   the next call. A NUL in a stream ends the input for one P_END; the call after that reads on after
   it. When the input ends inside a code, what was read is a token of the code's kind, after
   "Premature end of file.\n" (once for each missing byte of an alien character) and an abort.
   Exhausted memory: P_END, and the bytes of the token are lost. */
KLIB_API int32_t parse(FILE *stream);

/* Reads, without looking for codes, until the real line is `line` or a later one, the real column
   is `column` or a later one, and no pair of codes is open, a visible one included. Returns 0, or
   -1 when the input ends first; the token is what was read. For levels with P_COUNT. On others the
   positions do not move: the result is 0 with an empty token when they are reached already, else -1
   at the end of the input. */
KLIB_API int32_t parse_to(FILE *stream, int32_t line, int32_t column);

/* Reads one byte and adds it to the current token. Returns -1 at the end of the input, for which a
   NUL is added. */
KLIB_API int32_t p_getchar(FILE *stream);

/* Closes the innermost level; the last one releases the two stacks. Without an open level:
   "Internal error. No parser level to close.\n". */
KLIB_API void exit_parser(void);

/* Strips a code token of its first and last byte, in place: the text after the first byte. An
   empty token is returned as it is. */
KLIB_API char *body(char *token);

/* The number of columns that a reader sees of `text`, of its last line when it has several. Opens
   and closes a level; 0 when that is refused or memory is exhausted. A 0x96 without its newline
   stays open: the first newline of the next text that is counted ends it, and hidden codes after
   that newline then count as visible. */
KLIB_API int32_t real_string_length(const char *text);

/* The value of a P_ALIEN token: 0 to 65535 for four digits 0-9 and A-F; for a shorter token the
   value of the digits that it has. Other bytes count as byte - 48 up to '9' and byte - 55 above. */
KLIB_API int32_t Kparse_alien(const char *token);

/* ==== Font definitions and font groups ========================================================

   Which fonts exist, and which of them exclude each other. Parameter lines declare them. The byte
   0xFF separates the fields of a value; there is no other syntax, and an empty field is an empty
   name:

       FONT=Roman{FF}Bold{FF}Italic      a font group; its fonts are numbered from 0
       FONTGROUPS=H1{FF}H2               named font groups; their fonts are listed nowhere
       FONT-PACKET=Heading{FF}Bold{FF}M  a packet: its name, then the fonts and packets it selects

   Groups, named groups and packets are numbered from 0 in the order of their lines. The tables only
   grow until P_init_fonts or P_cleanup_fonts releases them; they occupy string-array slots 10 to 13
   and 15, and slot 14 during an operation. Equal names are accepted and the first one is found. */

/* While "SINGLE-FONT-GROUP" is set, the font selected last; null when none was. The library owns
   the text and releases it when another one is selected. Before the tables are first set up it is
   the static text "?". */
KLIB_API extern char *single_font;

/* Sets up empty tables, with no single font; tables that exist are released first. Called by
   Kinit_parameters. Returns 0, -1 when memory is exhausted. */
KLIB_API int32_t P_init_fonts(void);

/* Adds a font group; its font 0 is selected, and the last selection no longer counts as a packet's.
   `number` is not used; `value` is split in place and may be released afterwards. Returns 0; -7
   when a font belongs to an earlier group already, -6 when one occurs twice in this group
   (whichever is found first; the group is added in either case); -1, with nothing added, when
   memory is exhausted. Here and below, tables that do not exist yet are made. */
KLIB_API int32_t P_set_fonts(int32_t number, char *value);

/* Adds named font groups without a selection, with the arguments of P_set_fonts. Returns 0, or -8
   at a name that exists already: the names before it are added, the rest are not. -1 when memory is
   exhausted. */
KLIB_API int32_t P_set_fontgroups(int32_t number, char *value);

/* Adds a packet without looking up what it names. `value` is copied. Returns 0, -1 when memory is
   exhausted. */
KLIB_API int32_t P_set_fontpacket(int32_t number, const char *value);

/* Releases all tables, the single font and a save of the selection; harmless when repeated. Called
   by Kcleanup_parameters. The selection starts afresh: no packet selected. */
KLIB_API void P_cleanup_fonts(void);

/* Finds a font of a font group: stores its group and its number there and returns 0. Not found:
   stores 0 in both and returns -1; nothing is reported. */
KLIB_API int32_t Kget_font_group_and_number(const char *font, int32_t *group, int32_t *number);

/* The number of the named font group, or -1. */
KLIB_API int32_t find_named_font_group(const char *name);

/* Adds a named font group, known or not. Returns 0, -1 when memory is exhausted. */
KLIB_API int32_t set_font_group(const char *name);

/* What P_set_fonts would return for this null-terminated array of names: 0, -7, -6 or -1. */
KLIB_API int32_t check_fonts_for_duplicates(char **fonts);

/* Adds a font group as P_set_fonts does, unchecked. The null-terminated array and each of its texts
   come from Kmalloc and belong to the tables from here on, also when memory is exhausted. */
KLIB_API void add_font_group(char **fonts);

/* ==== Font selection and font state ===========================================================

   Which fonts are selected ("in force"). A name is the body of a font code 0x98 name 0x99 and
   means, in this order: while "SINGLE-FONT-GROUP" is set, the single font; with a byte 0xFF, a
   selection in the named group before the first 0xFF, of which the whole name is then the
   selection; the name of a packet, all that it names; else a font of a font group, whose other
   fonts it replaces.

   A save remembers the selection, so that it can be compared or put back; there is one at a time:

       Ksave_font_state();
       Kselect_font(name);
       char **changed = Kfont_changes_since_save(0, 0, 0);
       Kfree(changed);
       Krestore_font_state();                       (or Kcleanup_font_save, to keep the selection)

   Lists are null-terminated arrays made in string-array slot 14; they belong to the caller. */

/* Selects what the name means. Undefined names are reported: "Undefined font '%s'.\n", and nothing
   changes; "Undefined named font group '%s' for font '%s'\n", then "Using '%s' instead.\n" and
   named group 0 is used, or without any named group the program is aborted and nothing is selected.
   A packet that is met again while it is being selected is skipped. `name` may be single_font or a
   text of a list; it is not changed. After 10,000 names in one call, here and in the next
   operation, a packet that has been visited is not visited again: the result is the same, but
   reports are no longer repeated. */
KLIB_API void Kselect_font(char *name);

/* 1 when the name is in force, else 0. A packet is in force when it was selected last; after
   another selection, when all that it names is; after a font group was added, not. Reports
   "Undefined font '%s'.\n" and returns the answer for font 0 of group 0; "Undefined named font
   group '%s'\n", then as above, with the answer 0 after an abort. A packet met while the fields of
   another are tested is reported as "Recursive font loop in font packet. Sorry\n" and the program
   is aborted; it is then tested like any packet, or answered 0 when its own test is not finished.
   After a packet has been tested, the next one in the same packet is not reported. */
KLIB_API int32_t Kis_font_selected(char *name);

/* A new list of new texts: the bodies of the font codes of `text` in order, perhaps none. A code
   inside a code belongs to the outer one's body. Null when memory is exhausted. */
KLIB_API char **Kfonts_in_string(const char *text);

/* Starts a save; an earlier one is replaced. A group that is declared later counts as if it had
   existed at the save. single_font is not part of a save. */
KLIB_API void Ksave_font_state(void);

/* Restores the saved selection and ends the save. Nothing happens without a save. */
KLIB_API void Krestore_font_state(void);

/* Ends the save and leaves the selection as it is. Nothing happens without a save. */
KLIB_API void Kcleanup_font_save(void);

/* A new list of the font names that changed since the save, in the order font groups, named groups,
   packet; null when it would be empty, or without a save. `all` lists every group that was selected
   since, changed or not; `old` lists the names that were replaced instead of those selected now;
   `skip_default` leaves out font groups whose listed font is their font 0. The texts belong to the
   library and stay until the selection next changes or the save ends. */
KLIB_API char **Kfont_changes_since_save(int32_t all, int32_t old, int32_t skip_default);

/* The same for what selecting the font codes of `text` would change, with the reports of
   Kselect_font; the selection stays as it is (single_font included), and an earlier save is lost.
   The texts belong to the library: names of fonts and packets stay until P_cleanup_fonts, what
   named groups had and have again until their selection changes, and what they would have until two
   more lists with such texts have been made here. */
KLIB_API char **Kfont_changes(const char *text, int32_t all, int32_t old);

/* Leaves every named group without a selection. A save keeps what they had. */
KLIB_API void reset_named_font_groups(void);

/* ==== Sentence output format and counter ======================================================

   Sentences pass between programs in sentence files: the byte 0x90, the sentence's decimal number,
   a blank, its text, the byte 0x91 and a newline. kti_format writes them, the parser (P_SENTENCE)
   and kti_body read them back:

       init_kti_format(1);
       kti_format(stream, first, 1);                (numbered "KTI-START", shows progress)
       kti_format(stream, second, 1);               (one "KTI-STEP" further)
       exit_kti_format();                           (logs how many were written)

   There are 16 counters, 0 to 15; other numbers do nothing and have the value 0. Counter 0 numbers
   the sentences and shows progress; it moves only while the parameter "SHOW-PROGRESS" is not 0. */

/* The number of decimal digits of each counter's value, 1 for values below 10; 0 until the counter
   is first used. After a step over several powers of ten it catches up by one digit a call. */
KLIB_API extern int32_t _count_length[16];

/* The number that kti_body read last; kti_format uses it when `tick` is negative. */
KLIB_API extern int32_t current_sentence_number;

/* Sets a counter to `start`; its value is shown in the log ("%d ", no line feed) when it reaches
   `start` + `step`, and then every `step`. With step 0 it is not shown. A negative step shows the
   value at every count. */
KLIB_API void init_counter(int32_t counter, int32_t start, int32_t step);

/* The counter's value, after `delta` was added when it is positive; 0 shows the value, negative
   does nothing. It is shown once at most, however many thresholds one call passes. A value stops
   at 2147483647; a threshold beyond that is never reached. */
KLIB_API int32_t count(int32_t counter, int32_t delta);

/* Progress without sentences: c_init sets counter 0 to 0 with the step "SHOW-PROGRESS-STEP", c_tick
   is count(0, delta). Both do nothing while "SHOW-PROGRESS" is 0. */
KLIB_API void c_init(void);
KLIB_API void c_tick(int32_t delta);

/* Shows the last value and ends the progress line when the value is no multiple of the step and
   beyond the first one; then logs the message for a value of 0, of 1, or of any other (0, 1, N).
   The formats are printf formats that may use the value, an int. Nothing while "SHOW-PROGRESS" is
   0. */
KLIB_API void c_exit(int32_t set0, int32_t number0, const char *format0, int32_t set1,
                     int32_t number1, const char *format1, int32_t setN, int32_t numberN,
                     const char *formatN);

/* Settings for the sentences that follow: framed and numbered when `numbered` is not 0, in lines of
   at most "KTI-WIDTH" bytes, of which the first line uses one byte less, or two less with a frame;
   counter 0 starts at "KTI-START". With a width of 0 or less, and until this call, nothing is
   wrapped. */
KLIB_API void init_kti_format(int32_t numbered);

/* Writes one sentence and flushes the stream. `sentence` is changed in place to what is written:
   newlines, carriage returns and tabs become blanks, runs of blanks one blank, and blanks become
   newlines where a line would grow wider than the width; words are never broken, however narrow
   the width is. Its number is counter 0, or current_sentence_number when `tick` is
   negative. Unless `tick` is 0, counter 0 then advances by "KTI-STEP". Errors of the stream are
   not reported: look at ferror. */
KLIB_API void kti_format(FILE *stream, char *sentence, int32_t tick);

/* The text of a P_SENTENCE token, a pointer into it: the frame is stripped in place, and the number
   goes to current_sentence_number (without one 0; beyond 32 bits the nearest). An empty token is an
   empty text. */
KLIB_API char *kti_body(char *token);

/* c_exit with the messages "No sentence has been written. Sorry.\n", "One sentence has been
   written.\n" and "%d sentences have been written.\n". The value is that of counter 0: with a
   "KTI-START" other than 0 not a count of sentences. */
KLIB_API void exit_kti_format(void);

/* ==== Font-code transfer into a translation ===================================================

   Carries the format codes of a source sentence into its translation: anchors 0x94 body 0x95, font
   codes 0x98 name 0x99, and the codes inside segments 0x1E text 0x1F, along a word alignment:

       int32_t first[] = {0, -1}, second[] = {1, -1}, *alignment[] = {first, second, NULL};
       result = CopyFontsString("ab\x94" "3\x95" "cd ef", "wxyz uv", alignment);
                                                        ("wx\x94" "3\x95" "yz uv", to be Kfree'd)

   The fonts should have been declared (P_set_fonts and the like). The call changes the font
   selection and does not put it back: it selects the fonts of the source's codes, then those that
   it writes.

   The result depends on what is selected at the call. The source's fonts are those that differ from
   the selection at the call: the fonts that a sentence begins with are not written. The selections
   of the named groups belong to that comparison, but they are reset for the sentence itself. So a
   selection that an earlier sentence has left in a named group would count as the beginning of this
   one, and codes that select it again would not be carried from word to word: call
   reset_named_font_groups before each sentence. A font that is still selected at the end of the
   source counts as selected where the writing begins: close the fonts at the end of a sentence. An
   earlier save (Ksave_font_state) is ended, unless the source has no codes. */

/* A new text: the translation's words, with one blank between two, and every code in the word that
   is aligned with its source word, at the corresponding place. Font codes that repeat the selected
   font are left out, and so are those of a source word without an aligned word; anchors are never
   lost. When source has no codes, an unchanged copy of target. Neither text is written to.

   alignment: for each word of target, in order, a list of source word numbers from 0, ended by -1,
   which may be empty; then a null pointer. In a list 126, the mark of existing alignments, means no
   source word, and every number that no source word has is replaced by it; in a source of more than
   126 words it is a word's number, too. An alignment is invalid when a list contains a number below
   -1, or when the number of lists differs from the number of words: the result is then a copy of
   source if it has anchors or codes inside segments, else of target.

   A first list {119, -1}, which existing programs pass where they have no alignment, asks for word
   by word: new lists, which the caller owns, are written into the array, which needs room for one
   pointer per word of target and the null. A null alignment or a null first list means word by word
   too, and nothing is written into the array.

   Existing translations mark units as <X[...]>, and codes stay out of the marks. A code between the
   letter and the '[' moves after the '[', for the letters A, C, M, N, T and U; one between the '<'
   and the letter moves before the '<', for the same letters without N; one between ']' and '>'
   moves after the '>'.

   White space at the start of target is skipped. For a target without words the result is a copy of
   source if that has anchors or codes inside segments, else an empty text, and the lists stay as
   they are. No parser level is used, so all four may be open. The operation has no messages of its
   own; undefined fonts and codes without an end are reported ("Undefined font '%s'.\n", "Premature
   end of file.\n", ...). Null when memory is exhausted or a text has 2 GiB or more, which is
   reported as exhausted memory; the array then contains the pointers that it had. */
KLIB_API char *CopyFontsString(const char *source, const char *target, int32_t **alignment);

/* ==== Alien characters ========================================================================

   A character outside the code page is written as 0x9D and the four hexadecimal digits of its
   code. A program reduces the alien characters of a source sentence to bare markers before it
   translates, and puts the digits back afterwards: the first marker of the translation gets the
   digits of the source's first one, and so on.

       reduced = WithoutAlienCharacters(source);
       translation = translate(reduced);
       if (reduced != source) Kfree(reduced);
       translation = CopyAlienCharacters(source, translation, 1); */

/* `text` itself when it holds no marker, else a new text without the four bytes, or what there is
   of them, after each marker. `text` is not changed. Null when memory is exhausted. */
KLIB_API char *WithoutAlienCharacters(char *text);

/* Puts the digits of `source` after the markers of `translation`, a new text that it takes over:
   the result is `translation` itself when the source has no marker, else a new text, and
   `translation` has been released. With `without_fonts` not 0, markers inside the font codes of
   the source do not count. Different numbers of markers are reported, "Sentence %d: "
   (current_sentence_number) and "Read %d alien characters. Expected %d alien characters.\n" (in
   the translation, in the source); then as many as both have are filled. A source marker at the
   end supplies the bytes that it has. Opens and closes a parser level when `without_fonts` is not
   0; a source whose level is refused counts as empty. Null when memory is exhausted; `translation`
   has then been released too. */
KLIB_API char *CopyAlienCharacters(const char *source, char *translation, int32_t without_fonts);

/* ==== Anchors =================================================================================

   Material that is kept outside a sentence, with a numbered code in its place: 0x94 number 0x95, or
   as a font anchor 0x98 number 0x99. The anchor text file contains the texts one after the other,
   the anchor index file their positions (signed 32-bit, little-endian: where each text begins, and
   finally where the last one ends). Both files are descriptors that the caller opens and closes.

       init_anchor_index_file();                          read_anchor_indexes(index_file);
       for anchor 1, 2, ...:                              text = read_anchor(text_file, n); ...
         code = make_anchor();                            Kcheck_all_anchors_used();
         store_anchor(text_file, index_file, text);       free_anchor_indexes();
       finish_anchor_index_file(text_file, index_file);

   There is one numbering and one loaded index. */

/* The next anchor has the number 1; before the first call of this it is 0. */
KLIB_API void init_anchor_index_file(void);

/* A new text, the code with the next number; null, and no number used up, when memory is exhausted.
   Anchors and font anchors share the numbers. The block has 10 bytes, or more for numbers of more
   than 7 digits. */
KLIB_API char *make_anchor(void);
KLIB_API char *make_font_anchor(void);

/* Appends the text to the text file and the position where it begins to the index file. A text that
   would reach beyond position 2147483647 is reported and stored as an empty one, so that the
   anchors after it keep their numbers; a text file without positions, such as a pipe, is reported
   as "Seek error.\n" and its entry is -1. Failed writes are reported as by Kwrite. */
KLIB_API void store_anchor(int32_t text_file, int32_t index_file, const char *text);

/* Appends the end of the text file to the index file, 2147483647 at most (reported). */
KLIB_API void finish_anchor_index_file(int32_t text_file, int32_t index_file);

/* Loads an index from the file's position on, as many bytes as the file's size, and releases the
   one loaded before. No anchor has been read yet. Fewer than 2 entries, or exhausted memory, load
   nothing; bytes after the last whole entry are ignored. Of an index that could not be read
   completely, reported as by Kread, the missing anchors count as lost and cannot be read. */
KLIB_API void read_anchor_indexes(int32_t index_file);

/* A new text, that of anchor `n`. "Anchor #%d read more than once.\n" when it was read before;
   "Seek error.\n" when the file cannot be positioned; the text is then read from the position where
   the file is. A text that the file does not have completely is reported as by Kread, with its
   whole length (2147483647 at most); the result is what the file has, and from a file without
   positions, such as a pipe, at most 1 MiB of it. Null, with "Internal error. ..." in the log, for
   a number outside the loaded index and for a text that ends before it begins. */
KLIB_API char *read_anchor(int32_t text_file, int32_t n);

/* Reports "Anchor #%d lost.\n" for every anchor of the loaded index that has not been read. */
KLIB_API void Kcheck_all_anchors_used(void);

/* Releases the loaded index. */
KLIB_API void free_anchor_indexes(void);

/* ==== Character types =========================================================================

   Every byte has a 32-bit property word in the active code-page table: Western (Latin-1), Russian
   (Windows Cyrillic) or Greek (ISO 8859-7). A bit or a mask of bits is a character type. The named
   types, in the order of the arrays below: "upper" 0x80000000, "lower" 0x40000000, "digit"
   0x20000000, "letter" (upper or lower), "alphnum" (letter or digit), "kavro" 0x10000000 (the
   engine's own marker bytes), "white" 0x08000000, "punct" 0x00100000, "nonletter" 0x00008000,
   "special" 0x00080000, "inword" 0x00040000.

       if (cprops(*s) & ct_props[6]) ...   white space in the language of the run */

/* The active table, 256 words; the Western one at first. A program may install its own. */
KLIB_API extern const uint32_t *c_t;

/* For programs; neither set nor read by the library. */
KLIB_API extern int32_t c_t_len;

/* The names of the types, ended by an empty name, and their masks in the same order. Programs may
   change both; a name that begins with '^' asks for the complement in Kcharacter_types_regex. */
KLIB_API extern const char *ct_names[12];
KLIB_API extern uint32_t ct_props[12];

/* A keyed table that a program may install: fc_t_len words, read as pairs (key, property word). */
KLIB_API extern const uint32_t *fc_t;
KLIB_API extern int32_t fc_t_len;

/* Makes the language's table the active one: Russian for texts that begin with "RU", Greek for
   "GR", Western for all others. Case matters. Kstart_prog calls it. Kmain_loop and
   parameter lines do not: a program that runs the main loop calls it itself. */
KLIB_API void initCT(const char *language);

/* The property word of a byte; only the low 8 bits of `c` count. */
KLIB_API uint32_t cprops(int32_t c);

/* The word of the first pair with this key in the keyed table; 0 when there is none or no table. A
   last key without a word is ignored. */
KLIB_API uint32_t fiprops(int32_t key);

/* A new array of new texts, one for each entry of ct_names before the empty name (at most 12): the
   bytes of that type as a bracket expression for regex_search, such as "[0-9]". The array has no
   null at its end. Byte 0 is left out of every expression. Null when memory is exhausted. */
KLIB_API char **Kcharacter_types_regex(void);

/* ==== Regular expressions =====================================================================

   A search reports whether a text contains a match of one of several expressions, not where. Every
   expression is compiled in each call and lives only in it; no memory is allocated.

     c            the byte c; \c likewise, also for a c that has a meaning of its own
     .            any byte
     [a-z] [^a-z] a byte in, or not in, a set; the backslash is an ordinary member, ']' a member
                  when it comes first, '-' when it comes first or last
     x*           x zero or more times, x being one of the above or a back-reference
     x\{m,n\}     x m to n times; \{m\} m times. 255 as the greatest count, as in \{m,\}, \{m,255\}
                  and \{255\}, means no upper bound: m to m + 20000 times
     \(...\)      a group, at most 9; \1 to \9 the bytes again that the first to ninth has matched.
                  In its own group a back-reference matches the empty string
     ^ $          at the start and the end of the expression: the start and the end of the text
     \< \>        at the start of the text or of a word; where no byte of a word follows. Words are
                  letters and digits of the process's locale and '_'

   An expression ends at its NUL or at its first newline. '*' and '\{' with nothing to repeat before
   them match '*' and '{', and a backslash at the very end matches a backslash. The empty expression
   means the last one that compiled without an error in the same call.

   The compiled form must fit in 128 bytes: 2 for a byte, 1 for '.', an anchor and the end, 17 for a
   set (33 when a member is above 0x7F), 2 for a group start, a group end and a back-reference, 2
   more for an interval. An expression with an error is reported, "Error in regular expression #%d",
   and skipped:

     11  a count above 255                       43  a tenth group
     16  a digit missing in an interval          44  a third count in an interval
     25  a back-reference to a group that has    45  an interval that is not closed by \}
         not been closed before                  46  a greatest count below the least one
     36  a backslash before a newline            49  a set without its ']'
     41  an empty expression, and none before    50  too long a compiled form
     42  \( without \), or \) without \(

   Where one place has several errors, the one is reported that is met first from left to right, and
   room is asked for before anything else.

   Time grows with the length of the text times that of the expression. Only back-references to what
   can vary in length can take more: one such in an expression at most the square of the length of
   the text (up to 131072 bytes), which the usual texts do not come near, and several a higher
   power. To decide such a one may take 300 KB of the stack. */

/* 1 when a line of the loaded word list (Klist_in), taken as an expression, matches somewhere in
   the text; -1 when none does, or the list is empty. */
KLIB_API int32_t Kregex_search(const char *text);

/* The same; without the first line of the list when use_first is 0. */
KLIB_API int32_t Kspecial_regex_search(const char *text, int32_t use_first);

/* The index, from 0, of the first of `count` expressions that matches somewhere in the
   text, or -1. Later expressions are not compiled. `expressions` may be null when count
   is 0 or less. */
KLIB_API int32_t regex_search(const char *text, int32_t count, char **expressions);

/* ==== Dynamic string arrays ===================================================================

   Growable arrays of pointers in 20 numbered slots, 0 to 19. Whoever uses a slot keeps the element
   count and the array's address, and takes the new address from every a_check:

       char **texts = a_make(3, 50, 50);
       for (int32_t n = 0; (text = next_text()) != NULL; ++n) {
         texts = a_check(3, texts + n);
         texts[n] = text;
       }
       a_free(3);

   The slots do not own what the elements point to. The library itself uses 7 and 8 (double stack),
   8 (alien characters, within one call) and 10 to 15 (fonts); the others are free for programs.
   A slot number outside 0 to 19: nothing happens, and the result is null. */

/* Makes an array with room for `initial_count` elements and returns it. It will grow by `increment`
   elements, or, when that is negative, to -increment percent of its size. An array that the slot
   had is not released. Null when memory is exhausted, and for a count of 0 or less, which is
   reported as "Internal error. Allocating 0 bytes of memory.\n"; the slot can be used even so. */
KLIB_API char **a_make(int32_t slot, int32_t initial_count, int32_t increment);

/* Makes room for the element at `next` (the array's address + the count) and returns the array,
   which moves only when it has to grow. A step that is too small is extended to that element. Null
   when memory is exhausted: the array then stays as it was, and a_free still releases it. */
KLIB_API char **a_check(int32_t slot, char **next);

/* Releases the array, not what its elements point to. Harmless when repeated. */
KLIB_API void a_free(int32_t slot);

/* A new text: elements `from` to `to`, both included, one after the other; empty when `from` is
   above `to`. Null elements count as empty. Null for elements outside the array's room. */
KLIB_API char *a_string(int32_t slot, int32_t from, int32_t to);

/* A new null-terminated array of new copies of the elements `from` to `to`, the last one not
   included; it holds only the null when `from` is not below `to`. Null elements are copied as empty
   texts. Null for elements outside the array's room. */
KLIB_API char **a_copy(int32_t slot, int32_t from, int32_t to);

/* The number of pointers before the first null. */
KLIB_API int32_t a_length(char **array);

/* Splits `s` in place at every byte `separator` (its low 8 bits: -1 is the byte 0xFF) and returns a
   new null-terminated array of pointers into `s`. A separator at the start or the end makes an
   empty field there, and an empty `s` is one empty field. With `collapse` not 0, separators that
   follow each other count as one. When memory is exhausted `s` is unchanged and the result null. */
KLIB_API char **a_separator(char *s, int32_t separator, int32_t collapse);

/* ==== Stacks and double stacks ================================================================

   Ten numbered byte stacks, 0 to 9: growable buffers that programs append to here and read, shorten
   and release themselves, through the records in _stack:

       s_make(3, 100, 100);
       s_fill(3, "word");
       s_push(3, 's');
       puts(s_stack(3));               words
       _stack[3].top--;                takes a byte off
       _stack[3].top = _stack[3].base; empties the stack
       Kfree(_stack[3].base);          ends it

   The parser owns stacks 4 (token) and 5 (pushback). At least one byte of a stack is always free. A
   stack number outside 0 to 9: nothing happens.

   The double stack is one list of (tag, text) pairs in the order of pushing. It lives in the array
   slots 7 and 8; order of calls: init_double_stack, pushes and removals, then reuse_double_stack or
   empty_double_stack, then free_double_stack. When it has not been made nothing happens. */

struct byte_stack {
  char *base;        /* the buffer, from Kmalloc; null when not made */
  char *top;         /* the next free byte */
  int32_t size;      /* of the buffer, in bytes */
  int32_t increment; /* bytes that a step adds; negative: the new size in percent of the old one */
};
KLIB_API extern struct byte_stack _stack[10];

/* Makes stack `n`, empty, with a buffer of `initial_size` bytes; one that it had is not released. A
   size of 0 or less is reported as "Internal error. Allocating 0 bytes of memory.\n" and leaves the
   stack without a buffer until it grows. An increment that does not enlarge counts as one byte. */
KLIB_API void s_make(int32_t n, int32_t initial_size, int32_t increment);

/* Pushes the low 8 bits of `c`. The stack grows by one step as soon as it is full. When memory is
   exhausted, or a step would pass 2 GiB, the byte is lost and the stack stays as it was. A stack
   that was not made grows by single bytes. */
KLIB_API void s_push(int32_t n, int32_t c);

/* Pushes the text, which may lie in the stack itself, and writes a NUL after it that the next push
   overwrites. The size grows by as many steps as it takes to exceed the new contents; when that
   fails nothing is pushed. */
KLIB_API void s_fill(int32_t n, const char *string);

/* Ends the contents with a NUL, which is not counted, and returns the stack's base; valid until the
   stack grows. Null when there is no such stack or no memory for the NUL. */
KLIB_API char *s_stack(int32_t n);

/* The double stack: entry i, 0 <= i < _sa_index, is the pair (_ta[i], _sa[i]). The texts are the
   double stack's own copies. */
KLIB_API extern char **_sa;
KLIB_API extern int32_t *_ta;
KLIB_API extern int32_t _sa_index;

/* Makes the double stack, empty, with room for 50 pairs; it grows by 50. */
KLIB_API void init_double_stack(void);

/* Appends a tag and a copy of the text; a null text is stored as null. When memory is exhausted the
   pair is not appended. */
KLIB_API void push_on_double_stack(int32_t tag, const char *string);

/* Releases the text of entry `index` (from 0) and moves later entries down. Without such an entry
   nothing happens. */
KLIB_API void zap_double_object(int32_t index);

/* Releases all texts; the count is 0 and the double stack can be filled again. */
KLIB_API void reuse_double_stack(void);

/* The same after writing all texts to the stream, one after the other with nothing between; null
   texts are skipped. */
KLIB_API void empty_double_stack(FILE *stream);

/* Releases the two arrays, not the texts that are still in them, and leaves the count; _sa and _ta
   become null. Harmless when repeated. */
KLIB_API void free_double_stack(void);

/* ==== Word lists ==============================================================================

   Files as arrays of lines, and one process-wide list of the lines of a file, which
   Kregex_search uses as its expressions. The order of calls:

       if (Klist_in("words") == 0) { Ksort_list(); at = Klist_search("word"); Kdestroy_list(); }

   An array of lines is two blocks, both the caller's: the text, which element 0 points to, and
   the array. Release element 0 (keep it before the order of the elements changes), then the
   array. */

/* The lines of a text file in a new array that ends at *count, without a null. LF and NUL end a
   line; a CR cuts its line short, so that what follows a CR up to the line's end is lost. Empty
   lines at the end are not counted: for a file of nothing else *count is 0 and the result an array
   even so. Null and *count 0 for a file that cannot be opened (reported by Kopen), and for an
   empty one or one without a size: "Could not open file '%s'\n". Fewer bytes than the file has:
   "Could not read all of file '%s'. Read only %d of %d bytes\n" (-1 on an error) and abort; the
   array is still built, and what was not read is empty. */
KLIB_API char **Kfile_to_array(const char *name, int32_t *count);

/* The same for entries that NULs end; LF and CR are bytes like any other. An empty file is not
   reported. */
KLIB_API char **Kndxfile_to_array(const char *name, int32_t *count);

/* Loads the list with Kfile_to_array. Returns 0, or 4100, for which existing programs test, when
   that returned no array; the list is then empty. A list loaded before is not
   released: call Kdestroy_list first. */
KLIB_API int32_t Klist_in(const char *name);

/* Sorts the list by unsigned bytes, as ustrcmp compares; equal lines come in any order. Takes 16
   bytes a line while it runs; where there are none it is slower and reports nothing. */
KLIB_API void Ksort_list(void);

/* The index of a line equal to `word` in the sorted list, or -1. Which of several equal lines it
   is: halving the list until one is met, first at l_length / 2. */
KLIB_API int32_t Klist_search(const char *word);

/* Writes every line and a line feed, in the present order, to a file, which is created or emptied.
   Reports are those of Kfopen and Kfclose; a list that stays incomplete (a full disk) counts as a
   file that could not be closed. */
KLIB_API void Kdump_list(const char *name);

/* Releases the list that Klist_in loaded; without one nothing happens. l_array and l_length keep
   their values and must not be used until a list is loaded again. */
KLIB_API void Kdestroy_list(void);

/* The lines of the list and their number; null and 0 before the first Klist_in. */
KLIB_API extern char **l_array;
KLIB_API extern int32_t l_length;

/* ==== String utilities and case mapping =======================================================

   Routines on texts as bytes 0 to 255, mostly in place. Upper case comes in three code pages,
   Western (Latin-1), Russian (Windows Cyrillic) and Greek (ISO 8859-7); the active upper-case table
   is Western until initUpcase chooses another and is independent of the active character types. */

/* Removes the first byte; an empty text stays empty. */
KLIB_API void leftshift(char *s);

/* Moves the text with its NUL `n` bytes to the right; the first `n` bytes keep what they held.
   There must be room for `n` bytes more. Nothing happens when `n` is 0 or negative. */
KLIB_API void rightshift(char *s, int32_t n);

/* The index (from 0) at which `pattern` is found in `text`, or -1; 0 for an empty pattern. One
   forward pass that never steps back: after a partial match has failed, a match is looked for from
   the byte where it failed, so "aab" is not found in "aaab". An index of 2 GiB or more counts as
   -1. */
KLIB_API int32_t search(const char *pattern, const char *text);

/* Replaces what search finds of `old_text` in `s`, once. A text that does not become longer is
   changed in place and returned; a longer one is new, and `s`, which must come from Kmalloc, has
   been released. When memory is exhausted `s` is returned unchanged. */
KLIB_API char *replace(char *s, const char *old_text, const char *new_text);

/* A new copy of the bytes `from` (from 0) up to but not including `to`, or up to the end of the
   text. Null when there are none, also for `to` below `from`. */
KLIB_API char *substring(const char *s, uint32_t from, uint32_t to);

/* Removes every byte whose property word (cprops) has a bit of `mask`. */
KLIB_API void remove_if(char *s, uint32_t mask);

/* A new array of the indexes (from 0) of the bytes equal to the low 8 bits of `c`, and their number
   in *count. Without any: count 0, null, and "Internal error. Allocating 0 bytes of memory.\n".
   When memory is exhausted, or the text has 2 GiB or more: null and count 0. */
KLIB_API int32_t *positions_of(const char *s, int32_t c, int32_t *count);

/* The difference (-255 to 255) of the first bytes that differ, as values 0 to 255; 0 for equal
   texts. A text that begins another comes before it. This is the order of word lists. */
KLIB_API int32_t ustrcmp(const char *a, const char *b);

/* Chooses the active upper-case table: Russian for texts that begin with "RU", Greek for "GR" and
   Western for all others. Case matters. */
KLIB_API void initUpcase(const char *language);

/* Upper-cases in place: bytes of the type "lower" (cprops) are mapped through the active upper-case
   table. */
KLIB_API void uppercase_string(char *s);

/* The upper-case form of a byte (the low 8 bits of `c`) in the Russian or Greek table, 0 to 255. */
KLIB_API int32_t upcaseRu(int32_t c);
KLIB_API int32_t upcaseGr(int32_t c);

/* 1 when that is another byte, else 0. */
KLIB_API int32_t islowerRu(int32_t c);
KLIB_API int32_t islowerGr(int32_t c);

/* Upper-cases in place by the C runtime's own islower and toupper, in the process's locale. */
KLIB_API void s_uppercase(char *s);

#if defined(__clang__) && !defined(__cplusplus)
#pragma clang diagnostic pop
#endif

#ifdef __cplusplus
}
#endif
#endif
