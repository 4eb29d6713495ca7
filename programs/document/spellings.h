// How invisible characters, such as a no-break space, are written: as themselves or as one of
// their references. A record lists, with blanks between them, how those of the next frame are
// written, in their order. The last one of a character stays in force for those that follow.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "programs/document/kind.h"

namespace klib::programs {

class Spellings {
 public:
  explicit Spellings(const DocumentKind &kind) : kind_(kind) {}

  // Whether characters in their order are written like this already.
  bool are_in_force(const std::vector<std::string_view> &spellings) const;

  // Takes the record of the next frame. The frame before has ended.
  void take(std::string_view record);
  void end_frame();

  // How the next such character is written; empty: itself.
  std::string_view next(char32_t character);
  bool are_all_themselves() const { return in_force_.empty(); }

 private:
  const DocumentKind &kind_;
  std::unordered_map<char32_t, std::string> in_force_;
  std::unordered_map<char32_t, std::deque<std::string>> due_;
};

}  // namespace klib::programs
