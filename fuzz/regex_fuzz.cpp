// Regular expressions: any expressions on any texts. The linear decision, and the one from the
// expression as it is written, agree with the backtracking matcher, wherever that one ends in time.

#include "fuzz/frame.h"
#include "klib.h"
#include "pattern/regex.h"

using namespace klib::fuzz;
namespace regex = klib::regex;

namespace {

constexpr size_t longest_for_backtracking = 12;

bool found_by_backtracking(const regex::Expression &expression, const regex::Subject &subject) {
  regex::Groups groups;
  regex::set_up(groups, expression);
  for (size_t at = 0; at <= (expression.anchored ? 0 : subject.length); ++at)
    if (regex::regex_match_at(subject, groups, subject.text + at, expression.items.data()))
      return true;
  return false;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  fresh_library();
  std::vector<std::string> expressions;
  for (uint32_t n = input.below(4) + 1; n > 0; --n) expressions.push_back(input.text());
  const std::string text = input.text();

  std::vector<char *> list;
  for (std::string &expression : expressions) list.push_back(expression.data());
  const auto count = static_cast<int32_t>(list.size());
  const int32_t found = regex_search(text.c_str(), count, list.data());
  require(found >= -1 && found < count, "the result is an index of the list");

  const std::string start = text.substr(0, longest_for_backtracking);
  const regex::Subject subject(start.c_str());
  regex::Compiled compiled;
  for (const std::string &expression : expressions) {
    const regex::Expression *form = regex::regex_compile(expression.c_str(), compiled);
    std::optional<regex::Subject> made;
    const regex::Answer written = regex::find_as_written(expression.c_str(), start.c_str(), made);
    require(form != nullptr || written == regex::Answer::unknown, "an error is not passed over");
    if (form == nullptr || form->size > 18) continue;
    const bool matches = found_by_backtracking(*form, subject);
    require(regex::regex_find(*form, subject) == matches, "both matchers agree");
    require(written == regex::Answer::unknown || (written == regex::Answer::yes) == matches,
            "an expression means the same as it is written");
  }
  return 0;
}
