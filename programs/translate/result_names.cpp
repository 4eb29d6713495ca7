#include "programs/translate/result_names.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>

#include "programs/common/program.h"
#include "programs/system/exhaustion.h"

namespace klib::programs {
namespace {

using std::filesystem::path;

// The name without "." and "..", from the root.
path whole_path(const path &name) {
  std::error_code error;
  const path absolute = std::filesystem::absolute(name, error);
  if (error) fail(name.c_str(), 0, "cannot be found: %s", error_text(error.value()));
  return absolute.lexically_normal();
}

path common_folder(const std::vector<path> &pages) {
  path common = pages.front().parent_path();
  for (const path &page : pages) {
    const path folder = page.parent_path();
    path shared;
    for (auto a = common.begin(), b = folder.begin();
         a != common.end() && b != folder.end() && *a == *b; ++a, ++b)
      shared /= *a;
    common = shared;
  }
  return common;
}

}  // namespace

std::vector<std::string> result_names(std::span<const char *const> pages,
                                      const std::string &directory) {
  std::vector<path> paths;
  for (const char *page : pages) {
    if (strcmp(page, "-") == 0)
      fail("standard input", 0, "has no name for a result in %s: use '- OUT'", directory.c_str());
    paths.push_back(whole_path(page));
  }
  const path common = paths.empty() ? path() : common_folder(paths);
  std::map<std::string, const char *> places;  // of all results, each with its page
  std::vector<std::string> names;
  for (size_t i = 0; i < paths.size(); i++) {
    const path result = path(directory) / paths[i].lexically_relative(common);
    names.push_back(result.string());
    const auto [place, is_new] = places.emplace(whole_path(result).string(), pages[i]);
    if (!is_new) fail(pages[i], 0, "has the same result as %s: %s", place->second, result.c_str());
  }
  return names;
}

void make_folders(const std::string &result) {
  const path folder = path(result).parent_path();
  std::error_code error;
  if (!folder.empty()) std::filesystem::create_directories(folder, error);
  if (error) fail(folder.c_str(), 0, "cannot be made: %s", error_text(error.value()));
}

}  // namespace klib::programs
