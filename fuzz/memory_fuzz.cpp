// Exhausted memory: allocations that fail at random while sentences are worked on. Nothing crashes
// or is left over, and with memory every operation works again.

#include "fuzz/frame.h"
#include "klib.h"
#include "platform/platform.h"

using namespace klib::fuzz;
namespace platform = klib::platform;

namespace {

uint32_t random_state, failing_of_256;

bool fails() {
  random_state = random_state * 1103515245 + 12345;
  return random_state >> 24 < failing_of_256;
}

void fail_at_random(uint32_t seed, uint32_t of_256) {
  random_state = seed;
  failing_of_256 = of_256;
  platform::calls.allocate = [](size_t size) { return fails() ? nullptr : std::malloc(size); };
  platform::calls.reallocate = [](void *block, size_t size) {
    return fails() ? nullptr : std::realloc(block, size);
  };
  platform::calls.allocate_zeroed = [](size_t elements, size_t size) {
    return fails() ? nullptr : std::calloc(elements, size);
  };
}

void release(char **list, bool with_texts) {
  for (char **text = list; with_texts && text != nullptr && *text != nullptr; ++text) Kfree(*text);
  Kfree(list);
}

bool transfer(const std::string &source, const std::string &target) {
  int32_t request[] = {119, -1};
  std::vector<int32_t *> alignment(target.size() + 2);
  alignment[0] = request;
  char *result = CopyFontsString(source.c_str(), target.c_str(), alignment.data());
  const bool made = result != nullptr;
  for (int32_t *list : alignment)
    if (list != request) Kfree(list);
  char *copy = string_copy(target.c_str());
  if (copy != nullptr) Kfree(CopyAlienCharacters(source.c_str(), copy, 1));
  Kfree(result);
  return made;
}

size_t count_tokens(const std::string &text) {
  size_t tokens = 0;
  init_parser(P_FONT | P_ANCHOR | P_CODE_LINE | P_COUNT);
  parse_from_string(text.c_str());
  while (parse(nullptr) != P_END) ++tokens;
  exit_parser();
  return tokens;
}

void work(const std::string &line, const std::string &source, const std::string &target) {
  Kmanage_parameter_line(line.c_str());
  release(Kfonts_in_string(source.c_str()), true);
  release(Kfont_changes(source.c_str(), 1, 0), false);
  transfer(source, target);
  count_tokens(source);
  Ksave_parameter_values();
  Krestore_parameter_values();
  if (Klist_in(scratch_file("list", target).c_str()) == 0) Ksort_list();
  Kdestroy_list();
  init_double_stack();
  for (int32_t i = 0; i < 60; ++i) push_on_double_stack(i, source.c_str());
  reuse_double_stack();
  free_double_stack();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  fresh_library();
  const auto seed = static_cast<uint32_t>(input.number());
  fail_at_random(seed, 1 + input.below(64));
  declare_fonts(input);
  const std::string line = input.text(), source = input.text(), target = input.text();
  for (int i = 0; i < 4; ++i) work(line, source, target);

  platform::reset();
  require(transfer(source, target), "a transfer has a result");
  const size_t tokens = count_tokens(source);
  require(tokens == count_tokens(source) && tokens <= source.size(), "a text has its tokens");
  require((tokens == 0) == source.empty(), "all of a text is in tokens");
  P_cleanup_fonts();
  return 0;
}
