// The searches with regular expressions: over the loaded word list and over a list of the caller's.
//
// Every expression of the list is compiled anew and tried on the text until one matches. Nothing
// outlives the call, and no memory is allocated.
//
// Tested by regex_test.cpp.

#include <cstring>

#include "klib.h"
#include "pattern/regex_linear.h"

namespace klib::regex {

namespace {

// Decides by backtracking from each position of the text, as far as the steps suffice.
bool match_anywhere(const Expression &expression, const Subject &subject, Groups &groups) {
  const uint8_t *first = expression.items.data();
  const uint8_t *decides = deciding_item(first);
  const uint8_t *past = subject.text + subject.length + 1;
  if (expression.anchored) return regex_match_at(subject, groups, subject.text, first);
  for (const uint8_t *at = subject.text; at != past && groups.steps_left != 0; ++at) {
    if (decides != nullptr && *decides == literal) {
      const auto left = static_cast<size_t>(past - at);
      at = static_cast<const uint8_t *>(std::memchr(at, decides[1], left));
      if (at == nullptr) return false;
    }
    if (regex_match_at(subject, groups, at, first)) return true;
  }
  return false;
}

// The index of the first expression from `first` on that matches, or -1.
int32_t find_any(const char *text, int32_t first, int32_t count, char **expressions) {
  if (count <= first) return -1;
  const Subject subject(text);
  Compiled compiled;
  for (int32_t i = first; i < count; ++i) {
    const Expression *expression = regex_compile(expressions[i], compiled);
    if (expression != nullptr && regex_find(*expression, subject)) return i;
  }
  return -1;
}

}  // namespace

Subject::Subject(const char *bytes)
    : text(reinterpret_cast<const uint8_t *>(bytes)), length(std::strlen(bytes)) {
  constexpr size_t half = sizeof last / 2;
  std::memset(&last[half], 0, half);
  if (length >= half)
    std::memcpy(&last[0], text + (length - half), half);
  else
    std::memcpy(&last[half - length], text, length);
}

bool regex_find(const Expression &expression, const Subject &subject) {
  Walk walk;
  begin(walk, expression);
  if (!may_match(walk, expression.anchored, subject)) return false;
  if (walk.references == 0) return true;
  // Backtracking is the quickest on most texts. On others sets may have to decide.
  const bool sets_can_decide = walk.references == 1 && subject.length <= longest_for_sets;
  Groups groups;
  set_up(groups, expression, sets_can_decide ? 64 + 4 * subject.length : UINT64_MAX);
  if (match_anywhere(expression, subject, groups)) return true;
  return groups.steps_left == 0 && match_one_reference(walk, expression.anchored, subject);
}

}  // namespace klib::regex

using klib::regex::find_any;

int32_t Kregex_search(const char *text) { return Kspecial_regex_search(text, 1); }

int32_t Kspecial_regex_search(const char *text, int32_t use_first) {
  return find_any(text, use_first != 0 ? 0 : 1, l_length, l_array) < 0 ? -1 : 1;
}

int32_t regex_search(const char *text, int32_t count, char **expressions) {
  return find_any(text, 0, count, expressions);
}
