// The backtracking matcher.
//
// Goes through the items one by one. A repeated item first takes as little as it may; when the
// items after it fail, it takes one repetition after the other up to as many as it can, the
// innermost repetition first. (Only whether there is a match counts, and short texts of groups are
// more likely to occur again.) Where only one byte can follow, ends with another byte after them
// are passed over. No recursion: each repetition is one frame, so that the stack needed depends on
// the expression alone.
//
// Before a back-reference is compared, the items after it are looked at as far as the texts of
// their groups are known: a literal, or the end of the text, at the wrong distance saves the
// comparison.
//
// A back-reference to a group that is still open, as in \(\(a\)\1\), has no text yet and matches
// nothing, like one to a group that matched the empty string.
//
// Tested by regex_test.cpp.

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

#include "pattern/regex.h"

namespace klib::regex {

bool is_word_byte(uint8_t byte) {
  // Below 0x80 the letters and digits are the same in every locale.
  if (byte < 0x80)
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') || byte == '_';
  return std::isalpha(byte) != 0 || std::isdigit(byte) != 0;
}

namespace {

// A repetition that can still take more.
struct Frame {
  const uint8_t *next;      // the item after it
  const uint8_t *longest;   // its end with the greatest count
  const uint8_t *at;        // the end to be tried next,
  bool left;                // if there is one
  size_t step;              // between two ends
  const uint8_t *follower;  // an item that must match a byte at the end, or null
};

struct Run {
  const uint8_t *shortest, *longest;
  size_t step;
};

std::string_view group_text(const Groups &groups, const uint8_t *reference) {
  const uint8_t group = reference[1];
  if (!is_closed(*groups.expression, reference)) return {};
  const auto *start = reinterpret_cast<const char *>(groups.start[group]);
  return {start, static_cast<size_t>(groups.stop[group] - groups.start[group])};
}

bool is_at(std::string_view text, const Subject &subject, const uint8_t *position) {
  const auto left = static_cast<size_t>(subject.text + subject.length - position);
  if (text.empty()) return true;
  return text.size() <= left && *position == static_cast<uint8_t>(text[0]) &&
         std::memcmp(position, text.data(), text.size()) == 0;
}

// The ends of a repeated item that begins at the position; false when its least count is missed.
bool find_run(const Subject &subject, const Groups &groups, const uint8_t *item,
              const uint8_t *position, Run &run) {
  const Counts counts = counts_of(item);
  const Code code = plain(*item);
  const uint8_t *at = position;
  size_t count = 0;
  run.step = 1;
  if (code == back_reference) {
    const std::string_view text = group_text(groups, item);
    run = {position, position, text.size()};
    if (text.empty()) return true;
    for (; count < counts.most && is_at(text, subject, at); ++count) at += text.size();
  } else if (code == any) {
    count = std::min<size_t>(counts.most,
                             static_cast<size_t>(subject.text + subject.length - position));
    at += count;
  } else if (*item == literal + zero_or_more) {
    while (*at == item[1]) ++at;
  } else {
    for (; count < counts.most && consumes(item, *at); ++count) ++at;
  }
  run.shortest = position + counts.least * run.step;
  run.longest = at;
  return at >= run.shortest;
}

// Moves to the next end that is worth a try.
bool take_more(Frame &frame, const uint8_t *&position) {
  while (frame.left) {
    position = frame.at;
    frame.left = frame.at != frame.longest;
    if (frame.left) frame.at += frame.step;
    if (frame.follower == nullptr || consumes(frame.follower, *position)) return true;
  }
  return false;
}

// Whether the items from a back-reference on can match at the position by the lengths of what they
// match, as far as these are known, and by the literals among them.
bool lengths_fit(const Subject &subject, const Groups &groups, const uint8_t *item,
                 const uint8_t *position) {
  const auto length = static_cast<size_t>(position - subject.text);
  for (size_t at = length; at <= subject.length; item = next_item(item)) {
    switch (*item) {
      case back_reference:
        at += group_text(groups, item).size();
        break;
      case literal:
        if (subject.text[at++] != item[1]) return false;
        break;
      case end_anchor:
        return at == subject.length;
      default:
        return true;
    }
  }
  return false;
}

// An item without repetition: whether it matches at the position, which moves past it.
bool match_once(const Subject &subject, Groups &groups, const uint8_t *item,
                const uint8_t *&position) {
  if (*item == literal) return *position++ == item[1];  // the usual one; a table jump is dearer
  switch (*item) {
    case group_start:
      groups.start[item[1]] = position;
      return true;
    case group_end:
      groups.stop[item[1]] = position;
      return true;
    case end_anchor:
      return *position == '\0';
    case word_start:
      return is_word_start(subject.text, position);
    case word_end:
      return !is_word_byte(*position);
    case back_reference: {
      if (!lengths_fit(subject, groups, item, position)) return false;
      const std::string_view text = group_text(groups, item);
      groups.steps_left -= static_cast<int64_t>(text.size() / 64);
      if (!is_at(text, subject, position)) return false;
      position += text.size();
      return true;
    }
    default:
      return consumes(item, *position++);
  }
}

}  // namespace

const uint8_t *deciding_item(const uint8_t *item) {
  while (*item == group_start || *item == group_end) item = next_item(item);
  switch (*item) {
    case literal:
    case set:
    case wide_set:
    case negated_set:
      return item;
    default:
      return nullptr;
  }
}

bool regex_match_at(const Subject &subject, Groups &groups, const uint8_t *position,
                    const uint8_t *item) {
  std::array<Frame, form_size> frames;
  size_t depth = 0;
  while (*item != end) {
    if (--groups.steps_left <= 0) return false;
    if (repetition_of(*item) == 0) {
      if (match_once(subject, groups, item, position)) {
        item = next_item(item);
        continue;
      }
    } else if (Run run; find_run(subject, groups, item, position, run)) {
      groups.steps_left -= (run.longest - position) / 8;
      item = next_item(item);
      if (run.shortest == run.longest) {
        position = run.longest;
        continue;
      }
      frames[depth++] = {item, run.longest, run.shortest, true, run.step, deciding_item(item)};
    }
    while (depth != 0 && !take_more(frames[depth - 1], position)) --depth;
    if (depth == 0) return false;
    item = frames[depth - 1].next;
  }
  return true;
}

}  // namespace klib::regex
