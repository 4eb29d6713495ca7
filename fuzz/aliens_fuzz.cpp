// Alien characters: reducing and putting back any texts; a text whose aliens are whole comes back.

#include <algorithm>

#include "fuzz/frame.h"
#include "klib.h"

using namespace klib::fuzz;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  fresh_library();
  const int32_t without_fonts = static_cast<int32_t>(input.below(2));
  const std::string source = input.text(), translation = input.text();

  Kfree(CopyAlienCharacters(source.c_str(), string_copy(translation.c_str()), without_fonts));

  std::string own = source;
  char *reduced = WithoutAlienCharacters(own.data());
  require(own == source, "the argument is never written to");
  require((reduced == own.data()) == (source.find('\x9D') == std::string::npos),
          "a text without markers comes back itself");
  bool whole = true;  // every marker is followed by four bytes that are not markers
  for (size_t at = 0; (at = source.find('\x9D', at)) != std::string::npos; at += 5)
    whole = whole && at + 5 <= source.size() &&
            source.find('\x9D', at + 1) >= std::min(at + 5, source.size());
  char *bare = reduced == own.data() ? string_copy(reduced) : reduced;
  char *back = CopyAlienCharacters(source.c_str(), bare, 0);
  if (whole) require(source == back, "whole alien characters come back");
  Kfree(back);
  return 0;
}
