// The parameters of the engine as the command line of the programs knows them.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace klib::programs {

struct EngineParameter {
  const char *name;
  bool is_number;
  int32_t least = INT32_MIN;  // of a number that can do harm below
};

// In the order in which the library finds them by name: numbers before texts.
std::span<const EngineParameter> engine_parameters();

// The parameter of exactly this name, or null.
const EngineParameter *find_parameter(const char *name);

// Checks a value and brings it to the form that the library takes: languages to their names. What
// is wrong with it, as the end of a sentence that begins with the value; empty when it is good.
std::string check_value(const EngineParameter &parameter, std::string &value);

}  // namespace klib::programs
