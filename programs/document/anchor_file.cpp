// Anchor files of the pipeline: a header line, then the records that docs/file-formats.md
// describes. The index is checked as a whole before the library takes it, so that a wrong one
// causes one clear message and not one for each anchor.
#include "programs/document/anchor_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

#include "klib.h"
#include "programs/common/program.h"
#include "programs/common/utf8.h"
#include "programs/document/slots.h"
#include "programs/system/exhaustion.h"

namespace klib::programs {
namespace {

constexpr int64_t longest_header = 200;
constexpr size_t block_size = 65536;
constexpr int32_t anchor_messages = 4;  // the library's set of messages about anchors

int open_file(const std::string &name, int64_t &size) {
  const int descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status = {};
  if (descriptor < 0 || fstat(descriptor, &status) != 0)
    fail(name.c_str(), 0, "cannot be read: %s", error_text(errno));
  if (!S_ISREG(status.st_mode)) {
    close(descriptor);
    fail(name.c_str(), 0, "is no ordinary file");
  }
  size = status.st_size;
  return descriptor;
}

std::string read_bytes(int descriptor, const std::string &name, int64_t from, int64_t size) {
  std::string bytes(static_cast<size_t>(size), '\0');
  errno = 0;
  if (pread(descriptor, bytes.data(), bytes.size(), from) != size)
    fail(name.c_str(), 0, "cannot be read: %s", errno != 0 ? error_text(errno) : "it ends early");
  return bytes;
}

int32_t little_endian(const char *bytes) {
  uint32_t value = 0;
  for (int i = 3; i >= 0; i--) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return static_cast<int32_t>(value);
}

bool is_kind(char c) { return c != '\0' && strchr("=*()<>[]@&", c) != nullptr; }

}  // namespace

AnchorFile::Descriptor::~Descriptor() {
  if (number >= 0) close(number);
}

AnchorFile::AnchorFile(const char *name) : name_(name) {
  check_index(with_type(name, "anx"));
  read_header();
}

void AnchorFile::check_index(const std::string &index_name) {
  int64_t text_size, index_size;
  text_.number = open_file(name_, text_size);
  index_.number = open_file(index_name, index_size);
  if (index_size < 4 || index_size % 4 != 0 || index_size > INT32_MAX)
    fail(index_name.c_str(), 0, "is no anchor index");
  const std::string bytes = read_bytes(index_.number, index_name, 0, index_size);
  count_ = static_cast<int32_t>(index_size / 4 - 1);
  int32_t before = 0;
  for (size_t i = 0; i < bytes.size(); i += 4) {
    const int32_t offset = little_endian(bytes.data() + i);
    if (offset < before)
      fail(index_name.c_str(), 0, "does not fit %s: the position of anchor %zu is %d",
           name_.c_str(), i / 4 + 1, static_cast<int>(offset));
    offsets_.push_back(before = offset);
  }
  if (before != text_size)
    fail(index_name.c_str(), 0, "does not fit %s: it ends at %d, the file at %lld", name_.c_str(),
         static_cast<int>(before), static_cast<long long>(text_size));
  times_read_.resize(offsets_.size());
}

void AnchorFile::read_header() {
  const int32_t size = offsets_.front();
  std::string line;
  if (size <= longest_header) line = read_bytes(text_.number, name_, 0, size);
  if (line.find('\n') + 1 != line.size()) line.clear();
  if (!line.empty()) line.pop_back();
  header_ = read_anchor_header(name_.c_str(), line);
}

// The bytes at a position, which are read in blocks: anchors mostly come in the order of the file.
std::string_view AnchorFile::bytes_at(int32_t position, size_t size) {
  const auto begin = static_cast<size_t>(position);
  if (begin < block_begin_ || begin + size > block_begin_ + block_.size()) {
    const size_t left = static_cast<size_t>(offsets_.back()) - begin;
    block_ = read_bytes(text_.number, name_, position,
                        static_cast<int64_t>(std::min(std::max(size, block_size), left)));
    block_begin_ = begin;
  }
  return std::string_view(block_).substr(begin - block_begin_, size);
}

Anchor AnchorFile::read(int32_t number) {
  const auto index = static_cast<size_t>(number);
  const auto size = static_cast<size_t>(offsets_[index] - offsets_[index - 1]);
  if (times_read_[index]++ > 0)
    Kmessage(anchor_messages, 150, "Anchor #%d read more than once.\n", number);
  std::string_view record = bytes_at(offsets_[index - 1], size);
  if (record.empty() || !is_kind(record[0]) || record.find('\0') != record.npos ||
      !is_valid_raw(record))
    fail(name_.c_str(), 0, "anchor %d is damaged", static_cast<int>(number));
  Anchor anchor{static_cast<Anchor::Kind>(record[0]), 0, {}};
  record.remove_prefix(1);
  if (anchor.kind == Anchor::close || anchor.kind == Anchor::kept_end) {
    const char *end = record.data() + record.size();
    const auto result = std::from_chars(record.data(), end, anchor.partner);
    if (result.ec != std::errc() || result.ptr == end || *result.ptr != ' ')
      fail(name_.c_str(), 0, "anchor %d is damaged", static_cast<int>(number));
    record.remove_prefix(static_cast<size_t>(result.ptr + 1 - record.data()));
  }
  anchor.raw = record;
  return anchor;
}

Anchor::Kind AnchorFile::report_lost(int32_t number) {
  Kmessage(anchor_messages, 152, "Anchor #%d lost.\n", number);
  const auto index = static_cast<size_t>(number);
  if (offsets_[index] == offsets_[index - 1]) return Anchor::single;
  const char mark = bytes_at(offsets_[index - 1], 1)[0];
  return is_kind(mark) ? static_cast<Anchor::Kind>(mark) : Anchor::single;
}

}  // namespace klib::programs
