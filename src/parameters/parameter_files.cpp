// Parameter files: lines that assign parameters, and the chain of files read for a group of files.
//
// A parameter line is any line that contains the byte {96}; every other line is a comment:
//
//     line       = { " " | {96} } NAME "=" VALUE { " " }
//     e.g.         "  {96} KTI-WIDTH=72  "
//
// NAME and VALUE are taken unchanged, with the spaces beside the '='. For the file /a/b/doc.txt
// the chain is, each file overriding those before it,
//
//     LIB-DIRECTORY/BASENAME  /BASENAME  /a/BASENAME  /a/b/BASENAME  /a/b/doc.par
//
// where BASENAME is the parameter "PARAMETER-FILE-BASENAME". Files that do not exist, and
// directories of such a name, are passed over.

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "frame/memory.h"
#include "frame/messages.h"
#include "klib.h"
#include "parameters/parameters.h"
#include "platform/platform.h"

namespace klib::parameters {

namespace {

constexpr char line_mark = '\x96';
constexpr char before_name[] = {' ', line_mark, '\0'};
constexpr char after_value[] = " \n";
constexpr int32_t no_assignment = -2;

void read_if_there(const char *name) {
  if (name == nullptr || Kprobe_file(name) == 0 || platform::calls.is_directory(name)) return;
  Manage_parameter_file(name);
}

// Splits "NAME=VALUE" at its first '=' in place and assigns.
int32_t assign_parameter(char *assignment) {
  char *equals = std::strchr(assignment, '=');
  *equals = '\0';
  const int32_t number = parameter_number(assignment);
  last_parameter_type = parameter_type(number);
  if (number != -1) return set_parameter(number, equals + 1);
  Kmessage(MESSAGE_UNKNOWN_PARAMETER, assignment);
  return -1;
}

}  // namespace

}  // namespace klib::parameters

// Exported names

using namespace klib;
using namespace klib::parameters;

void Kread_all_parameter_files(const char *file_name) {
  // All names first: the files may assign the parameters from which names are made. A name that
  // cannot be made has been reported and is left out.
  const char *base_name = text(Text::parameter_file_basename);
  const memory::Text path(Kpathname(file_name));
  const memory::Text own(path ? Knew_type(path.get(), "par", 0) : nullptr);
  const memory::TextList directories(path ? Ksearch_path(path.get(), base_name) : nullptr);
  const memory::Text global(Kdirectory_append(text(Text::lib_directory), base_name));

  read_if_there(global.get());
  for (size_t i = 0; directories && directories[i] != nullptr; ++i) read_if_there(directories[i]);
  read_if_there(own.get());
}

void Manage_parameter_file(const char *file_name) {
  int32_t count = 0;
  const memory::Array<char *> lines(Kfile_to_array(file_name, &count));
  if (!lines) return;
  const memory::Text buffer(lines[0]);
  for (const char *line : std::span(lines.get(), static_cast<size_t>(count)))
    if (std::strchr(line, line_mark) != nullptr) Kmanage_parameter_line(line);
}

int32_t Kmanage_parameter_line(const char *parameter_line) {
  std::string_view line = parameter_line;
  line.remove_suffix(line.size() - (line.find_last_not_of(after_value) + 1));
  line.remove_prefix(std::min(line.find_first_not_of(before_name), line.size()));
  if (line.find('=') == line.npos) return no_assignment;
  return memory::guarded(-1, [&] { return assign_parameter(memory::copy(line).get()); });
}
