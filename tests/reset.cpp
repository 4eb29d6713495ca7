// The reset of every module.

#include "tests/reset.h"

#include "containers/byte_stacks.h"
#include "containers/double_stack.h"
#include "containers/string_arrays.h"
#include "format/counters.h"
#include "format/fonts.h"
#include "format/parser.h"
#include "format/sentence_output.h"
#include "frame/abort_hook.h"
#include "frame/logging.h"
#include "frame/program.h"
#include "lists/word_lists.h"
#include "parameters/parameters.h"
#include "text/case_mapping.h"
#include "text/character_types.h"
#include "transfer/anchors.h"

namespace klib::test {

void release_modules() {
  fonts::reset();  // before the arrays in which its tables live
  logging::reset();
  parameters::reset();
  program::reset();
  abort_hook::reset();
  character_types::reset();
  parser::reset();
  case_mapping::reset();
  double_stack::reset();
  byte_stacks::reset();
  string_arrays::reset();
  counters::reset();
  sentence_output::reset();
  anchors::reset();
  word_lists::reset();
}

}  // namespace klib::test
