// Unicode's view of sentences: what kind a character is, and where sentences end in scripts that
// have no capital letters.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace klib::programs {

bool is_capital(char32_t character);
bool is_letter_or_digit(char32_t character);

// How a character counts where a sentence may end.
enum class SentencePart {
  other,
  cased_letter,    // of a script with capital letters
  uncased_letter,  // of any other script
  mark             // one that ends sentences, of any script
};
SentencePart sentence_part(char32_t character);

// Notes for every character whether Unicode's rules end a sentence right after it, or after the
// blanks that follow it.
void find_sentence_ends(std::u32string_view text, std::vector<bool> &ends);

}  // namespace klib::programs
