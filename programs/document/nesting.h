// Writes the text and markup of one sentence so that it is well nested.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "programs/common/codes.h"

namespace klib::programs {

// Opening again what was closed before its time may cost no more than a number of bytes, since
// crossing elements could need it at every word. What would cost more is left out of the result and
// returned by too_costly(): it has to be put around the whole sentence, in another writer.
class NestedWriter {
 public:
  // An element with the number of its opening tag's anchor: the smaller number is further out.
  struct Element {
    int32_t number;
    std::string_view opening;  // must stay until the end of the sentence
    std::string closing;
    int group = -1;         // of a font
    bool outlives = false;  // closed after the sentence
  };

  explicit NestedWriter(size_t budget) : budget_(budget) {}

  // Puts elements around everything that follows, in this order from the outside to the inside.
  void put_around(const std::vector<Element> &elements);

  // Selects a font of a group from the next character on; number 0 selects none.
  void select(int group, const Element &font);
  void blank() { blank_is_due_ = true; }
  void text(std::string_view html);
  void bare_less_than();                              // a '<' that is no markup
  void single(int32_t number, std::string_view raw);  // markup that is no element of a pair
  void open(const Element &element);
  void close(int32_t number);                    // the element opened under this number
  void close_from_before(std::string_view raw);  // an element opened before the sentence
  // Ends the sentence: closes what is open, but for elements that outlive it.
  void end();

  const std::string &result() const { return result_; }
  // Numbers of the elements that were closed and opened again.
  const std::vector<int32_t> &reopened() const { return reopened_; }
  // The elements that could not be opened again for their cost.
  const std::vector<Element> &too_costly() const { return too_costly_; }

 private:
  void settle(int32_t limit);
  void close_unwanted_fonts();
  void open_wanted(int32_t limit, bool again);
  bool can_afford(const Element &element);
  void push(const Element &element);
  void pop_to(size_t depth);
  void write_blank();

  size_t budget_;  // bytes left
  std::string result_;
  std::vector<Element> stack_;
  std::unordered_map<int32_t, size_t> depth_;  // of the open elements that are no fonts
  std::map<int32_t, Element> suspended_;       // closed early, to be opened again
  Element wanted_[font_group_count] = {};      // by number; 0 for none
  bool is_open_[font_group_count] = {};
  size_t font_depth_[font_group_count] = {};
  int32_t interrupted_[font_group_count] = {};  // the wanted font that was closed early
  bool fonts_changed_ = false, blank_is_due_ = false;
  size_t behind_bare_ = ~size_t{0};  // the length of the result right after a bare '<'
  std::vector<int32_t> reopened_;
  std::vector<Element> too_costly_;
  std::unordered_set<int32_t> given_up_, fonts_opened_;  // numbers
};

}  // namespace klib::programs
