// Parameter lines, parameter files and the command line, whatever they hold.

#include "fuzz/frame.h"
#include "klib.h"

using namespace klib::fuzz;

namespace {

int groups = 0;
void process(char *) {
  ++groups;
  if (groups % 2 == 0) Kcleanup_parameters();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  fresh_library();
  const uint32_t lines = input.below(6);
  for (uint32_t i = 0; i < lines; ++i) {
    const std::string line = input.text();
    const int32_t result = Kmanage_parameter_line(line.c_str());
    require((result == -2) == (line.find('=') == std::string::npos),
            "only a line without '=' returns -2");
  }

  std::vector<std::string> arguments = {"program"};
  for (uint32_t i = input.below(7); i > 0; --i) {
    static const char *const known[] = {"-LOGGING", "-LOG-PATHNAME", "-TIME-PROG", "-"};
    arguments.push_back(input.below(2) != 0 ? known[input.below(4)] : input.text());
  }
  arguments.push_back("doc.txt");
  arguments.push_back("doc.txt");
  std::vector<char *> argv;
  for (std::string &argument : arguments) argv.push_back(argument.data());
  const auto argc = static_cast<int32_t>(argv.size());
  const int32_t first = Kparse_command_arguments(argc, argv.data());
  require(first >= 1 && first <= argc, "the first file name is among the arguments");

  scratch_file("doc.par", input.rest());
  Kmain_loop(argc, argv.data(), "program", "", 1, reinterpret_cast<K_process_function>(process),
             nullptr, nullptr);
  Kdestroy_kparm();
  return 0;
}
