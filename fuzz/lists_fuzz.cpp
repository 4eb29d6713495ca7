// Word-list files: any content. Sorted lists are sorted and every line is found; what was dumped is
// read back the same.

#include <algorithm>

#include "fuzz/frame.h"
#include "klib.h"

using namespace klib::fuzz;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  fresh_library();
  const std::string word = input.text();
  const std::string name = scratch_file("list", input.rest());

  int32_t count = 0;
  char **entries = Kndxfile_to_array(name.c_str(), &count);
  for (int32_t i = 0; i < count; ++i) require(entries[i] >= entries[0], "entries are in one block");
  if (entries != nullptr) Kfree(entries[0]);
  Kfree(entries);

  if (Klist_in(name.c_str()) != 0) return 0;
  std::vector<std::string> lines(l_array, l_array + l_length);
  Ksort_list();
  std::sort(lines.begin(), lines.end());  // char_traits compare bytes as unsigned
  require(std::equal(lines.begin(), lines.end(), l_array, l_array + l_length),
          "the list is sorted");
  for (const std::string &line : lines) {
    const int32_t at = Klist_search(line.c_str());
    require(at >= 0 && at < l_length && line == l_array[at], "every line is found");
  }
  const int32_t at = Klist_search(word.c_str());
  require((at >= 0) == std::binary_search(lines.begin(), lines.end(), word),
          "a word is found only when it is there");
  Kdump_list("dump");
  Kdestroy_list();
  if (Klist_in("dump") == 0) {
    const bool same = std::equal(lines.begin(), lines.end(), l_array, l_array + l_length);
    const bool ends_empty = !lines.empty() && lines.back().empty();
    require(same || ends_empty, "a dumped list is read back the same");
    Kdestroy_list();
  }
  return 0;
}
