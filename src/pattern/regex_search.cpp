// The searches with regular expressions: over the loaded word list and over a list of the caller's.
//
// Every expression of the list is compiled anew and tried on the text until one matches. Nothing
// outlives the call, and no memory is allocated.
//
// Tested by regex_test.cpp.

#include <cstring>
#include <optional>

#include "klib.h"
#include "pattern/regex_walk.h"
#include "text/bytes.h"

namespace klib::regex {

namespace {

// The literal with which the text of a back-reference begins; null when none certainly does.
const uint8_t *first_of_group(const Expression &expression, const uint8_t *reference) {
  const uint8_t *const items = expression.items.data(), *start = items;
  if (!is_closed(expression, reference)) return nullptr;
  while (*start != group_start || start[1] != reference[1]) start = next_item(start);
  const uint8_t *const first = deciding_item(start);
  const bool begins =
      first != nullptr && *first == literal && first - items < expression.group_ends[reference[1]];
  return begins ? first : nullptr;
}

// Finds the bytes that can follow a literal with which every match begins, from the item after it
// on. False when that is too much to find out.
bool find_followers(const Expression &expression, const uint8_t *item, Bitmap &followers) {
  for (followers = {};; item = next_item(item)) {
    switch (*item) {
      case group_start:
      case group_end:
        break;
      case literal + zero_or_more:
        followers.add(item[1]);
        break;
      case literal:
        followers.add(item[1]);
        return true;
      case back_reference: {
        const uint8_t *const first = first_of_group(expression, item);
        if (first == nullptr) return false;
        followers.add(first[1]);
        return true;
      }
      default:
        return false;
    }
  }
}

// Decides by backtracking from each position of the text, as far as the steps suffice.
bool match_anywhere(const Expression &expression, const Subject &subject, Groups &groups) {
  const uint8_t *first = expression.items.data();
  if (expression.anchored) return regex_match_at(subject, groups, subject.text, first);
  const uint8_t *decides = deciding_item(first);
  if (decides != nullptr && *decides != literal) decides = nullptr;
  Bitmap followers;
  const bool limited =
      decides != nullptr && find_followers(expression, next_item(decides), followers);
  const uint8_t *past = subject.text + subject.length + 1;
  for (const uint8_t *at = subject.text; at != past && groups.steps_left > 0; ++at) {
    if (decides != nullptr) {
      const auto left = static_cast<size_t>(past - at);
      at = static_cast<const uint8_t *>(std::memchr(at, decides[1], left));
      if (at == nullptr) return false;
      if (limited && !followers.test(at[1])) continue;
    }
    if (regex_match_at(subject, groups, at, first)) return true;
  }
  return false;
}

// Backtracking is the quickest on most texts with back-references. On others sets have to decide.
bool match_references(const Expression &expression, const Stretch &start, const Subject &subject) {
  Groups groups;
  set_up(groups, expression, 64 + 4 * static_cast<int64_t>(subject.length));
  if (match_anywhere(expression, subject, groups)) return true;
  if (groups.steps_left > 0) return false;
  Walk walk;
  begin(walk, expression);
  if (!may_match(walk, expression.anchored, start, subject)) return false;
  if (walk.references == 0) return true;
  if (walk.references == 1 && subject.length <= longest_for_sets)
    return match_one_reference(walk, expression.anchored, subject);
  groups.steps_left = INT64_MAX;
  return match_anywhere(expression, subject, groups);
}

bool walk_along(const Expression &expression, const Stretch &start, const Subject &subject) {
  Walk walk;
  begin(walk, expression);
  return may_match(walk, expression.anchored, start, subject);
}

bool fits_at_end(const Stretch &stretch, const Subject &subject) {
  return stretch.width <= subject.length &&
         fits(stretch, subject.text, subject.text + (subject.length - stretch.width));
}

// From an item with which a stretch has ended to the one with which another begins, or to the end.
const uint8_t *find_stretch(const uint8_t *item) {
  const auto is_passed = [](const uint8_t *at) {
    const Counts counts = counts_of(at);
    return *at == group_start || *at == group_end || counts.least != counts.most ||
           plain(*at) == back_reference;
  };
  while (is_passed(item)) item = next_item(item);
  return item;
}

// Whether a text has what an expression of several stretches cannot do without: the rarest of them,
// and the last one at its end, if the expression ends there.
bool has_stretches(const Stretch &start, const Subject &subject) {
  Stretch others[2], *next = others;
  const Stretch *rarest = &start;
  for (const uint8_t *item = start.past; !is_end(item = find_stretch(item));) {
    read_stretch(item, *next);
    item = next->past;
    if (*item == end_anchor && !fits_at_end(*next, subject)) return false;
    if (next->common >= rarest->common) continue;
    rarest = next;
    next = next == others ? others + 1 : others;
  }
  // Most texts have the others.
  constexpr uint32_t rare = 360;
  return rarest->common > rare || find(*rarest, subject) != Answer::no;
}

// Whether a text begins with the literals with which an expression begins.
bool begins_alike(const Expression &expression, const char *text) {
  for (const uint8_t *item = expression.items.data(); *item == literal; item = next_item(item))
    if (u8(*text++) != item[1]) return false;
  return true;
}

// The index of the first expression from `first` on that matches, or -1.
int32_t find_any(const char *text, int32_t first, int32_t count, char **expressions) {
  Compiled compiled;
  std::optional<Subject> subject;  // once its length is needed
  for (int32_t i = first; i < count; ++i) {
    if (const Answer found = find_as_written(expressions[i], text, subject);
        found != Answer::unknown) {
      if (found == Answer::yes) return i;
      compiled.last = expressions[i];
      continue;
    }
    const Expression *expression = regex_compile(expressions[i], compiled);
    if (expression == nullptr || (expression->anchored && !begins_alike(*expression, text)))
      continue;
    if (!subject) subject.emplace(text);
    if (regex_find(*expression, *subject)) return i;
  }
  return -1;
}

}  // namespace

bool regex_find(const Expression &expression, const Subject &subject) {
  Stretch start;
  read_stretch(expression.items.data(), start);
  const bool whole = is_end(start.past);
  if (expression.anchored) {
    if (!fits(start, subject.text, subject.text)) return false;
    if (whole) return *start.past == end || start.width == subject.length;
  } else if (whole && *start.past == end_anchor) {
    return fits_at_end(start, subject);
  } else if (whole) {
    if (const Answer found = find(start, subject); found != Answer::unknown)
      return found == Answer::yes;
  } else if (!has_stretches(start, subject)) {
    return false;
  }
  return expression.references != 0 ? match_references(expression, start, subject)
                                    : walk_along(expression, start, subject);
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
