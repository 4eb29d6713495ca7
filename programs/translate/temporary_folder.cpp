#include "programs/translate/temporary_folder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "programs/common/program.h"

namespace klib::programs {

TemporaryFolder::TemporaryFolder() {
  const char *place = getenv("TMPDIR");
  name_ = std::string(place && *place ? place : "/tmp") + "/ktranslate.XXXXXX";
  if (!mkdtemp(name_.data())) {
    const std::string name = std::move(name_);
    fail(name.c_str(), 0, "cannot be made: %s", strerror(errno));
  }
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code error;
  std::filesystem::remove_all(name_, error);
}

}  // namespace klib::programs
