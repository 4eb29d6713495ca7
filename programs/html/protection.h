// Which text of a page is not to be translated: that of elements with translate="no" or the class
// "notranslate", in another language than the page's, and of code.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "programs/html/tokenizer.h"

namespace klib::programs {

// Follows the tags of a page. Only elements with such a mark, and what is open inside them, are
// remembered.
class Protection {
 public:
  // `language` is the standard code of the language from which the page is translated.
  Protection(std::string_view language, bool code_is_text)
      : languages_{std::string(language)}, code_is_text_(code_is_text) {}

  // Takes a tag. For an element without content and end tag only attributes matter: use
  // `protects()` for it.
  void start(std::string_view name, const std::vector<Attribute> &attributes);
  void end(std::string_view name);

  // Whether the text that follows is protected.
  bool is_on() const { return !open_.empty() && open_.back().state.is_on(); }
  // Whether a start tag protects its own attributes where it is.
  bool protects(std::string_view name, const std::vector<Attribute> &attributes) const;
  // Whether a value of lang or xml:lang names the language of the page.
  bool is_own_language(std::string_view value) const;

 private:
  struct State {
    bool off = false;      // by translate, class or being code
    bool foreign = false;  // by lang
    bool is_on() const { return off || foreign; }
  };
  struct Open {
    std::string_view name;
    State state;
  };

  State state_inside(std::string_view name, const std::vector<Attribute> &attributes) const;
  void end_by_start(std::string_view name);

  std::vector<std::string> languages_;  // codes: of the translation, of the page as it says
  bool code_is_text_;
  bool page_is_known_ = false;
  std::vector<Open> open_;
};

}  // namespace klib::programs
