// What the programs know about the elements of HTML.
#pragma once

#include <string_view>

namespace klib::programs {

struct Element {
  enum Content {
    inlined,    // part of running text; elements that are not known are, too
    block,      // begins and ends paragraphs
    empty,      // without content and end tag: img, input ...
    separator,  // the same, but ends a sentence: br, hr ...
    raw,        // kept whole inside running text: script, textarea ...
    preserved,  // kept whole between paragraphs, with the elements inside it: pre ...
    nested,     // kept whole inside running text, with the elements inside it: svg ...
    caption     // a block whose content is text without tags: title
  };
  std::string_view name;
  Content content;
  int font_group;  // the place in font_groups of the formatting that it means, or -1
};

// The element of this name, spelled in any case.
Element element(std::string_view name);

}  // namespace klib::programs
