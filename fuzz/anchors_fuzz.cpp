// Anchor files: any index over any text does no harm, and anchors that were stored are read back.

#include <fcntl.h>

#include <cstring>

#include "fuzz/frame.h"
#include "klib.h"

using namespace klib::fuzz;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  fresh_library();

  std::string index_content = input.text();
  index_content += input.text();
  std::vector<int32_t> numbers;
  for (uint32_t i = input.below(8); i > 0; --i) numbers.push_back(input.number());
  scratch_file("hostile.anx",
               index_content + std::string(reinterpret_cast<const char *>(numbers.data()),
                                           numbers.size() * sizeof(int32_t)));
  scratch_file("hostile.anc", input.text());
  int32_t text = Kopen("hostile.anc", O_RDONLY), index = Kopen("hostile.anx", O_RDONLY);
  read_anchor_indexes(index);
  for (const int32_t n : {1, 2, 3, 2, 0, -1, INT32_MAX, INT32_MIN}) Kfree(read_anchor(text, n));
  Kcheck_all_anchors_used();
  free_anchor_indexes();
  Kclose(text, 0);
  Kclose(index, 0);

  std::vector<std::string> anchors;
  while (!input.empty()) anchors.push_back(input.text());
  scratch_file("own.anc", "head");
  scratch_file("own.anx", "");
  text = Kopen("own.anc", O_RDWR), index = Kopen("own.anx", O_RDWR);
  init_anchor_index_file();
  for (const std::string &anchor : anchors) store_anchor(text, index, anchor.c_str());
  finish_anchor_index_file(text, index);
  Kclose(index, 0);
  index = Kopen("own.anx", O_RDONLY);
  read_anchor_indexes(index);
  for (size_t k = 0; k < anchors.size(); ++k) {
    char *back = read_anchor(text, static_cast<int32_t>(k + 1));
    require(back != nullptr && anchors[k] == back, "a stored anchor is read back");
    Kfree(back);
  }
  free_anchor_indexes();
  Kclose(text, 0);
  Kclose(index, 0);
  return 0;
}
