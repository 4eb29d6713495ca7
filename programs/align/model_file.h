// Models in files.
#pragma once

#include <string>
#include <string_view>

#include "programs/align/model.h"

namespace klib::programs::align {

// The bytes of a model file: the same for the same model on every machine.
std::string write_model(const Model &model);

// Whether a file that begins so is a model, of any version.
bool is_model(std::string_view first_bytes);

// Reads them into a new model. Returns what is wrong with them, or nothing when they are good; any
// bytes may be passed.
std::string read_model(std::string_view bytes, Model &model);

}  // namespace klib::programs::align
