// The command line of a program that runs the main loop: any number of assignments, each a '-' with
// a parameter name and its value as the next argument, then the file names.
//
// Values are stored unchanged, also those of the font and language parameters; only parameter lines
// run the operations of special parameters.

#include "frame/memory.h"
#include "frame/messages.h"
#include "frame/program.h"
#include "klib.h"
#include "parameters/parameters.h"

namespace {

enum UsageReason : int32_t { bad_parameter = 0, incomplete_group = 1 };

}  // namespace

// Exported names

using namespace klib;
using namespace klib::parameters;

int32_t Kparse_command_arguments(int32_t argc, char **argv) {
  int32_t i = 1;
  while (i < argc && argv[i][0] == '-') {
    const int32_t parameter = parameter_number(argv[i++] + 1);
    if (parameter == -1 || i == argc)
      Kusage(bad_parameter, 0);
    else
      memory::guarded([&] { store_parameter_value(parameter, argv[i++]); });
  }
  return argc <= 1 ? argc : i;
}

void Kusage(int32_t reason, int32_t group_size) {
  if (reason != bad_parameter && reason != incomplete_group) return;
  Kmessage(MESSAGE_USAGE, program::name() != nullptr ? program::name() : "");
  if (reason == incomplete_group) {
    Kmessage(MESSAGE_INCOMPLETE_GROUP, group_size);
  } else {
    Kmessage(MESSAGE_LEGAL_PARAMETERS);
    for (int32_t number = 1; number <= numeric_count + text_count; ++number)
      if (parameter_name(number)[0] != '\0')
        Kdisplay(MESSAGE_PARAMETER_NAME, parameter_name(number));
  }
  Kabort_prog();
}
