// Writes the text and markup of one sentence so that it is well nested.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "programs/common/program.h"

namespace klib::programs {

class NestedWriter {
 public:
  // An element with the number of its opening tag's anchor: the smaller number is further out.
  struct Element {
    int32_t number;
    std::string_view opening;  // must stay until the end of the sentence
    std::string closing;
    int group = -1;         // of a font
    bool outlives = false;  // closed behind the sentence
  };

  // Selects a font of a group from the next character on; number 0 selects none.
  void select(int group, const Element &font);
  void blank() { blank_is_due_ = true; }
  void text(std::string_view html);
  void bare_less_than();                              // a '<' that stands as itself
  void single(int32_t number, std::string_view raw);  // markup that is no element of a pair
  void open(const Element &element);
  void close(int32_t number);                    // the element opened under this number
  void close_from_before(std::string_view raw);  // an element opened before the sentence
  // Ends the sentence: closes what is open, but for elements that outlive it.
  void end();

  const std::string &result() const { return result_; }
  // Numbers of the elements that were closed and opened again.
  const std::vector<int32_t> &reopened() const { return reopened_; }

 private:
  void settle(int32_t limit);
  void close_unwanted_fonts();
  void open_wanted(int32_t limit, bool again);
  void push(const Element &element);
  void pop_to(size_t depth);
  void write_blank();

  std::string result_;
  std::vector<Element> stack_;
  std::unordered_map<int32_t, size_t> depth_;  // of the open elements that are no fonts
  std::map<int32_t, Element> suspended_;       // closed early, to be opened again
  Element wanted_[font_group_count] = {};      // by number; 0 for none
  bool is_open_[font_group_count] = {};
  size_t font_depth_[font_group_count] = {};
  int32_t interrupted_[font_group_count] = {};  // the wanted font that was closed early
  bool fonts_changed_ = false, blank_is_due_ = false;
  size_t behind_bare_ = ~size_t{0};  // the length of the result right behind a bare '<'
  std::vector<int32_t> reopened_;
};

}  // namespace klib::programs
