// The encodings of pages, under the labels by which the web knows them.
#pragma once

#include <string_view>

namespace klib::programs {

struct Encoding {
  enum Kind { utf8, bytes, characters, refused };
  std::string_view name;  // the standard's, by which anchor files name it
  Kind kind;              // bytes: each is a character; characters: some have more than one byte
  const char *converter;  // iconv's name; of ASCII, and of what iconv is not asked about, none
  std::string_view labels;
};

// The encoding that a label means, whatever its case and the white space around it; null when the
// standard has no such label.
const Encoding *encoding_of_label(std::string_view label);

// The encoding of this name, or null. It need not have labels.
const Encoding *encoding_of_name(std::string_view name);

// ASCII alone, for pages that do not say what they are.
const Encoding &ascii_encoding();

// What is tried when a page is not valid in an encoding, or would not come back: null, or another.
const Encoding *next_encoding(const Encoding &encoding);

}  // namespace klib::programs
