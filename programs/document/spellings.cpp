#include "programs/document/spellings.h"

#include <algorithm>

#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

char32_t meant_by(const DocumentKind &kind, std::string_view spelling) {
  std::u32string text;
  kind.read_text(spelling, text);
  return text.size() == 1 ? text[0] : 0;
}

}  // namespace

bool Spellings::are_in_force(const std::vector<std::string_view> &spellings) const {
  return std::ranges::all_of(spellings, [&](std::string_view spelling) {
    const auto found = in_force_.find(meant_by(kind_, spelling));
    return found != in_force_.end() ? found->second == spelling : !spelling.starts_with('&');
  });
}

void Spellings::take(std::string_view record) {
  end_frame();
  while (!record.empty()) {
    const std::string_view spelling = record.substr(0, record.find(' '));
    record.remove_prefix(std::min(spelling.size() + 1, record.size()));
    const char32_t character = meant_by(kind_, spelling);
    if (character == 0) continue;
    in_force_.try_emplace(character, spelling);
    due_[character].emplace_back(spelling);
  }
}

void Spellings::end_frame() {
  for (auto &[character, spellings] : due_)
    if (!spellings.empty()) in_force_[character] = spellings.back();
  due_.clear();
}

std::string_view Spellings::next(char32_t character) {
  const auto found = in_force_.find(character);
  if (found == in_force_.end()) return {};
  if (const auto due = due_.find(character); due != due_.end() && !due->second.empty()) {
    found->second = due->second.front();
    due->second.pop_front();
  }
  return found->second;
}

}  // namespace klib::programs
