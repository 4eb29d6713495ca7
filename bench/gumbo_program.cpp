// Reads a page with gumbo, as a program of its own.

#include <gumbo.h>

#include <fstream>
#include <iterator>
#include <string>

int main(int argc, char **argv) {
  if (argc != 2) return 2;
  std::ifstream file(argv[1], std::ios::binary);
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  GumboOutput *output = gumbo_parse_with_options(&kGumboDefaultOptions, page.data(), page.size());
  const bool parsed = output != nullptr && output->root != nullptr;
  if (output != nullptr) gumbo_destroy_output(&kGumboDefaultOptions, output);
  return parsed ? 0 : 1;
}
