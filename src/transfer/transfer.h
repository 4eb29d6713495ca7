// What the files of the transfer share: the word tables of one call of CopyFontsString, and its
// steps in their order.
//
//     source "ab{94}3{95}cd {98}Bold{99}ef"      target "wxyz uv"
//       word 0  text abcd  codes {3, at 2}         word 0  wxyz  source words 0
//       word 1  text ef    codes {Bold, at 0}      word 1  uv    source words 1
//     result "wx{94}3{95}yz {98}Bold{99}uv"
//
// Words and codes are views and numbers in a few arrays that live for the call; texts are shorter
// than 2 GiB, so 32 bits hold every offset in them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "frame/memory.h"
#include "klib.h"

namespace klib::transfer {

// A format code of the source sentence.
struct WordCode {
  uint32_t body;      // where its NUL-terminated body is in SourceTable's bodies
  uint32_t length;    // of the body
  uint32_t position;  // the code is before this offset in its word's text
  uint8_t kind;       // P_ANCHOR or P_FONT
  char before;        // the text's byte before it, if it is not at the start
  char after;         // the text's byte after it, if it is not at the end
};

// A word of the source sentence. Of its text, which is free of codes and of the delimiters of
// segments, the length and the bytes beside the codes are all that is ever asked for.
struct SourceWord {
  uint32_t first_code;  // its codes reach to the next word's
  uint32_t text_length = 0;
  uint32_t font_state = 0;  // number of the list of fonts in force when it begins
  bool has_text = false;    // also when all its text is an empty segment
};

// The words of the source sentence with their codes, in the order of the sentence.
struct SourceTable {
  memory::ArenaVector<SourceWord> words;
  memory::ArenaVector<WordCode> codes;
  memory::ArenaVector<char> bodies;  // each ends with a NUL
  bool has_anchors = false;          // anchor codes, or any code inside a segment

  [[nodiscard]] const char *body(const WordCode &code) const { return bodies.data() + code.body; }
  [[nodiscard]] std::span<const WordCode> codes_of(size_t word) const {
    const size_t end = word + 1 < words.size() ? words[word + 1].first_code : codes.size();
    return std::span(codes).subspan(words[word].first_code, end - words[word].first_code);
  }
};

// A word of the translation.
struct TargetWord {
  uint32_t start;  // offset in the caller's text
  uint32_t length;
  const int32_t *alignment = nullptr;  // numbers of source words up to -1

  [[nodiscard]] uint32_t end() const { return start + length; }
};

struct TargetTable {
  std::string_view text;  // the caller's
  memory::ArenaVector<TargetWord> words;

  [[nodiscard]] std::string_view word(size_t k) const {
    return text.substr(words[k].start, words[k].length);
  }
};

// In an alignment list: this word of the translation has no source word. In a sentence of more
// than 126 words it is also the number of a word.
inline constexpr int32_t unaligned = 126;

// A first list of this number alone asks for the default alignment, word by word.
inline constexpr int32_t default_request = 119;

// A code placed into the translation.
struct PlacedCode {
  uint32_t offset;  // of the byte before which it is placed
  uint32_t code;    // its number in SourceTable's codes
};

// word_tables.cpp
[[nodiscard]] bool has_codes(std::string_view source);  // or segments
[[nodiscard]] SourceTable read_source_words(std::string_view source, memory::Arena &arena);
[[nodiscard]] TargetTable read_target_words(std::string_view target, memory::Arena &arena);

// alignment.cpp

// The lists {k, -1}, or {126, -1} for words beyond the source's, owned by the caller.
using DefaultLists = memory::Vector<memory::Array<int32_t>>;
[[nodiscard]] DefaultLists make_default_alignment(TargetTable &targets, size_t source_words);

// 0 when the lists are valid, 1 for a negative number, 2 when their number is not that of the
// target words. Numbers that are no source word's become 126 in the caller's lists as it goes.
[[nodiscard]] int32_t check_alignment(int32_t *const *alignment, size_t target_words,
                                      size_t source_words);

// For every source word the target words that name it, ascending, one entry for each time.
struct AlignmentIndex {
  memory::ArenaVector<uint32_t> starts;  // of each source word's entries; one more at the end
  memory::ArenaVector<uint32_t> targets;
};
[[nodiscard]] AlignmentIndex index_alignment(const TargetTable &targets, size_t source_words,
                                             memory::Arena &arena);

// placement.cpp

// Every code of the source that finds a place, in the order of the translation's text; codes with
// one place in the order of the source.
[[nodiscard]] memory::ArenaVector<PlacedCode> distribute_codes(const SourceTable &source,
                                                               const TargetTable &targets,
                                                               memory::Arena &arena);

}  // namespace klib::transfer
