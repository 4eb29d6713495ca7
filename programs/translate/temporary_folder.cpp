#include "programs/translate/temporary_folder.h"

#include <cerrno>
#include <cstdlib>

#include "programs/common/program.h"
#include "programs/system/exhaustion.h"
#include "programs/system/temporary_files.h"

namespace klib::programs {

TemporaryFolder::TemporaryFolder() {
  const char *place = getenv("TMPDIR");
  if (!make_temporary_folder(place && *place ? place : "/tmp", name_))
    fail(name_.c_str(), 0, "cannot be made: %s", error_text(errno));
}

TemporaryFolder::~TemporaryFolder() {
  if (!remove_temporary_folder())
    note(name_.c_str(), 0, "cannot be removed: %s", error_text(errno));
}

}  // namespace klib::programs
