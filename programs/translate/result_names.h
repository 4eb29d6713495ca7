// Where the results of many pages go.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace klib::programs {

// The results of pages under `directory`: below it, each page has the place that it has below the
// pages' common folder. Two results of one name, a result that is one of the pages, and "-" end the
// job (fail()).
std::vector<std::string> result_names(std::span<const char *const> pages,
                                      const std::string &directory);

// Ends the job (fail()) when what is to be written, such as "its result", would replace the page.
void check_result_name(const char *page, const char *result, const char *what);

// Makes the folders on the way to a result. A failure ends the job (fail()).
void make_folders(const std::string &result);

}  // namespace klib::programs
