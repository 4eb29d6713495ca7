// The word list inside the library.
#pragma once

namespace klib::word_lists {

// Releases the list and empties the exports; for tests.
void reset();

}  // namespace klib::word_lists
