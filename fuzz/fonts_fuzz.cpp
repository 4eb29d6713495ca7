// Fonts: any declarations, then any steps of selecting, asking, saving and listing.
//
// A font that was selected alone is in force; listing what a text would change and putting a save
// back leave the answers as they were.

#include "fuzz/frame.h"
#include "klib.h"

using namespace klib::fuzz;

namespace {

std::string answers(const std::vector<std::string> &names) {
  std::string result;
  for (std::string name : names) result += Kis_font_selected(name.data()) != 0 ? '1' : '0';
  return result;
}

size_t release(char **list, bool with_texts) {
  size_t count = 0;
  for (; list != nullptr && list[count] != nullptr; ++count)
    if (with_texts) Kfree(list[count]);
  Kfree(list);
  return count;
}

void step(Input &input, const std::vector<std::string> &names) {
  std::string name = names[input.below(static_cast<uint32_t>(names.size()))];
  const uint8_t flags = input.byte();
  switch (input.below(6)) {
    case 0:
      Kselect_font(name.data());
      int32_t group, number;
      if (name.find('\xFF') == std::string::npos &&
          Kget_font_group_and_number(name.c_str(), &group, &number) == 0)
        Kis_font_selected(name.data());
      break;
    case 1:
      reset_named_font_groups();
      break;
    case 2:
      release(Kfont_changes_since_save(flags & 1, flags & 2, flags & 4), false);
      break;
    case 3: {
      const std::string before = answers(names), text = "a\x98" + name + "\x99" + name;
      release(Kfont_changes(text.c_str(), flags & 1, flags & 2), false);
      require(answers(names) == before, "listing changes leaves the selection as it was");
      require(release(Kfonts_in_string(text.c_str()), true) >= 1, "the text's font is listed");
      break;
    }
    case 4:
      Ksave_font_state();
      break;
    default:
      flags % 2 != 0 ? Krestore_font_state() : Kcleanup_font_save();
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  fresh_library();
  declare_fonts(input);
  std::vector<std::string> names;
  for (uint32_t n = 1 + input.below(6); n > 0; --n) names.push_back(input.text());
  for (uint32_t steps = input.below(60); steps > 0; --steps) step(input, names);

  const std::string before = answers(names);
  Ksave_font_state();
  for (std::string name : names) Kselect_font(name.data());
  reset_named_font_groups();
  Krestore_font_state();
  require(answers(names) == before, "putting a save back brings the selection back");
  P_cleanup_fonts();
  return 0;
}
