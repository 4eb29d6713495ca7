// Between the encodings of pages and UTF-8.
#pragma once

#include <iconv.h>

#include <string>
#include <string_view>

#include "programs/html/encodings.h"

namespace klib::programs {

// Brings bytes to UTF-8. False when they are not valid in the encoding: `text` then holds what
// precedes the fault.
bool decode(const Encoding &encoding, std::string_view bytes, std::string &text);

// Brings UTF-8 to an encoding, piece by piece.
class PageEncoder {
 public:
  // By the encoding's name. good() is false when there is no such encoding.
  explicit PageEncoder(std::string_view encoding);
  ~PageEncoder();
  PageEncoder(const PageEncoder &) = delete;
  PageEncoder &operator=(const PageEncoder &) = delete;
  bool good() const { return good_; }

  // Appends the text to `encoded`; a character that the encoding lacks becomes a numeric reference.
  // The text must be valid.
  void append(std::string_view text, std::string &encoded);
  void finish(std::string &encoded);  // back to the encoding's first state

 private:
  bool take(std::string_view text, size_t &position, std::string &encoded);
  bool take_bytes(std::string_view text, size_t &position, std::string &encoded) const;

  bool good_ = false, utf8_ = false;
  std::string byte_;  // of each character, when all are single bytes; 0: none
  iconv_t converter_ = reinterpret_cast<iconv_t>(-1);
};

}  // namespace klib::programs
