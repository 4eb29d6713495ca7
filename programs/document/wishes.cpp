// The values of the options that kextract and ktranslate have in common.
#include "programs/document/wishes.h"

#include <algorithm>
#include <string_view>

#include "programs/common/program.h"

namespace klib::programs {

void check_wishes(const char *program, const char *offer, const char *placeable) {
  for (std::string_view left = offer ? offer : ""; !left.empty();) {
    const std::string_view name = left.substr(0, left.find(','));
    left.remove_prefix(std::min(name.size() + 1, left.size()));
    if (name != "textarea" && name != "pre" && name != "svg")
      fail(program, 0, "--offer: '%.*s' is none of textarea, pre and svg",
           static_cast<int>(std::min<size_t>(name.size(), 40)), name.data());
  }
  const auto is_plain = [](char c) { return c > ' ' && c <= '~'; };
  const std::string_view form = placeable ? placeable : "#";
  if (form.empty() || !std::ranges::all_of(form, is_plain))
    fail(program, 0, "--placeable: the form must be one word of ASCII, such as XXQ#");
}

}  // namespace klib::programs
