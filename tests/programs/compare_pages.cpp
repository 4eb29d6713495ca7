// compare_pages PAGE RESULT: whether RESULT is PAGE, apart from the differences that same_pages()
// allows; otherwise says where they differ.
//
// The pages are compared as UTF-8.
#include <algorithm>
#include <cstdio>
#include <string>

#include "programs/html/page_file.h"
#include "tests/programs/same_pages.h"

using namespace klib::test;

namespace {

std::string read(const char *name) { return klib::programs::read_page(name, "").text; }

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
