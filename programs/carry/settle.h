// The last step of a transfer: each word of the translation gets exactly the fonts that it should.
#pragma once

#include <string>
#include <vector>

#include "programs/carry/alignments.h"
#include "programs/carry/source.h"

namespace klib::programs {

// The number of fonts that the sentence selects and that are not among `selected`.
int64_t count_lost_fonts(const SourceSentence &sentence, std::vector<int32_t> selected);

// Writes the result of a transfer, split into `pieces`, with its fonts settled:
//  - A word that is aligned with nothing is plain.
//  - A word whose first source word has one formatting for all its letters and digits has that.
//    Quotation marks and punctuation that stand around them in other fonts, before them in its
//    first source word and behind them in its last, do so in the word, too, as far as it has any.
//  - Any other word begins with the fonts of its first source word and then follows the codes that
//    the transfer has placed inside it.
// Codes stand where readers expect them: closed before blanks and opened behind them, anchors
// inside a font only if they were in the source or have the font on both sides, nothing open at the
// end. The result is the number of fonts of the source that are lost.
int64_t settle_fonts(const CodePage &page, const SourceSentence &sentence,
                     const std::vector<Link> &links, const std::vector<Piece> &pieces,
                     std::string &settled);

}  // namespace klib::programs
