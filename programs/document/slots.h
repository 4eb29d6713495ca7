// Slots: places in the raw text of an anchor for something that is not known before there is a
// translation. A slot is {FF} key {FF} written {FF}; FF is no byte of UTF-8. `written` is what the
// document has in its place, and the key says what comes there:
//
//   a number   the text that follows the anchor of this number in the sentence file
//   lang, dir  what follows from the language of the translation
#pragma once

#include <string>
#include <string_view>

namespace klib::programs {

struct SlotPlace {
  size_t begin, end;  // in the raw text
  std::string_view key, written;
};

// Finds the first slot at or after `from`; false when there is none.
bool find_slot(std::string_view raw, size_t from, SlotPlace &slot);

void append_slot(std::string_view key, std::string_view written, std::string &raw);

// Whether the text is UTF-8 but for whole slots.
bool is_valid_raw(std::string_view raw);

}  // namespace klib::programs
