// A page, brought from its encoding to UTF-8, and back.
#pragma once

#include <iconv.h>

#include <string>
#include <string_view>

namespace klib::programs {

struct Page {
  std::string text;      // UTF-8, a byte order mark included
  std::string encoding;  // as iconv names it
};

// Reads a page in the encoding of its byte order mark, else the one it declares, else UTF-8. A page
// that is not valid there, would not come back as it was, or holds a NUL ends the job (fail()).
Page read_page(const char *name);

// Brings UTF-8 to an encoding, piece by piece.
class PageEncoder {
 public:
  // good() is false when iconv does not know the encoding.
  explicit PageEncoder(const std::string &encoding);
  ~PageEncoder();
  PageEncoder(const PageEncoder &) = delete;
  PageEncoder &operator=(const PageEncoder &) = delete;
  bool good() const { return utf8_ || converter_ != reinterpret_cast<iconv_t>(-1); }

  // Appends the text to `encoded`; a character that the encoding lacks becomes a numeric reference.
  // The text must be valid.
  void append(std::string_view text, std::string &encoded);
  void finish(std::string &encoded);  // back to the encoding's first state

 private:
  bool utf8_;
  iconv_t converter_ = reinterpret_cast<iconv_t>(-1);
};

}  // namespace klib::programs
