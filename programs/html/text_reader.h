// The characters of a page's text, references resolved.
#pragma once

#include <string>
#include <string_view>

namespace klib::programs {

struct TextCharacter {
  char32_t character;
  bool bare;  // a '<', '>' or '&' that is in the page as itself
};

// Reads text between tags, which is UTF-8 without white space. Other bytes are taken one by one.
class TextReader {
 public:
  explicit TextReader(std::string_view text) : text_(text) {}
  bool at_end() const { return position_ == text_.size(); }
  TextCharacter next();

  // The visible ASCII characters that follow, as far as each is nothing but itself.
  std::string_view take_plain();

  // Passes over the same characters, and over white space and controls between them; whether there
  // are any.
  bool skip_plain();

  size_t position() const { return position_; }

 private:
  std::string_view text_;
  size_t position_ = 0;
  char32_t bare_before_ = 0;  // '<' right before, or '&' and what may be of its reference
};

// Appends what take_plain() returned.
inline void append_plain(std::string_view plain, std::u32string &text) {
  const size_t size = text.size();
  text.resize(size + plain.size());
  for (size_t i = 0; i < plain.size(); i++) text[size + i] = static_cast<unsigned char>(plain[i]);
}

// Appends the characters of a text, with bare_flag (common/sentence.h) as kinds of documents do.
void read_text(std::string_view raw, std::u32string &text);

// Blanks, marks of no width and controls.
bool is_invisible(char32_t character);

}  // namespace klib::programs
