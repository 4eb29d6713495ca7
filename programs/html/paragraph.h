// A page as a row of paragraphs, each a run of text and inline markup between block structure.
#pragma once

#include <string_view>
#include <vector>

#include "programs/document/kind.h"
#include "programs/html/protection.h"

namespace klib::programs {

// A part of an item of text or white space.
Item part_of(std::string_view page, const Item &item, size_t begin, size_t end);

class ParagraphReader {
 public:
  // The protection follows the reader through the page; slots are added as they are passed.
  ParagraphReader(std::string_view page, size_t begin, Protection &protection,
                  std::vector<Slot> &slots, std::string_view offer = "", bool takes_atoms = false)
      : page_(page),
        position_(begin),
        protection_(protection),
        slots_(slots),
        offer_(offer),
        takes_atoms_(takes_atoms) {}

  // The items of the next paragraph, often none; false after the last one. What is between the
  // paragraphs' items is block structure.
  bool next(std::vector<Item> &items);

 private:
  void take_slots(const Token &start);
  bool take_token(std::vector<Item> &items);
  bool is_offered(std::string_view name) const;
  bool take_verbatim(size_t end, std::vector<Item> &items);
  void take_runs(size_t begin, size_t end, std::vector<Item> &items);
  void take_text(size_t begin, size_t end, std::vector<Item> &items);

  std::string_view page_;
  size_t position_;
  std::vector<Attribute> attributes_;  // of the start tag that is being taken
  Protection &protection_;
  std::vector<Slot> &slots_;
  std::string_view offer_;   // elements whose text is offered instead of being kept whole
  bool takes_atoms_;         // "{{ }}" in a text is an item of its own
  size_t verbatim_end_ = 0;  // until there, white space but for single blanks stays as it is
  size_t drawing_end_ = 0;   // until there, svg
  size_t caption_end_ = 0;   // until there, text without tags follows
};

}  // namespace klib::programs
