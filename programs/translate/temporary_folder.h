// A folder of a run's own, for the files between the steps.
#pragma once

#include <string>

namespace klib::programs {

// In $TMPDIR, else /tmp; nobody else can look into it, and it disappears with the object. A failure
// ends the job (fail()).
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  const std::string &name() const { return name_; }

 private:
  std::string name_;
};

}  // namespace klib::programs
