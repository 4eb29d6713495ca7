// A page as a row of paragraphs, each a run of text and inline markup between block structure.
#pragma once

#include <string_view>
#include <vector>

namespace klib::programs {

struct Item {
  enum Kind { text, white, open, close, single };  // the last three are markup
  Kind kind;
  size_t begin, end;      // in the page
  std::string_view name;  // of a tag
  size_t partner = none;  // of a tag that is one of a properly nested pair: the other's place
  bool visible = false;   // text that has a character to see
  // A tag without partner, of an element that may have been opened before the paragraph or may be
  // closed behind it: nothing in the paragraph crosses it.
  bool reaches_out = false;

  static constexpr size_t none = ~size_t{0};
  bool is_markup() const { return kind >= open; }
};

class ParagraphReader {
 public:
  ParagraphReader(std::string_view page, size_t begin) : page_(page), position_(begin) {}

  // The items of the next paragraph, often none; false behind the last one. What stands between the
  // paragraphs' items is block structure.
  bool next(std::vector<Item> &items);

 private:
  bool take_token(std::vector<Item> &items);
  void take_text(size_t begin, size_t end, std::vector<Item> &items);

  std::string_view page_;
  size_t position_;
  size_t caption_end_ = 0;  // until there, text without tags follows
};

}  // namespace klib::programs
