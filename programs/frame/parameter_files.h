// The parameter files of a job, which override the command line.
#pragma once

#include <string>
#include <vector>

namespace klib::programs {

// Where the parameter files are, as the command line says: one in LIB-DIRECTORY, and those of this
// name on the way to the files of a job.
struct ParameterFilePlaces {
  std::string directory, base_name;
};

// Sees to it that the parameter files of a job's first name are obeyed, which the library has read,
// and reports to scripts which there are. A file that exists and cannot be read, or that assigns
// what does harm, ends the job (fail()): the library passes such a file over.
std::vector<std::string> read_parameter_files(const ParameterFilePlaces &places,
                                              const std::string &first_name);

}  // namespace klib::programs
