// docs/file-formats.md describes the records, of which only the first bytes are looked at.
#include "programs/document/anchor_kinds.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

#include "programs/common/program.h"
#include "programs/system/exhaustion.h"

namespace klib::programs {
namespace {

constexpr size_t longest_header = 200;
constexpr size_t block = 1 << 16;
constexpr size_t longest_start = 13;  // ')', ten digits, a blank

}  // namespace

AnchorKinds::Window AnchorKinds::open(const std::string &name) {
  Window window{name, std::unique_ptr<FILE, Closer>(fopen(name.c_str(), "rbe"))};
  struct stat status = {};
  if (!window.stream || fstat(fileno(window.stream.get()), &status) != 0)
    fail(name.c_str(), 0, "cannot be read: %s", error_text(errno));
  if (!S_ISREG(status.st_mode)) fail(name.c_str(), 0, "is no ordinary file");
  window.size = status.st_size;
  return window;
}

// The bytes at the position, as many as the file has.
std::string_view AnchorKinds::read(Window &window, int64_t position, size_t length) {
  const int64_t end = std::min(window.size, position + static_cast<int64_t>(length));
  if (position < 0 || position >= end) return {};
  const auto loaded = static_cast<int64_t>(window.bytes.size());
  if (position < window.begin || end > window.begin + loaded) {
    window.bytes.resize(static_cast<size_t>(
        std::min(window.size - position, static_cast<int64_t>(std::max(block, length)))));
    window.begin = position;
    if (fseeko(window.stream.get(), position, SEEK_SET) != 0 ||
        fread(window.bytes.data(), 1, window.bytes.size(), window.stream.get()) !=
            window.bytes.size())
      fail(window.name.c_str(), 0, "cannot be read: %s",
           errno != 0 ? error_text(errno) : "it ends early");
  }
  return {window.bytes.data() + (position - window.begin), static_cast<size_t>(end - position)};
}

AnchorKinds::AnchorKinds(const std::string &name)
    : text_(open(name)), index_(open(with_type(name.c_str(), "anx"))) {
  if (index_.size < 4 || index_.size % 4 != 0) fail(index_.name.c_str(), 0, "is no anchor index");
  const auto anchors = static_cast<int32_t>(std::min<int64_t>(index_.size / 4 - 1, INT32_MAX));
  if (offset(anchors) != text_.size)
    fail(index_.name.c_str(), 0, "does not fit %s: it ends at %lld, the file at %lld", name.c_str(),
         static_cast<long long>(offset(anchors)), static_cast<long long>(text_.size));
  const std::string_view beginning = read(text_, 0, longest_header);
  header_ = read_anchor_header(name.c_str(), beginning.substr(0, beginning.find('\n')));
}

// The place in the anchor text file where anchor index + 1 begins.
int64_t AnchorKinds::offset(int32_t index) {
  const std::string_view bytes = read(index_, int64_t{4} * index, 4);
  if (bytes.size() != 4) return -1;
  uint32_t value = 0;
  for (size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

void AnchorKinds::fail_at(int32_t number) const {
  fail(text_.name.c_str(), 0, "anchor %d is damaged", static_cast<int>(number));
}

AnchorKinds::Entry AnchorKinds::find(int32_t number) {
  if (number < 1 || number > index_.size / 4 - 1)
    fail(text_.name.c_str(), 0, "there is no anchor %d: the sentences belong to other anchors",
         static_cast<int>(number));
  const int64_t begin = offset(number - 1), end = offset(number);
  if (begin >= end) fail_at(number);
  const auto length = std::min(static_cast<size_t>(end - begin), longest_start);
  const std::string_view start = read(text_, begin, length);
  if (start.empty() || strchr("=*()<>[]@&", start[0]) == nullptr || start[0] == '\0')
    fail_at(number);
  Entry entry{static_cast<Anchor::Kind>(start[0]), 0};
  if (entry.kind == Anchor::close || entry.kind == Anchor::kept_end) {
    const char *const last = start.data() + start.size();
    const auto result = std::from_chars(start.data() + 1, last, entry.partner);
    if (result.ec != std::errc() || result.ptr == last || *result.ptr != ' ') fail_at(number);
  }
  return entry;
}

}  // namespace klib::programs
