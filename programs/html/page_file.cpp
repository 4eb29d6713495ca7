// Pages and their encodings. A page declares its encoding in its first 1024 bytes, by a meta
// element, under labels that often mean a larger encoding than their name says.
#include "programs/html/page_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "programs/common/program.h"
#include "programs/common/utf8.h"
#include "programs/html/tokenizer.h"

namespace klib::programs {
namespace {

constexpr size_t declared_within = 1024;
constexpr size_t longest_reset = 16;  // of what leads an encoding back to its first state

struct Label {
  std::string_view label;
  const char *encodings[2];  // in the order in which they are tried
};

constexpr Label labels[] = {
    {"utf8", {"UTF-8"}},
    {"utf-16", {"UTF-8"}},  // a page in which the declaration can be read is not UTF-16
    {"utf-16le", {"UTF-8"}},
    {"utf-16be", {"UTF-8"}},
    {"ascii", {"CP1252", "ISO-8859-1"}},
    {"us-ascii", {"CP1252", "ISO-8859-1"}},
    {"latin1", {"CP1252", "ISO-8859-1"}},
    {"iso-8859-1", {"CP1252", "ISO-8859-1"}},
    {"iso-8859-9", {"CP1254", "ISO-8859-9"}},
    {"iso-8859-11", {"CP874", "TIS-620"}},
    {"tis-620", {"CP874", "TIS-620"}},
    {"gb2312", {"GBK", "GB18030"}},
    {"gbk", {"GBK", "GB18030"}},
    {"shift_jis", {"CP932", "SHIFT_JIS"}},
    {"sjis", {"CP932", "SHIFT_JIS"}},
    {"x-sjis", {"CP932", "SHIFT_JIS"}},
    {"windows-31j", {"CP932", "SHIFT_JIS"}},
    {"euc-kr", {"CP949", "EUC-KR"}},
    {"ks_c_5601-1987", {"CP949", "EUC-KR"}},
    {"big5", {"BIG5-HKSCS", "BIG5"}},
};

int64_t line_of(std::string_view text, size_t position) {
  return 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n');
}

std::string read_file(const char *name) {
  const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(name, "rbe"), fclose);
  if (!file) fail(name, 0, "cannot be read: %s", strerror(errno));
  std::string bytes;
  char part[1 << 16];
  size_t count;
  while ((count = fread(part, 1, sizeof part, file.get())) > 0) {
    bytes.append(part, count);
    if (bytes.size() > INT32_MAX) fail(name, 0, "is too large: 2 GiB is the limit");
  }
  if (ferror(file.get())) fail(name, 0, "cannot be read: %s", strerror(errno));
  return bytes;
}

// What a meta element says, or an empty text.
std::string_view declared_by(std::string_view tag) {
  const std::string_view charset = attribute(tag, "charset");
  if (!charset.empty() || !equal_names(attribute(tag, "http-equiv"), "content-type"))
    return charset;
  const std::string_view content = attribute(tag, "content");
  size_t i = lower_case(content).find("charset");
  if (i == std::string_view::npos) return {};
  i = std::min(content.find_first_not_of(" \t\r\n\f=\"'", i + 7), content.size());
  return content.substr(i, content.find_first_of(" \t\r\n\f;\"'", i) - i);
}

// The label that the page declares, and in `line` where; an empty text when there is none.
std::string declared_label(std::string_view page, int64_t &line) {
  const std::string_view head = page.substr(0, declared_within);
  for (size_t i = 0; i < head.size();) {
    const Token token = next_token(head, i);
    i = token.end;
    if (token.kind != Token::start_tag) continue;
    if (equal_names(token.name, "script") || equal_names(token.name, "style"))
      i = end_of_raw_text(head, i, token.name);
    if (!equal_names(token.name, "meta")) continue;
    const std::string_view label = declared_by(head.substr(token.begin, token.end - token.begin));
    line = line_of(head, token.begin);
    if (!label.empty()) return lower_case(label);
  }
  return "";
}

// Whether all of `from` was brought over; otherwise `to` holds what precedes the first fault.
bool convert(const char *to_encoding, const char *from_encoding, std::string_view from,
             std::string &to) {
  const iconv_t converter = iconv_open(to_encoding, from_encoding);
  if (converter == reinterpret_cast<iconv_t>(-1)) return false;
  char *in = const_cast<char *>(from.data());
  size_t in_left = from.size(), result = 0;
  to.clear();
  do {
    const size_t done = to.size();
    to.resize(done + in_left + in_left / 2 + 64);
    char *out = to.data() + done;
    size_t out_left = to.size() - done - longest_reset;
    result = iconv(converter, &in, &in_left, &out, &out_left);
    out_left += longest_reset;
    if (result != static_cast<size_t>(-1)) iconv(converter, nullptr, nullptr, &out, &out_left);
    to.resize(to.size() - out_left);
  } while (result == static_cast<size_t>(-1) && errno == E2BIG);
  iconv_close(converter);
  return result != static_cast<size_t>(-1);
}

// Whether the page can be brought to UTF-8 and back; otherwise `fault` says why not and where.
bool decode(const std::string &bytes, const char *encoding, Page &page, std::string &fault,
            int64_t &line) {
  page.encoding = encoding;
  std::string back;
  if (page.encoding == "UTF-8") {
    const size_t invalid = find_invalid_utf8(bytes);
    fault = "is not valid UTF-8";
    line = invalid == std::string::npos ? 0 : line_of(bytes, invalid);
    page.text = bytes;
    return invalid == std::string::npos;
  }
  if (!convert("UTF-8", encoding, bytes, page.text)) {
    fault = "is not valid " + page.encoding;
    line = line_of(page.text, page.text.size());
    return false;
  }
  if (convert(encoding, "UTF-8", page.text, back) && back == bytes) return true;
  fault = "would not come back from UTF-8 as it is in " + page.encoding + ": convert it first";
  line =
      line_of(bytes, static_cast<size_t>(
                         std::mismatch(bytes.begin(), bytes.end(), back.begin(), back.end()).first -
                         bytes.begin()));
  return false;
}

bool is_known(const std::string &encoding) {
  // iconv looks past whatever is no part of a name, and has additions of its own.
  constexpr size_t longest_name = 64;
  constexpr const char *in_names = "abcdefghijklmnopqrstuvwxyz0123456789-_.:+()";
  if (encoding.size() > longest_name ||
      lower_case(encoding).find_first_not_of(in_names) != encoding.npos)
    return false;
  const iconv_t converter = iconv_open("UTF-8", encoding.c_str());
  if (converter == reinterpret_cast<iconv_t>(-1)) return false;
  iconv_close(converter);
  return true;
}

// The encodings to try, in their order.
Label choose(const char *name, const std::string &bytes, std::string &declared) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return {"", {"UTF-8"}};
  if (bytes.starts_with("\xFF\xFE")) return {"", {"UTF-16LE"}};
  if (bytes.starts_with("\xFE\xFF")) return {"", {"UTF-16BE"}};
  int64_t line = 0;
  declared = declared_label(bytes, line);
  if (declared.empty() || declared == "utf-8") return {"", {"UTF-8"}};
  for (const Label &row : labels)
    if (row.label == declared) return row;
  if (!is_known(declared)) fail(name, line, "unknown encoding '%s'", readable(declared).c_str());
  return {"", {declared.c_str()}};
}

}  // namespace

Page read_page(const char *name) {
  const std::string bytes = read_file(name);
  Page page;
  std::string declared, fault, first_fault;
  int64_t line = 0, first_line = 0;
  bool good = false;
  for (const char *encoding : choose(name, bytes, declared).encodings) {
    if (good || !encoding) continue;
    good = decode(bytes, encoding, page, fault, line);
    if (first_fault.empty()) first_fault = fault, first_line = line;
  }
  if (!good) fail(name, first_line, "%s", first_fault.c_str());
  const size_t nul = page.text.find('\0');
  if (nul != std::string::npos) fail(name, line_of(page.text, nul), "holds a NUL character");
  return page;
}

PageEncoder::PageEncoder(const std::string &encoding) : utf8_(encoding == "UTF-8") {
  if (!utf8_ && is_known(encoding)) converter_ = iconv_open(encoding.c_str(), "UTF-8");
}

PageEncoder::~PageEncoder() {
  if (converter_ != reinterpret_cast<iconv_t>(-1)) iconv_close(converter_);
}

void PageEncoder::append(std::string_view text, std::string &encoded) {
  if (utf8_) {
    encoded += text;
    return;
  }
  char *in = const_cast<char *>(text.data());
  size_t in_left = text.size();
  while (in_left > 0) {
    char part[4096], *out = part;
    size_t out_left = sizeof part;
    const size_t result = iconv(converter_, &in, &in_left, &out, &out_left);
    const int error = errno;
    encoded.append(part, sizeof part - out_left);
    if (result != static_cast<size_t>(-1) || error == E2BIG) continue;
    size_t position = text.size() - in_left;
    const std::string reference =
        "&#" + std::to_string(static_cast<uint32_t>(next_utf8(text, position))) + ";";
    in += position - (text.size() - in_left);
    in_left = text.size() - position;
    append(reference, encoded);
  }
}

void PageEncoder::finish(std::string &encoded) {
  char part[64], *out = part;
  size_t out_left = sizeof part;
  if (!utf8_) iconv(converter_, nullptr, nullptr, &out, &out_left);
  encoded.append(part, sizeof part - out_left);
}

}  // namespace klib::programs
