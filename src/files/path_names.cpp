// Path names: types read and replaced, names made absolute, directories joined and listed.
//
// A type is what follows the last dot of a name; the types that the engine adds have three
// characters. '/' is the separator that is inserted; '/' and '\' are both understood. After a '\'
// only the byte that follows it counts, so that "\\" and "\/" are one separator and "a\b" has none.

#include <cstring>
#include <initializer_list>
#include <string_view>

#include "frame/memory.h"
#include "frame/messages.h"
#include "klib.h"
#include "parameters/parameters.h"
#include "platform/platform.h"

namespace klib::files {

namespace {

constexpr size_t type_size = 3;
constexpr size_t shortest_typed_name = 1 + 1 + type_size;  // "a.txt"
constexpr size_t working_directory_size = 512;             // the NUL included

bool is_separator(char byte) { return byte == '/' || byte == '\\'; }

memory::Text join(std::initializer_list<std::string_view> parts) {
  size_t size = 1;
  for (const std::string_view part : parts) size += part.size();
  memory::Text joined = memory::allocate_array<char>(size);
  char *next = joined.get();
  for (const std::string_view part : parts) next += part.copy(next, part.size());
  *next = '\0';
  return joined;
}

// A new text for the caller, null when memory is exhausted.
char *joined(std::initializer_list<std::string_view> parts) {
  return memory::guarded<char *>(nullptr, [&] { return join(parts).release(); });
}

}  // namespace

}  // namespace klib::files

// Exported names

using namespace klib;
using namespace klib::files;

char *Kfile_type(const char *name) {
  const char *dot = std::strrchr(name, '.');
  if (dot != nullptr) return string_copy(dot + 1);
  report_and_abort(MESSAGE_NAME_WITHOUT_DOT, name);
  return nullptr;
}

char *Knew_type(const char *name, const char *type, int32_t) {
  const std::string_view whole = name;
  if (whole.size() < shortest_typed_name) {
    report_and_abort(MESSAGE_NAME_TOO_SHORT_FOR_TYPE, name, type);
    return nullptr;
  }
  const std::string_view stem = whole.substr(0, whole.size() - type_size);
  if (stem.back() != '.') {
    report_and_abort(MESSAGE_DOT_AT_WRONG_POSITION, name);
    return nullptr;
  }
  return joined({stem, type});
}

char *Klib_pathname(const char *name, int32_t with_language) {
  const char *directory = parameters::text(parameters::Text::lib_directory);
  if (with_language == 0) return Kdirectory_append(directory, name);
  const char *language = Klang_lo_sh(parameters::text(parameters::Text::language));
  return joined({directory, "/", language, "/", name});
}

char *Kdirectory_append(const char *directory, const char *name) {
  return joined({directory, "/", name});
}

char *Kbin_pathname(const char *name) {
  return Kdirectory_append(parameters::text(parameters::Text::bin_directory), name);
}

char **Ksearch_path(const char *path, const char *base_name) {
  return memory::guarded<char **>(nullptr, [&] {
    memory::Vector<memory::Text> names;
    for (const char *byte = path; *byte != '\0'; ++byte) {
      if (*byte == '\\' && byte[1] != '\0') ++byte;
      if (!is_separator(*byte)) continue;
      const std::string_view directory(path, static_cast<size_t>(byte + 1 - path));
      names.push_back(join({directory, base_name}));
    }
    return memory::make_text_list(names).release();
  });
}

char *Kcwd() {
  return memory::guarded<char *>(nullptr, []() -> char * {
    memory::Text buffer = memory::allocate_array<char>(working_directory_size);
    if (platform::calls.working_directory(buffer.get(), working_directory_size) != nullptr)
      return buffer.release();
    report_and_abort(MESSAGE_NO_WORKING_DIRECTORY);
    return nullptr;
  });
}

char *Kpathname(const char *name) {
  if (is_separator(*name)) return string_copy(name);
  const memory::Text directory(Kcwd());
  return directory ? Kdirectory_append(directory.get(), name) : nullptr;
}
