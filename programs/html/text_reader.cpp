// A bare '<' or '&' is no markup only because of what follows it. So a reference there stays as it
// is written if its character would turn both into a tag or another reference.
#include "programs/html/text_reader.h"

#include <array>

#include "programs/common/utf8.h"
#include "programs/html/references.h"

namespace klib::programs {
namespace {

bool is_letter(char32_t c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool continues_reference(char32_t c) {
  return is_letter(c) || c == '#' || c == ';' || (c >= '0' && c <= '9');
}

bool continues_tag(char32_t c) { return is_letter(c) || c == '/' || c == '!' || c == '?'; }

// By byte: visible ASCII that is never part of markup or of a reference.
constexpr auto is_plain = [] {
  std::array<bool, 256> plain{};
  for (size_t byte = '!'; byte <= '~'; byte++)
    plain[byte] = byte != '<' && byte != '>' && byte != '&';
  return plain;
}();

}  // namespace

TextCharacter TextReader::next() {
  const size_t begin = position_;
  const char32_t c = next_utf8(text_, position_);
  if (c == invalid_utf8) position_++;
  if (c == '&') {
    size_t end = 0;
    const char32_t meant = read_reference(text_, begin, end);
    const bool dangerous = (bare_before_ == '<' && continues_tag(meant)) ||
                           (bare_before_ == '&' && continues_reference(meant));
    if (meant && !dangerous) {
      position_ = end;
      bare_before_ = 0;
      return {meant, false};
    }
  }
  if (c == '<' || c == '&')
    bare_before_ = c;
  else if (bare_before_ == '<' || !continues_reference(c))
    bare_before_ = 0;
  return {c, c == '<' || c == '>' || c == '&'};
}

std::string_view TextReader::take_plain() {
  if (bare_before_ != 0) return {};
  const size_t begin = position_;
  while (position_ < text_.size() && is_plain[static_cast<unsigned char>(text_[position_])])
    position_++;
  return text_.substr(begin, position_ - begin);
}

bool is_invisible(char32_t c) {
  return c <= 0x20 || (c >= 0x7F && c <= 0xA0) || c == 0xAD || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200F) || (c >= 0x2028 && c <= 0x202F) ||
         (c >= 0x205F && c <= 0x206F) || c == 0x3000 || c == 0xFEFF;
}

}  // namespace klib::programs
