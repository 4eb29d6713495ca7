// Where the sentences of a paragraph are.
#pragma once

#include <string_view>
#include <vector>

#include "programs/common/code_page.h"
#include "programs/html/paragraph.h"

namespace klib::programs {

// The frames of a paragraph, in order. A frame begins and ends with text, or with a tag of an
// element that begins or ends inside it. An item of text inside which a sentence ends is split.
void find_frames(const CodePage &code_page, std::string_view page, std::vector<Item> &items,
                 std::vector<Frame> &frames);

}  // namespace klib::programs
