// What kinds the anchors of a page are, read beside its sentences.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "programs/document/anchor_file.h"

namespace klib::programs {

// Looks up anchors in the anchor text file and its index, a block of each in memory at a time: they
// are numbered in the order of the page, so that a caller who follows the sentences reads both
// files from the front to the end. Failures (an index that does not fit, a wrong header, a number
// that the files do not have) end the job (fail()).
class AnchorKinds {
 public:
  struct Entry {
    Anchor::Kind kind;
    int32_t partner;  // of a closing tag of a pair: the number of the opening one, else 0
  };

  // `name` is that of the anchor text file; the index has the type anx.
  explicit AnchorKinds(const std::string &name);

  const JobHeader &header() const { return header_; }
  Entry find(int32_t number);

 private:
  struct Closer {
    void operator()(FILE *stream) const { fclose(stream); }
  };
  struct Window {  // a block of a file
    std::string name;
    std::unique_ptr<FILE, Closer> stream;
    int64_t size = 0, begin = 0;
    std::vector<char> bytes = {};
  };

  static Window open(const std::string &name);
  static std::string_view read(Window &window, int64_t position, size_t length);
  int64_t offset(int32_t index);
  [[noreturn]] void fail_at(int32_t number) const;

  Window text_, index_;
  JobHeader header_;
};

}  // namespace klib::programs
