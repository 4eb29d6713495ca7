// The text of --help is made from the program's own tables and from those of all programs, within
// 80 columns.
#include "programs/frame/help.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "programs/common/languages.h"
#include "programs/frame/engine_parameters.h"
#include "programs/system/exhaustion.h"

namespace klib::programs {
namespace {

constexpr size_t columns = 80, help_column = 26;

constexpr Parameter parameters_of_all[] = {
    {"LOG-PATHNAME", "FILE", "where the library writes its log (nowhere)"},
    {"LIB-DIRECTORY", "DIR", "where the parameter file is"},
};

void append_row(const std::string &name, std::string_view help, std::string &text) {
  std::string line = std::string("  ").append(name);
  if (line.size() + 2 > help_column) {
    text += line + "\n";
    line.clear();
  }
  for (;;) {
    const size_t end = std::min(help.find('\n'), help.size());
    line.resize(help_column, ' ');
    text.append(line).append(help.substr(0, end)).append("\n");
    if (end == help.size()) return;
    help.remove_prefix(end + 1);
    line.clear();
  }
}

void append_option(const Option &option, std::string &text) {
  std::string name = std::string("--").append(option.name);
  if (option.value && option.value[0] == '[')
    name.append("[=").append(option.value + 1);
  else if (option.value)
    name.append(" ").append(option.value);
  append_row(name, option.help, text);
}

void append_uses(const Program &program, std::string &text) {
  std::string_view uses(program.files);
  for (bool first = true; !uses.empty(); first = false) {
    const size_t end = std::min(uses.find('\n'), uses.size());
    text.append(first ? "Usage: " : "   or: ").append(program.name);
    text.append(" [--OPTION | -PARAMETER VALUE] ... ").append(uses.substr(0, end)).append("\n");
    uses.remove_prefix(std::min(end + 1, uses.size()));
  }
}

void append_parameters(const Program &program, std::string &text) {
  text += "\nParameters of the engine, with their defaults:\n";
  for (const std::span<const Parameter> rows : {program.parameters, {parameters_of_all}})
    for (const Parameter &row : rows)
      append_row(std::string("-").append(row.name).append(" ").append(row.value), row.help, text);
  text += "Any other parameter may be given, too:\n";
  std::string line;
  for (const EngineParameter &row : engine_parameters()) {
    if (line.size() + strlen(row.name) + 3 > columns) text += line + "\n", line.clear();
    line.append(line.empty() ? "  -" : " -").append(row.name);
  }
  text += line + "\n";
}

bool print(const Program &program, const std::string &text) {
  fwrite(text.data(), 1, text.size(), stdout);
  if (fflush(stdout) == 0 && !ferror(stdout)) return true;
  fprintf(stderr, "%s: standard output cannot be written: %s\n", program.name, error_text(errno));
  return false;
}

}  // namespace

bool print_help(const Program &program, std::span<const Option> common) {
  std::string text;
  append_uses(program, text);
  text.append("\n").append(program.purpose).append("\nOptions:\n");
  for (const std::span<const Option> options : {program.options, common})
    for (const Option &option : options) append_option(option, text);
  text += "  --                      only file names follow\n";
  append_parameters(program, text);
  text += "\nLanguages, in any case, as names, short forms or standard codes:\n";
  text += list_of_languages();
  return print(program, text);
}

bool print_version(const Program &program) {
  return print(program, std::string(program.name) + " (klib) " KLIB_VERSION "\n");
}

}  // namespace klib::programs
