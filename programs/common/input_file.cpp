// Files that are read.
#include "programs/common/input_file.h"

#include <cerrno>
#include <cstring>

#include "programs/common/tell.h"

namespace klib::programs {

void CloseInput::operator()(FILE *stream) const {
  if (stream != stdin) fclose(stream);
}

InputFile open_input(const char *name) {
  InputFile file(strcmp(name, "-") == 0 ? stdin : fopen(name, "rbe"));
  if (!file) fail_reading(name);
  return file;
}

const char *input_name(const char *name) {
  return strcmp(name, "-") == 0 ? "standard input" : name;
}

void fail_reading(const char *name) {
  fail(input_name(name), 0, "cannot be read: %s", strerror(errno));
}

}  // namespace klib::programs
