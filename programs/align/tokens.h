// Tokens: what the pairs of an alignment count when it is not words between blanks.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "programs/align/units.h"

namespace klib::programs::align {

// A stretch of a line, without white space at its edges.
struct Token {
  size_t begin, end;  // bytes
};

// The tokens that the aligner itself uses: words between blanks, but the single units of a word
// that has a script without blanks. `word` of the units becomes the number of their token.
void divide_into_tokens(std::string_view line, std::vector<Unit> &units,
                        std::vector<Token> &tokens);

// The tokens with blanks between them, and a line feed.
std::string token_line(std::string_view line, const std::vector<Token> &tokens);

// Finds where the tokens of another tokeniser are in the line, by their characters. Understands its
// escapes (&apos; &quot; &amp; &lt; &gt; &#124; &#91; &#93; and @-@) and the marks of parts of
// words
// (@@ after one that goes on, U+2581 before one that begins), and takes capital and small letters
// for the same. A token that has no characters of its own is at the edge of the next one. Returns
// whether all of the line was found, in order.
bool find_tokens(std::string_view line, std::string_view tokenised, std::vector<Token> &tokens);

}  // namespace klib::programs::align
