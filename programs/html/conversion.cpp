// Encodings in which each byte is a character are read by a table, which iconv fills: bytes 80 to
// 9F that it does not know are controls, as the Encoding Standard has them, and some bytes are read
// in the standard's way. All others are left to iconv.
#include "programs/html/conversion.h"

#include <algorithm>
#include <cerrno>
#include <new>

#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

const iconv_t no_converter = reinterpret_cast<iconv_t>(-1);
constexpr auto failed = static_cast<size_t>(-1);

struct Converter {
  iconv_t handle;

  Converter(const char *to, const char *from) : handle(iconv_open(to, from)) {
    if (handle == no_converter && errno == ENOMEM) throw std::bad_alloc();
  }
  ~Converter() {
    if (handle != no_converter) iconv_close(handle);
  }
  Converter(const Converter &) = delete;
  Converter &operator=(const Converter &) = delete;
};

// Bytes that iconv reads as other characters than the standard.
constexpr struct {
  std::string_view encoding;
  unsigned char byte;
  char32_t character;
} differences[] = {
    {"KOI8-U", 0xAE, 0x045E},    {"KOI8-U", 0xBE, 0x040E},         {"macintosh", 0xC6, 0x2206},
    {"macintosh", 0xF0, 0xF8FF}, {"x-mac-cyrillic", 0xFF, 0x20AC}, {"windows-1255", 0xCA, 0x05BA},
};

struct Table {
  char32_t character[256] = {};  // of each byte; 0: none, but for byte 0
};

char32_t character_of(iconv_t converter, unsigned byte) {
  char from = static_cast<char>(byte), *in = &from;
  char to[16], *out = to;
  size_t in_left = 1, out_left = sizeof to;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  if (iconv(converter, &in, &in_left, &out, &out_left) == failed) return 0;
  iconv(converter, nullptr, nullptr, &out, &out_left);  // a letter may wait for its accent
  size_t position = 0;
  const std::string_view text(to, sizeof to - out_left);
  return text.empty() ? 0 : next_utf8(text, position);
}

// False when iconv does not have the encoding.
bool make_table(const Encoding &encoding, Table &table) {
  for (unsigned byte = 0; byte < 0x80; byte++) table.character[byte] = byte;
  if (!encoding.converter) return true;
  const Converter converter("UTF-8", encoding.converter);
  if (converter.handle == no_converter) return false;
  for (unsigned byte = 0x80; byte < 0x100; byte++) {
    const char32_t c = character_of(converter.handle, byte);
    table.character[byte] = c == 0 && byte < 0xA0 ? byte : c;
  }
  for (const auto &row : differences)
    if (row.encoding == encoding.name) table.character[row.byte] = row.character;
  return true;
}

bool decode_bytes(const Encoding &encoding, std::string_view bytes, std::string &text) {
  Table table;
  if (!make_table(encoding, table)) return false;
  for (size_t i = 0; i < bytes.size(); i++) {
    const size_t plain = ascii_length(bytes.substr(i));
    text += bytes.substr(i, plain);
    i += plain;
    if (i == bytes.size()) break;
    const char32_t c = table.character[static_cast<unsigned char>(bytes[i])];
    if (c == 0) return false;
    append_utf8(c, text);
  }
  return true;
}

// Appends what iconv makes of the text, in parts. The result is the one of the last call of iconv.
size_t convert(iconv_t converter, char **in, size_t *in_left, std::string &to) {
  char part[4096];
  for (;;) {
    char *out = part;
    size_t out_left = sizeof part;
    const size_t result = iconv(converter, in, in_left, &out, &out_left);
    const int error = errno;
    to.append(part, sizeof part - out_left);
    if (result != failed || error != E2BIG || out_left == sizeof part) return result;
  }
}

bool decode_characters(const Encoding &encoding, std::string_view bytes, std::string &text) {
  const Converter converter("UTF-8", encoding.converter);
  if (converter.handle == no_converter) return false;
  char *in = const_cast<char *>(bytes.data());
  size_t in_left = bytes.size();
  const bool whole = convert(converter.handle, &in, &in_left, text) != failed;
  if (whole) convert(converter.handle, nullptr, nullptr, text);
  // A converter may let characters through that are none, and escape sequences it does not know.
  size_t fault = find_invalid_utf8(text);
  if (encoding.name == "ISO-2022-JP") fault = std::min(fault, text.find('\x1B'));
  if (fault != std::string::npos) text.resize(fault);
  return whole && fault == std::string::npos;
}

}  // namespace

bool decode(const Encoding &encoding, std::string_view bytes, std::string &text) {
  text.clear();
  if (encoding.kind == Encoding::bytes) return decode_bytes(encoding, bytes, text);
  if (encoding.kind == Encoding::characters) return decode_characters(encoding, bytes, text);
  text = bytes.substr(0, find_invalid_utf8(bytes));
  return text.size() == bytes.size();
}

PageEncoder::PageEncoder(std::string_view name) {
  const Encoding *encoding = encoding_of_name(name);
  if (!encoding || encoding->kind == Encoding::refused) return;
  utf8_ = encoding->kind == Encoding::utf8;
  good_ = true;
  if (encoding->kind == Encoding::bytes) {
    Table table;
    good_ = make_table(*encoding, table);
    byte_.resize(std::ranges::max(table.character) + 1);
    for (size_t byte = 0; byte < 0x100; byte++)
      byte_[table.character[byte]] = static_cast<char>(byte);
    byte_[0] = 0;
  } else if (encoding->kind == Encoding::characters) {
    converter_ = iconv_open(encoding->converter, "UTF-8");
    if (converter_ == no_converter && errno == ENOMEM) throw std::bad_alloc();
    good_ = converter_ != no_converter;
  }
}

PageEncoder::~PageEncoder() {
  if (converter_ != no_converter) iconv_close(converter_);
}

// Takes text up to a character that the table lacks.
bool PageEncoder::take_bytes(std::string_view text, size_t &position, std::string &encoded) const {
  while (position < text.size()) {
    const size_t plain = ascii_length(text.substr(position));
    encoded += text.substr(position, plain);
    position += plain;
    if (position == text.size()) break;
    size_t end = position;
    const char32_t c = next_utf8(text, end);
    if (c >= byte_.size() || byte_[c] == 0) return false;
    encoded += byte_[c];
    position = end;
  }
  return true;
}

// Takes text up to a character that the encoding lacks; false when there is one.
bool PageEncoder::take(std::string_view text, size_t &position, std::string &encoded) {
  if (!byte_.empty()) return take_bytes(text, position, encoded);
  char *in = const_cast<char *>(text.data()) + position;
  size_t in_left = text.size() - position;
  const bool whole = convert(converter_, &in, &in_left, encoded) != failed;
  position = text.size() - in_left;
  return whole;
}

void PageEncoder::append(std::string_view text, std::string &encoded) {
  if (utf8_) {
    encoded += text;
    return;
  }
  for (size_t position = 0; !take(text, position, encoded);) {
    const auto lacking = static_cast<uint32_t>(next_utf8(text, position));
    size_t begin = 0;
    take("&#" + std::to_string(lacking) + ";", begin, encoded);  // ASCII, which no encoding lacks
  }
}

void PageEncoder::finish(std::string &encoded) {
  if (converter_ != no_converter) convert(converter_, nullptr, nullptr, encoded);
}

}  // namespace klib::programs
