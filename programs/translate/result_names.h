// Where the results of many pages go.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace klib::programs {

// The results of pages under `directory`: below it, each page has the place that it has below the
// pages' common folder. Two results of one name and "-" end the job (fail()).
std::vector<std::string> result_names(std::span<const char *const> pages,
                                      const std::string &directory);

// Makes the folders on the way to a result. A failure ends the job (fail()).
void make_folders(const std::string &result);

}  // namespace klib::programs
