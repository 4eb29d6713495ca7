// The reset of every module.

#include "tests/reset.h"

#include "frame/resets.h"

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
