// The compiler of regular expressions.
//
//   .  []  [^]       any byte; a byte in, or not in, a bracket expression
//   *  \{m\} \{m,\} \{m,n\}
//                    the item before it zero or more times; m, m or more, m to n times
//   \( \)  \1 - \9   a group; the text of the first to ninth group again
//   ^ at the start, $ at the end, \< \>
//                    the start and end of the text, of a word
//   \ and any other byte, and all other bytes: that byte
//
// One pass from left to right appends items to a form of at most 128 bytes and stops at the first
// error that it meets: room is asked for as soon as the kind of an item is known, before anything
// else about the item is looked at. Where there is nothing to repeat, '*' and '{' match themselves.
//
// Tested by regex_test.cpp.

#include <cstring>

#include "frame/messages.h"
#include "klib.h"
#include "pattern/regex.h"
#include "pattern/regex_bytes.h"
#include "text/bytes.h"

namespace klib::regex {

namespace {

enum Error : int32_t {
  none = 0,
  count_above_255 = 11,
  digit_expected = 16,
  no_such_group = 25,
  escaped_newline = 36,
  nothing_compiled_before = 41,
  unbalanced_group = 42,
  too_many_groups = 43,
  third_count = 44,
  interval_not_closed = 45,
  most_below_least = 46,
  bracket_not_closed = 49,
  form_too_long = 50,
};

struct Compilation {
  const char *at;                           // the next byte of the expression
  Expression &form;                         // what is compiled so far
  size_t size = 0;                          // of its items
  uint8_t *repeatable = nullptr;            // the last item, when it can be repeated
  unsigned opened = 0, closed = 0;          // groups so far
  unsigned depth = 0;                       // groups that are open now
  std::array<uint8_t, most_groups> open{};  // their indexes, innermost last
};

bool ends(char byte) { return byte == '\0' || byte == '\n'; }

bool has_room(const Compilation &c, size_t bytes) { return c.size + bytes + 1 <= form_size; }

Error put(Compilation &c, Code code) {
  if (!has_room(c, 1)) return form_too_long;
  c.form.items[c.size++] = code;
  c.repeatable = nullptr;
  return none;
}

Error put(Compilation &c, Code code, uint8_t operand) {
  if (!has_room(c, 2)) return form_too_long;
  c.form.items[c.size] = code;
  c.form.items[c.size + 1] = operand;
  c.size += 2;
  c.repeatable = nullptr;
  return none;
}

// The same for an item that a '*' or an interval may follow.
template <class... Operand>
Error put_repeatable(Compilation &c, Code code, Operand... operand) {
  uint8_t *item = &c.form.items[c.size];
  const Error error = put(c, code, operand...);
  c.repeatable = item;
  return error;
}

Error put_literal(Compilation &c, char byte) { return put_repeatable(c, literal, u8(byte)); }

// After '['. The first member is taken whatever it is; "first-last" adds a range of which `last`
// can be the first of the next range.
Error put_bracket(Compilation &c) {
  if (!has_room(c, 1 + 16)) return form_too_long;
  const bool negated = *c.at == '^';
  if (negated) ++c.at;
  Bitmap bitmap{};
  bool wide = false;
  uint8_t previous = 0;
  const char *at = c.at;
  for (const char *const first = at;; ++at) {
    uint64_t low = 0, high = 0;  // in registers, where an addition need not wait for the last one
    for (; plain_member[u8(*at)]; ++at) {
      previous = u8(*at);
      const uint64_t member = uint64_t{1} << previous % 64;
      low |= previous < 64 ? member : 0;
      high |= previous < 64 ? 0 : member;
    }
    bitmap.add_words(low, high);
    if (*at == ']' && at != first) break;
    const bool range = at != first && *at == '-' && at[1] != ']';
    if (range) ++at;
    if (*at == '\0' || (*at == '\n' && !range)) return bracket_not_closed;
    const uint8_t member = u8(*at);
    if (member >= 0x80 && !wide) {
      if (!has_room(c, 1 + 32)) return form_too_long;
      wide = true;
    }
    if (range && previous <= member)
      bitmap.add(previous, member);
    else
      bitmap.add(member);
    previous = member;
  }
  c.at = at + 1;
  if (negated && wide) bitmap.invert();
  if (negated) bitmap.put_nul(!wide);  // so that the NUL that ends the text never matches
  c.repeatable = &c.form.items[c.size];
  *c.repeatable = wide ? wide_set : negated ? negated_set : set;
  const size_t bitmap_size = wide ? 32 : 16;
  bitmap.store(c.repeatable + 1, bitmap_size);
  c.size += 1 + bitmap_size;
  return none;
}

Error read_count(Compilation &c, uint8_t &count) {
  unsigned value = 0;
  if (*c.at < '0' || *c.at > '9') return digit_expected;
  for (; *c.at >= '0' && *c.at <= '9'; ++c.at) {
    value = value * 10 + static_cast<unsigned>(*c.at - '0');
    if (value > 255) return count_above_255;
  }
  count = static_cast<uint8_t>(value);
  return *c.at == ',' || *c.at == '\\' ? none : digit_expected;
}

// After '\{', with an item to repeat.
Error put_interval(Compilation &c) {
  const Code code = plain(*c.repeatable);
  uint8_t *const counts = c.repeatable + 1 + operand_size(code);
  c.size = static_cast<size_t>(counts - c.form.items.data());
  if (!has_room(c, 2)) return form_too_long;
  uint8_t least = 0;
  if (const Error error = read_count(c, least); error != none) return error;
  uint8_t most = least;
  if (*c.at == ',') {
    ++c.at;
    most = unbounded;
    if (*c.at != '\\')
      if (const Error error = read_count(c, most); error != none) return error;
    if (*c.at == ',') return third_count;
  }
  if (*++c.at != '}') return interval_not_closed;
  ++c.at;
  if (most < least) return most_below_least;
  *c.repeatable = static_cast<uint8_t>(code + interval);
  counts[0] = least;
  counts[1] = most;
  c.size += 2;
  return none;
}

Error open_group(Compilation &c) {
  if (!has_room(c, 2)) return form_too_long;
  if (c.opened == most_groups) return too_many_groups;
  const auto index = static_cast<uint8_t>(c.opened++);
  c.open[c.depth++] = index;
  return put(c, group_start, index);
}

Error close_group(Compilation &c) {
  if (!has_room(c, 2)) return form_too_long;
  if (c.depth == 0) return unbalanced_group;
  ++c.closed;
  const uint8_t index = c.open[--c.depth];
  c.form.group_ends[index] = static_cast<uint8_t>(c.size);
  return put(c, group_end, index);
}

Error put_back_reference(Compilation &c, unsigned group) {
  if (!has_room(c, 2)) return form_too_long;
  if (group > c.closed) return no_such_group;
  ++c.form.references;
  return put_repeatable(c, back_reference, static_cast<uint8_t>(group - 1));
}

// After a backslash.
Error put_escaped(Compilation &c) {
  const char byte = *c.at;
  if (byte == '\0') return put_literal(c, '\\');
  if (byte == '\n') return escaped_newline;
  ++c.at;
  switch (byte) {
    case '(':
      return open_group(c);
    case ')':
      return close_group(c);
    case '<':
      return put(c, word_start);
    case '>':
      return put(c, word_end);
    case '{':
      return c.repeatable != nullptr ? put_interval(c) : put_literal(c, '{');
    default:
      break;
  }
  if (byte >= '1' && byte <= '9') return put_back_reference(c, static_cast<unsigned>(byte - '0'));
  return put_literal(c, byte);
}

Error put_literals(Compilation &c) {
  uint8_t *const items = c.form.items.data();
  uint8_t *item = items + c.size;
  const char *at = c.at;
  for (; ordinary[u8(*at)]; ++at, item += 2) {
    if (item + 2 + 1 > items + form_size) return form_too_long;
    item[0] = literal;
    item[1] = u8(*at);
  }
  c.at = at;
  c.size = static_cast<size_t>(item - items);
  c.repeatable = item - 2;
  return none;
}

Error put_next(Compilation &c) {
  switch (*c.at++) {
    case '\\':
      return put_escaped(c);
    case '[':
      return put_bracket(c);
    case '.':
      return put_repeatable(c, any);
    case '$':
      return ends(*c.at) ? put(c, end_anchor) : put_literal(c, '$');
    case '*':
      if (c.repeatable == nullptr) return put_literal(c, '*');
      if (repetition_of(*c.repeatable) == 0) *c.repeatable += zero_or_more;
      return none;
    default:
      --c.at;
      return put_literals(c);
  }
}

Error compile(Compilation &c) {
  c.form.anchored = *c.at == '^';
  c.form.references = 0;
  if (c.form.anchored) ++c.at;
  while (!ends(*c.at))
    if (const Error error = put_next(c); error != none) return error;
  if (c.depth != 0) return unbalanced_group;
  c.form.items[c.size++] = end;
  c.form.size = static_cast<uint8_t>(c.size);
  return none;
}

}  // namespace

const Expression *regex_compile(const char *text, Compiled &compiled) {
  const char *const expression = ends(*text) ? compiled.last : text;
  Error error = nothing_compiled_before;
  if (expression != nullptr) {
    Compilation compilation{expression, compiled.form};
    error = compile(compilation);
  }
  if (error != none) {
    Kmessage(MESSAGE_REGEX_ERROR, error);
    return nullptr;
  }
  compiled.last = expression;
  return &compiled.form;
}

}  // namespace klib::regex
