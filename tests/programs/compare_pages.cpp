// compare_pages PAGE RESULT: whether RESULT is PAGE, but for the freedoms that same_pages() gives.
// Says where they differ otherwise.
//
// The pages must be in an encoding that has ASCII as it is. A page in UTF-8 may have its references
// as characters of UTF-8, another one only as references.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/programs/same_pages.h"

using namespace klib::test;

namespace {

std::string read(const char *name) {
  std::ostringstream content;
  content << std::ifstream(name, std::ios::binary).rdbuf();
  return content.str();
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 3) return 2;
  const std::string first = read(argv[1]), second = read(argv[2]);
  Place page{first}, result{second};
  if (same_pages(page, result)) return 0;
  const auto line =
      1 + std::count(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(page.at), '\n');
  printf("%s:%ld: comes back as '%.40s'\n", argv[1], static_cast<long>(line),
         second.c_str() + std::min(result.at, second.size()));
  return 1;
}
