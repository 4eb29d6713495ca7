// Files that are read.
#include "programs/common/input_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "programs/common/tell.h"
#include "programs/system/exhaustion.h"

namespace klib::programs {

void CloseInput::operator()(FILE *stream) const {
  if (stream != stdin) fclose(stream);
}

InputFile open_input(const char *name) {
  InputFile file(strcmp(name, "-") == 0 ? stdin : fopen(name, "rbe"));
  if (!file) fail_reading(name);
  return file;
}

bool is_there(const std::string &name) {
  struct stat status;
  if (stat(name.c_str(), &status) == 0) return true;
  if (errno != ENOENT && errno != ENOTDIR) fail_reading(name.c_str());
  return false;
}

const char *input_name(const char *name) {
  return strcmp(name, "-") == 0 ? "standard input" : name;
}

void fail_reading(const char *name) {
  fail(input_name(name), 0, "cannot be read: %s", error_text(errno));
}

}  // namespace klib::programs
