// The bytes of a block that lie in ranges; see regex_block.h. The code for a block is long, so
// there is only this one.
//
// Tested by regex_test.cpp.

#include "pattern/regex_block.h"

namespace klib::regex {

uint64_t within(const Block &block, const ByteRange *ranges, size_t count) {
  BlockMask found(block.bytes);
  for (const ByteRange *range = ranges; range != ranges + count; ++range) {
    if (range->first == range->last)
      found.add_equal(range->first);
    else
      found.add_range(*range);
  }
  return found.bits();
}

}  // namespace klib::regex
