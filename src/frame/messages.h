// Every message of the library. A catalogued one has a set, a number and a built-in text, which is
// a printf format; its name expands to the first three arguments of Kmessage and report_and_abort,
//
//     Kmessage(MESSAGE_FILE_NOT_OPENED, name);
//
// so that the compiler checks the arguments of every call against the text. One that is not
// catalogued is the format of Kdisplay.
#pragma once

#include <cstdint>

#include "klib.h"

namespace klib {

// Kmessage, then Kabort_prog: the caller goes on with its failure result.
void report_and_abort(int32_t set, int32_t number, const char *format, ...) KLIB_PRINTF(3, 4);

}  // namespace klib

// clang-format off

// Set 1: file operations
#define MESSAGE_FILE_NOT_OPENED            1, 102, "File '%s' cannot be opened.\n"
#define MESSAGE_FILE_NOT_CREATED           1, 103, "File '%s' cannot be created.\n"
#define MESSAGE_FILE_NOT_CLOSED            1, 105, "A file could not be closed.\n"
#define MESSAGE_NO_FILE_LENGTH             1, 107, "Length of a file could not be determined.\n"
#define MESSAGE_SHORT_READ                 1, 108, "Tried to read %d bytes. Read only %d bytes.\n"
#define MESSAGE_SHORT_WRITE                1, 109, "Tried to write %d bytes. Wrote %d bytes.\n"
#define MESSAGE_FILE_NOT_DELETED           1, 110, "Could not delete file '%s'\n"

// Set 2: file names and paths
#define MESSAGE_NAME_TOO_SHORT_FOR_TYPE    2, 101, "The filename '%s' is not long enough to give it type '%s'.\n"
#define MESSAGE_DOT_AT_WRONG_POSITION      2, 102, "The filename '%s' does not have the dot at the right position.\n"
#define MESSAGE_NO_WORKING_DIRECTORY       2, 104, "Unable to get current working directory.\n"
#define MESSAGE_NAME_WITHOUT_DOT           2, 105, "The filename '%s' does not have a dot.\n"

// Set 3: fonts
#define MESSAGE_UNDEFINED_GROUP_FOR_FONT   3, 101, "Undefined named font group '%s' for font '%s'\n"
#define MESSAGE_USING_GROUP_INSTEAD        3, 102, "Using '%s' instead.\n"
#define MESSAGE_UNDEFINED_GROUP            3, 103, "Undefined named font group '%s'\n"
#define MESSAGE_UNDEFINED_FONT             3, 105, "Undefined font '%s'.\n"
#define MESSAGE_RECURSIVE_PACKET           3, 106, "Recursive font loop in font packet. Sorry\n"

// Set 4: word lists, regular expressions, anchors
#define MESSAGE_EMPTY_LIST_FILE            4, 100, "Could not open file '%s'\n"
#define MESSAGE_LIST_FILE_READ_SHORT       4, 101, "Could not read all of file '%s'. Read only %d of %d bytes\n"
#define MESSAGE_REGEX_ERROR                4, 102, "Error in regular expression #%d\n"
#define MESSAGE_ANCHOR_READ_TWICE          4, 150, "Anchor #%d read more than once.\n"
#define MESSAGE_SEEK_ERROR                 4, 151, "Seek error.\n"
#define MESSAGE_ANCHOR_LOST                4, 152, "Anchor #%d lost.\n"

// Set 5: memory
#define MESSAGE_NO_MORE_MEMORY             5, 101, "NO MORE MEMORY!\n"

// Set 7: program frame
#define MESSAGE_RUN_TIME                   7, 101, "Run time: %4ld sec\n"
#define MESSAGE_PROGRAM_STARTED            7, 102, "Program '%s' started.\n"
#define MESSAGE_NAMED_PROGRAM_ABORTED      7, 104, "Program '%s' aborted.\n"
#define MESSAGE_PROCESSING_FILE            7, 105, "Processing file '%s'.\n"
#define MESSAGE_PROGRAM_ABORTED            7, 106, "Program aborted.\n"

// Set 8: parameters
#define MESSAGE_USAGE                      8, 101, "Usage: %s [-parameter value] ... filename ...\n"
#define MESSAGE_INCOMPLETE_GROUP           8, 102, "The number of supplied filenames is not a multiple of %d.\n"
#define MESSAGE_LEGAL_PARAMETERS           8, 103, "Legal parameters are: \n"
#define MESSAGE_UNKNOWN_PARAMETER          8, 104, "I don't know this parameter: %s\n"

// Set 51: sentence output
#define MESSAGE_NO_SENTENCE_WRITTEN       51,  14, "No sentence has been written. Sorry.\n"
#define MESSAGE_ONE_SENTENCE_WRITTEN      51,  15, "One sentence has been written.\n"
#define MESSAGE_SENTENCES_WRITTEN         51,  16, "%d sentences have been written.\n"

// Set 63: alien characters
#define MESSAGE_SENTENCE_NUMBER           63, 103, "Sentence %d: "
#define MESSAGE_ALIEN_COUNT_DIFFERS       63, 104, "Read %d alien characters. Expected %d alien characters.\n"

// Set 78: parser
#define MESSAGE_PREMATURE_END             78,   1, "Premature end of file.\n"

// Not catalogued
#define MESSAGE_ALLOCATING_NOTHING         "Internal error. Allocating 0 bytes of memory.\n"
#define MESSAGE_DUMPING_CORE               "Dumping core for debugging purpose..."
#define MESSAGE_TOO_MANY_FILES_PER_CALL    "Main loop cannot handle more than 4 parameters.\n"
#define MESSAGE_NO_SUCH_PARAMETER          "Cannot get parameter type of parameter %d.\n"
#define MESSAGE_PARAMETER_NAME             "%s\n"
#define MESSAGE_FILE_NOT_READ              "File '%s' cannot be read.\n"
#define MESSAGE_TOO_MANY_PARSER_LEVELS     "Internal error. More than %d parser levels.\n"
#define MESSAGE_NO_PARSER_LEVEL            "Internal error. No parser level to close.\n"
#define MESSAGE_COUNTER_VALUE              "%d "
#define MESSAGE_END_OF_PROGRESS            "\n"
#define MESSAGE_ANCHOR_TEXT_TOO_LONG       "An anchor is stored without its text: the anchor text file is full.\n"
#define MESSAGE_ANCHOR_FILE_TOO_LONG       "The anchor text file ends beyond 2147483647 bytes.\n"
#define MESSAGE_NO_SUCH_ANCHOR             "Internal error. There is no anchor #%d.\n"
#define MESSAGE_ANCHOR_ENDS_TOO_EARLY      "Internal error. Anchor #%d ends before it begins.\n"

// clang-format on
