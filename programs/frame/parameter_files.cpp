// The library reports only to its log what it could not read, and goes on without it: in another
// language, say. So the files are read here again, and their lines assigned again; but for those of
// fonts, of which a second one would be another font.
#include "programs/frame/parameter_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "programs/common/input_file.h"
#include "programs/common/program.h"
#include "programs/frame/engine_parameters.h"

namespace klib::programs {
namespace {

constexpr char line_mark = '\x96';

std::string whole_file(const std::string &name) {
  const InputFile file = open_input(name.c_str());
  std::string bytes;
  char block[4096];
  for (size_t count; (count = fread(block, 1, sizeof block, file.get())) > 0;)
    bytes.append(block, count);
  if (ferror(file.get())) fail_reading(name.c_str());
  return bytes;
}

void obey_line(const char *file, int64_t number, const std::string &line) {
  const size_t begin = std::min(line.find_first_not_of(" \x96"), line.size());
  const size_t equals = std::min(line.find('=', begin), line.size());
  const std::string name = line.substr(begin, equals - begin);
  const EngineParameter *parameter = find_parameter(name.c_str());
  if (equals == line.size() || !parameter || name.starts_with("FONT")) return;
  std::string value = line.substr(equals + 1);
  value.resize(value.find_last_not_of(' ') + 1);
  const std::string fault = parameter->least != INT32_MIN ? check_value(*parameter, value) : "";
  if (!fault.empty()) fail(file, number, "%s: '%s' %s", name.c_str(), value.c_str(), fault.c_str());
  Kmanage_parameter_line(line.c_str());
}

void obey(const std::string &name) {
  const std::string bytes = whole_file(name);
  int64_t number = 0;
  for (size_t begin = 0; begin < bytes.size();) {
    const size_t end = std::min(bytes.find('\n', begin), bytes.size());
    std::string line = bytes.substr(begin, end - begin);
    if (line.ends_with('\r')) line.pop_back();
    number++;
    if (line.find(line_mark) != line.npos) obey_line(name.c_str(), number, line);
    begin = end + 1;
  }
}

// Whether there is such a file; none is in a directory that may not be searched.
bool exists(const std::string &name) {
  struct stat status;
  if (stat(name.c_str(), &status) == 0) return !S_ISDIR(status.st_mode);
  for (const int absent : {ENOENT, ENOTDIR, EACCES, ENAMETOOLONG})
    if (errno == absent) return false;
  fail_reading(name.c_str());
}

}  // namespace

std::vector<std::string> read_parameter_files(const ParameterFilePlaces &places,
                                              const std::string &first_name) {
  std::vector<std::string> names = {places.directory + "/" + places.base_name};
  if (const Text path(Kpathname(first_name.c_str()), Kfree); path) {
    char **above = Ksearch_path(path.get(), places.base_name.c_str());
    for (char **name = above; name && *name; name++) {
      const Text owned(*name, Kfree);
      names.emplace_back(*name);
    }
    Kfree(above);
    if (has_type(path.get())) names.push_back(with_type(path.get(), "par"));
  }
  std::erase_if(names, [](const std::string &name) { return !exists(name); });
  for (const std::string &name : names) {
    obey(name);
    record({name.c_str()}, "parameter-file", {});
  }
  return names;
}

}  // namespace klib::programs
