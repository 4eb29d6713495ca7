// Sentence output inside the library.
#pragma once

namespace klib::sentence_output {

void reset();

}  // namespace klib::sentence_output
