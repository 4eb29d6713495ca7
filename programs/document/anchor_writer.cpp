// The index holds where each record begins, and the end of the file, as 32-bit little-endian
// numbers; docs/file-formats.md describes the records.
#include "programs/document/anchor_writer.h"

#include "programs/common/program.h"

namespace klib::programs {

AnchorWriter::AnchorWriter(const std::string &name, const JobHeader &header)
    : name_(name), text_(name), index_(with_type(name.c_str(), "anx")) {
  const std::string line = anchor_header(header);
  mark_position_ = mark_position(line);
  write(line);
}

void AnchorWriter::write(std::string_view bytes) {
  size_ += static_cast<int64_t>(bytes.size());
  if (size_ > INT32_MAX) fail(name_.c_str(), 0, "would pass 2 GiB");
  text_.write(bytes);
}

int32_t AnchorWriter::add(Anchor::Kind kind, std::string_view raw, int32_t partner) {
  offsets_.push_back(static_cast<int32_t>(size_));
  std::string mark(1, static_cast<char>(kind));
  if (kind == Anchor::close || kind == Anchor::kept_end)
    mark.append(std::to_string(partner)).append(" ");
  write(mark);
  write(raw);
  mark_.add(mark);
  mark_.add(raw);
  return static_cast<int32_t>(offsets_.size());
}

void AnchorWriter::finish(const std::string &mark) {
  offsets_.push_back(static_cast<int32_t>(size_));
  std::string bytes;
  for (const int32_t offset : offsets_)
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(offset >> shift & 0xFF);
  index_.write(bytes);
  text_.replace(mark_position_, mark);
  text_.finish();
  index_.finish();
}

}  // namespace klib::programs
