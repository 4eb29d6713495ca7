// The main loop reports bad arguments into a log that is not open yet, so they are checked here, by
// the same rules: parameters with their values first, then nothing but file names.
#include "programs/common/arguments.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace klib::programs {
namespace {

// Whether `path` ends in a dot and a three-character type.
bool has_type(const char *path) {
  const char *slash = strrchr(path, '/');
  const char *name = slash ? slash + 1 : path;
  const size_t length = strlen(name);
  return length >= 5 && name[length - 4] == '.';
}

// Whether there is a parameter of this name. The tables exist while it is asked; the name is tried
// by a parameter line, which finds names as the command line does, apart from '=' and what a line
// skips before the name.
bool is_parameter(const char *name) {
  if (strchr(name, '=') || name[0] == ' ' || name[0] == '\x96') return false;
  const std::string line = std::string(name) + "=";
  return Kmanage_parameter_line(line.c_str()) != -1;
}

Arguments bad(const Program &program, const char *message, const char *name = "") {
  fprintf(stderr, "%s: %s%s\nTry '%s --help'.\n", program.name, message, name, program.name);
  return Arguments::bad;
}

Arguments check_names(const Program &program, int argc, char **argv, int first) {
  if (first >= argc) return bad(program, "no file names");
  if ((argc - first) % program.files != 0) {
    fprintf(stderr, "%s: %d file names, but each job takes %d\nTry '%s --help'.\n", program.name,
            argc - first, static_cast<int>(program.files), program.name);
    return Arguments::bad;
  }
  for (int i = first; i < argc; i += program.files)
    if (!has_type(argv[i]))
      return bad(program, "the name must end in a dot and a three-character type: ", argv[i]);
  return Arguments::good;
}

Arguments check_all(const Program &program, int argc, char **argv) {
  int i = 1;
  for (; i < argc && argv[i][0] == '-'; i += 2) {
    if (strcmp(argv[i], "-h") == 0 || strcmp(argv[i], "--help") == 0) {
      fputs(program.usage, stdout);
      return fflush(stdout) == 0 ? Arguments::help : Arguments::bad;
    }
    const char *name = argv[i] + 1;
    if (!is_parameter(name)) return bad(program, "unknown parameter: ", argv[i]);
    if (i + 1 == argc) return bad(program, "a value is missing behind ", argv[i]);
    if (strcmp(name, "LOG-PATHNAME") == 0 && argv[i + 1][0] != '\0' && !has_type(argv[i + 1]))
      return bad(program,
                 "the name of the log must end in a dot and a three-character type: ", argv[i + 1]);
  }
  return check_names(program, argc, argv, i);
}

}  // namespace

Arguments check_arguments(const Program &program, int argc, char **argv) {
  Ksourcecode_defaults_for_parms("");
  P_init_fonts();
  const Arguments result = check_all(program, argc, argv);
  P_cleanup_fonts();
  Kdestroy_kparm();
  return result;
}

}  // namespace klib::programs
