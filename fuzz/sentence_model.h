// Sentence files as their readers take them.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "programs/common/program.h"

namespace klib::fuzz {

using Fonts = std::array<int32_t, programs::font_group_count>;  // 0: plain

// A word of a frame. A character has the fonts that were selected last.
struct Word {
  std::string text;          // UTF-8
  std::vector<Fonts> fonts;  // of each character
};

// A frame, or with number -1 an anchor between frames.
struct Sentence {
  int32_t number;
  std::vector<int32_t> anchors;  // sorted
  std::vector<Word> words;
};

std::vector<Sentence> read_sentences(const char *name, const std::string &language);

std::vector<std::string> texts(const std::vector<Word> &words);

}  // namespace klib::fuzz
