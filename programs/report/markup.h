// Text and sentences as HTML.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "programs/common/sentence.h"
#include "programs/document/anchor_file.h"

namespace klib::programs {

// Appends text so that it is nothing but text, in an element or in quotes. What cannot be seen,
// such as controls and marks that turn the direction, is written as its number.
void append_escaped(std::string_view utf8, std::string &html);

// Appends a sentence: <w> for each word, with the attribute c where a word goes on after a bracket,
// and <b class=kN> for the brackets of the elements, N from the number of the anchor. Returns the
// number of words: those between blanks, which `tokens`, the same text with more blanks, divides
// further. `anchors` may be null.
int64_t append_sentence_html(const Sentence &sentence, AnchorFile *anchors, std::string_view tokens,
                             std::string &html);

}  // namespace klib::programs
