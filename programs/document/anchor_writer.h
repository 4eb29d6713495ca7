// Writes the anchors of a document: the anchor text file and its index.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "programs/common/output_file.h"
#include "programs/document/anchor_file.h"

namespace klib::programs {

// The bytes are those of the library's own operations (store_anchor, finish_anchor_index_file),
// written in blocks. Failures, among them a file of 2 GiB, end the job (fail()).
class AnchorWriter {
 public:
  AnchorWriter(const std::string &name, const JobHeader &header);

  // Stores an anchor and returns its number, from 1; `partner` is that of a closing tag.
  int32_t add(Anchor::Kind kind, std::string_view raw, int32_t partner = 0);

  // All files of a job are finished before the first is published. The header gets the mark.
  void finish(const std::string &mark);
  OutputFile &text() { return text_; }
  OutputFile &index() { return index_; }

  int32_t count() const { return static_cast<int32_t>(offsets_.size()); }
  const ContentMark &mark() const { return mark_; }  // of the anchors

 private:
  void write(std::string_view bytes);

  std::string name_;
  OutputFile text_, index_;
  std::vector<int32_t> offsets_;
  ContentMark mark_;
  int64_t size_ = 0;  // of the text file
  size_t mark_position_;
};

}  // namespace klib::programs
