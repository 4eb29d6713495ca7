// The anchors of a page, read from the anchor text file and its index.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "programs/common/job_header.h"

namespace klib::programs {

struct Anchor {
  enum Kind {
    single = '=',       // as it is
    font = '*',         // the opening tag of a font
    open = '(',         // the opening tag of a pair in one sentence
    close = ')',        // the closing tag of a pair in one sentence
    opens_out = '<',    // an opening tag that is closed after its sentence
    closes_from = '>',  // a closing tag that was opened before its sentence
    kept = '[',         // a piece of a sentence that comes back as it is, up to its end
    kept_end = ']',     // where that piece ends
    value = '@',        // the next frame is the text of slots with this number
    spelling = '&'      // how characters that cannot be seen are written from here on
  };
  Kind kind;
  int32_t partner;  // of a closing tag of a pair and the end of a piece: the number of the first
  std::string raw;
};

// Writes to the log, as the library's own reading of anchors does, what was read twice. Failures
// (no file, an index that does not fit, a wrong header) end the job (fail()).
class AnchorFile {
 public:
  explicit AnchorFile(const char *name);  // of the anchor text file; the index has the type anx

  const JobHeader &header() const { return header_; }
  int32_t count() const { return count_; }
  bool has(int32_t number) const { return number >= 1 && number <= count_; }
  // The anchor of a number that the file has. Reading one twice is counted.
  Anchor read(int32_t number);
  int32_t times_read(int32_t number) const { return times_read_[static_cast<size_t>(number)]; }
  // Writes to the log that an anchor was not read, and returns its kind.
  Anchor::Kind report_lost(int32_t number);

 private:
  struct Descriptor {
    int number = -1;
    ~Descriptor();
  };

  void check_index(const std::string &index_name);
  void read_header();
  std::string_view bytes_at(int32_t position, size_t size);

  std::string name_;
  JobHeader header_;
  Descriptor text_, index_;
  int32_t count_ = 0;
  std::vector<int32_t> offsets_;  // of each anchor, and the end
  std::vector<int32_t> times_read_;
  std::string block_;  // of the text file
  size_t block_begin_ = 0;
};

}  // namespace klib::programs
