// A bare '<' or '&' is no markup only because of what follows it. So a reference there stays as it
// is written if its character would turn both into a tag or another reference.
#include "programs/html/text_reader.h"

#include <array>

#include "programs/common/sentence.h"
#include "programs/common/utf8.h"
#include "programs/html/references.h"

namespace klib::programs {
namespace {

bool is_letter(char32_t c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool continues_reference(char32_t c) {
  return is_letter(c) || c == '#' || c == ';' || (c >= '0' && c <= '9');
}

bool continues_tag(char32_t c) { return is_letter(c) || c == '/' || c == '!' || c == '?'; }

// By byte: ASCII from one on, but for what may be part of markup or begin a reference.
constexpr std::array<bool, 256> plain_from(size_t first) {
  std::array<bool, 256> plain{};
  for (size_t byte = first; byte <= '~'; byte++)
    plain[byte] = byte != '<' && byte != '>' && byte != '&';
  return plain;
}
constexpr auto is_plain = plain_from('!'), is_plain_or_white = plain_from(0);

// The position after the bytes of such a kind.
size_t skip(const std::array<bool, 256> &kind, std::string_view text, size_t i) {
  while (i < text.size() && kind[static_cast<unsigned char>(text[i])]) i++;
  return i;
}

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

bool TextReader::skip_plain() {
  if (bare_before_ != 0) return false;
  const size_t begin = position_;
  position_ = skip(is_plain_or_white, text_, begin);
  return position_ > begin;
}

std::string_view TextReader::take_plain() {
  if (bare_before_ != 0) return {};
  const size_t begin = position_;
  position_ = skip(is_plain, text_, begin);
  return text_.substr(begin, position_ - begin);
}

void read_text(std::string_view raw, std::u32string &text) {
  TextReader reader(raw);
  while (!reader.at_end()) {
    if (const std::string_view plain = reader.take_plain(); !plain.empty()) {
      append_plain(plain, text);
      continue;
    }
    const TextCharacter c = reader.next();
    text += c.bare ? c.character | bare_flag : c.character;
  }
}

bool is_invisible(char32_t c) {
  return c <= 0x20 || (c >= 0x7F && c <= 0xA0) || c == 0xAD || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200F) || (c >= 0x2028 && c <= 0x202F) ||
         (c >= 0x205F && c <= 0x206F) || c == 0x3000 || c == 0xFEFF;
}

}  // namespace klib::programs
