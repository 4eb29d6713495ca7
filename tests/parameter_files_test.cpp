// Parameter lines, parameter files and the chain of files for a group.

#include <filesystem>
#include <sstream>

#include "parameters/parameters.h"
#include "platform/platform.h"
#include "tests/support.h"

namespace klib::test {

namespace {

using parameters::combined, parameters::Text;

class ParameterFiles : public Library {};

TEST_F(ParameterFiles, AssignLines) {
  const auto assign = [](const char *line) { return Kmanage_parameter_line(bytes(line).c_str()); };
  EXPECT_EQ(assign(" {96} {96}KTI-WIDTH=73 {0A} {0A}"), 0);
  EXPECT_EQ(assign("BIN-DIRECTORY= a=b{09}  "), 0);
  EXPECT_EQ(assign("LANGUAGE="), 0);
  EXPECT_EQ(assign("{96}=7"), 0) << "the empty name is that of numeric parameter 19";
  EXPECT_EQ(assign("{96} LOGGING"), -2);
  EXPECT_EQ(last_parameter_type, 0x24);
  EXPECT_EQ(log(), "");
  EXPECT_EQ(std::to_string(number_of("KTI-WIDTH")) + show(text_of("BIN-DIRECTORY")) +
                text_of("LANGUAGE") + std::to_string(number_of("")),
            "73 a=b{09}7");
  EXPECT_EQ(assign("LOGGING =1"), -1);
  EXPECT_EQ(log(),
            "Cannot get parameter type of parameter -1.\nI don't know this parameter: LOGGING \n");
}

// Every file shows that it was read by a name that no parameter has, and assigns other directories.
TEST_F(ParameterFiles, ReadTheWholeChainInItsOrder) {
  std::filesystem::create_directories("a/b.c");
  const std::string assignments =
      "\x96LIB-DIRECTORY=no\nKTI-WIDTH=1\n\x96PARAMETER-FILE-BASENAME=no";
  std::filesystem::create_directory("lib");
  for (const std::string name : {"lib/P", "P", "a/P", "a/b.c/P", "a/b.c/doc.par"})
    write_file(name, "\x96 " + name + "=\r\n" + assignments);
  const auto chain_of = [this](const std::string &name) {
    parameters::store_parameter_value(combined(Text::lib_directory), "lib");
    parameters::store_parameter_value(combined(Text::parameter_file_basename), "P");
    Kread_all_parameter_files(name.c_str());
    std::string read, line;
    for (std::istringstream lines(log()); std::getline(lines, line);)
      if (!line.starts_with("Cannot get")) read += "[" + line.substr(line.rfind(' ') + 1) + "]";
    return read;
  };
  EXPECT_EQ(chain_of("a/b.c/doc.txt"), "[lib/P][P][a/P][a/b.c/P][a/b.c/doc.par]");
  EXPECT_EQ(chain_of(directory_ + "/a/x.txt"), "[lib/P][P][a/P]");
  std::filesystem::create_directory("a/x.par");
  std::filesystem::remove("P");
  std::filesystem::create_directory("P");
  EXPECT_EQ(chain_of("a/x.txt"), "[lib/P][a/P]") << "directories of such names are passed over";
  EXPECT_EQ(chain_of("a/plain"), "[position.][aborted.]");
  EXPECT_STREQ(text_of("LIB-DIRECTORY"), "no") << "the other files of the chain are still read";
  EXPECT_EQ(number_of("KTI-WIDTH"), 999999) << "a line without the mark is a comment";
}

}  // namespace

}  // namespace klib::test
