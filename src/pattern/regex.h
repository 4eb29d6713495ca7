// Regular expressions inside the library: the compiled form, which compiler and matchers share, and
// the steps of a search.
//
//   regex_compile.cpp    expression -> compiled form, with the error numbers
//   regex_search.cpp     the exported searches; chooses how an expression is decided
//   regex_written.cpp    decides simple expressions as they are written, without a compiled form
//   regex_stretch.cpp    a quick look for bytes that every match holds, with regex_pair.cpp
//   regex_walk.cpp       the decision in linear time, with the files named in regex_walk.h; exact
//                        without back-references
//   regex_backtrack.cpp  the backtracking matcher; decides expressions with back-references
//
// Compiled forms (numbers are byte values, quoted characters are bytes of text):
//
//   ab\{2\}c      4 'a' 7 'b' 2 2 4 'c' 22
//   x*            5 'x' 22
//   \(a\)\(b\)    2 0 4 'a' 24 0 2 1 4 'b' 24 1 22
//   ^$            20 22, anchored
//   []]           12, sixteen bytes of which only byte 11 is not 0 but 32, 22
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace klib::regex {

// Item codes, their operands, and what each matches.
enum Code : uint8_t {
  group_start = 2,      // group index 0-8; nothing: the position becomes the start of the group
  literal = 4,          // a byte; that byte
  any = 8,              // any byte but the NUL that ends the text
  set = 12,             // 16-byte bitmap; a byte below 0x80 whose bit is set
  wide_set = 16,        // 32-byte bitmap; a byte whose bit is set
  end_anchor = 20,      // nothing, at the end of the text only
  end = 22,             // the match succeeds here
  group_end = 24,       // group index; nothing: the position becomes the end of the group
  word_start = 28,      // nothing, at the start of the text or where a word begins
  word_end = 30,        // nothing, where no byte of a word follows
  back_reference = 36,  // group index; the bytes that the group matched, again
  negated_set = 40,     // 16-byte bitmap; a byte from 0x80, or one below 0x80 whose bit is clear
};

// A repeated literal, any, set or back-reference has one of these added to its code. The least and
// the greatest count of an interval are two bytes after the item's operands.
inline constexpr uint8_t zero_or_more = 1;
inline constexpr uint8_t interval = 3;

inline constexpr uint8_t unbounded = 255;           // as a greatest count means
inline constexpr uint32_t unbounded_extra = 20000;  // this many beyond the least count

inline constexpr size_t most_groups = 9;
inline constexpr size_t form_size = 128;  // of a compiled form with its end item

// No repetition, zero_or_more or interval.
[[nodiscard]] constexpr uint8_t repetition_of(uint8_t code) {
  return (code & 1) != 0 ? code & 3 : 0;
}

[[nodiscard]] constexpr Code plain(uint8_t code) {
  return static_cast<Code>(code - repetition_of(code));
}

[[nodiscard]] constexpr size_t operand_size(Code code) {
  switch (code) {
    case set:
    case negated_set:
      return 16;
    case wide_set:
      return 32;
    case group_start:
    case group_end:
    case literal:
    case back_reference:
      return 1;
    default:
      return 0;
  }
}

// How often the item may match in a row.
struct Counts {
  uint32_t least, most;
};
[[nodiscard]] constexpr Counts counts_of(const uint8_t *item) {
  const uint8_t repetition = repetition_of(*item);
  if (repetition != interval) return repetition == 0 ? Counts{1, 1} : Counts{0, UINT32_MAX};
  const uint8_t *counts = item + 1 + operand_size(plain(*item));
  return {counts[0], counts[1] == unbounded ? counts[0] + unbounded_extra : counts[1]};
}

// By code, the bytes of an item with its operands and counts.
inline constexpr std::array<uint8_t, 64> item_sizes = [] {
  std::array<uint8_t, 64> sizes{};
  for (uint8_t code = 0; code < sizes.size(); ++code)
    sizes[code] = static_cast<uint8_t>(1 + operand_size(plain(code)) +
                                       (repetition_of(code) == interval ? 2 : 0));
  return sizes;
}();
[[nodiscard]] constexpr const uint8_t *next_item(const uint8_t *item) {
  return item + item_sizes[*item];
}

// A set of byte values. In an item it has one bit per value, that of value c being bit c % 8 of
// byte c / 8.
class Bitmap {
 public:
  Bitmap() = default;  // of no certain members, but Bitmap{} has none
  Bitmap(const uint8_t *bytes, size_t size) : words_{} {
    for (size_t i = 0; i < size; i += 8) {
      uint64_t word = 0;
      for (size_t k = 0; k < 8; ++k) word |= uint64_t{bytes[i + k]} << (k * 8);
      words_[i / 8] = word;
    }
  }
  void store(uint8_t *bytes, size_t size) const {
    for (size_t i = 0; i < size; i += 8) {
      const uint64_t word = words_[i / 8];
      for (size_t k = 0; k < 8; ++k) bytes[i + k] = static_cast<uint8_t>(word >> (k * 8));
    }
  }
  void add(uint8_t value) { words_[value / 64] |= uint64_t{1} << value % 64; }
  void add(uint8_t first, uint8_t last) {
    const uint64_t from = ~uint64_t{0} << first % 64, to = ~uint64_t{0} >> (63 - last % 64);
    if (first / 64 == last / 64) {
      words_[first / 64] |= from & to;
    } else {
      words_[first / 64] |= from;
      for (unsigned word = first / 64u + 1; word < last / 64u; ++word) words_[word] = ~uint64_t{0};
      words_[last / 64] |= to;
    }
  }
  // Those of the values 0 to 63, and 64 to 127, whose bit is set.
  void add_words(uint64_t low, uint64_t high) {
    words_[0] |= low;
    words_[1] |= high;
  }
  void add(const Bitmap &other) {
    for (size_t i = 0; i < words_.size(); ++i) words_[i] |= other.words_[i];
  }
  void invert() {
    for (uint64_t &word : words_) word = ~word;
  }
  void put_nul(bool in_set) { words_[0] = (words_[0] & ~uint64_t{1}) | (in_set ? 1 : 0); }

  // The values 64 * i to 64 * i + 63, the first one's bit lowest.
  [[nodiscard]] uint64_t word(size_t i) const { return words_[i]; }

  [[nodiscard]] bool test(uint8_t value) const {
    return (words_[value / 64] >> value % 64 & 1) != 0;
  }
  [[nodiscard]] static bool test(const uint8_t *bytes, uint8_t value) {
    return (bytes[value / 8] >> value % 8 & 1) != 0;
  }

 private:
  std::array<uint64_t, 4> words_;
};

struct Expression {
  bool anchored;       // it began with '^'
  uint8_t size;        // bytes of the form in use
  uint8_t references;  // back-references in it
  std::array<uint8_t, form_size> items;
  std::array<uint8_t, most_groups> group_ends;  // the offset of each group's end in the items
};

// The compiled expression of a search, and the text of the last one without an error.
struct Compiled {
  Expression form;
  const char *last = nullptr;
};

// Compiles up to the first NUL or newline; the empty expression means the last one.
// Result: the expression, valid until the next one is compiled. After an error, which is reported,
// null; `compiled.last` then stays as it is.
const Expression *regex_compile(const char *text, Compiled &compiled);

// A text to be searched.
struct Subject {
  explicit Subject(const char *bytes)
      : text(reinterpret_cast<const uint8_t *>(bytes)), length(std::strlen(bytes)) {}
  const uint8_t *text;
  size_t length;
};

enum class Answer : uint8_t { no, yes, unknown };

// Whether an expression matches at some position of the text. Unknown when it has to be compiled:
// all that have an error are among those. The subject is made once it is needed.
[[nodiscard]] Answer find_as_written(const char *expression, const char *text,
                                     std::optional<Subject> &subject);

// The same for a compiled expression.
[[nodiscard]] bool regex_find(const Expression &expression, const Subject &subject);

// What the backtracking matcher keeps during one search.
struct Groups {
  const Expression *expression;
  std::array<const uint8_t *, most_groups> start, stop;  // of the text that each group matched
  int64_t steps_left;                                    // 0 or less: they did not suffice
};

// Prepares for a search with this compiled form, which must outlive it. A step is an item that is
// tried at a position, or some bytes that a repetition passes.
inline void set_up(Groups &groups, const Expression &expression, int64_t most_steps = INT64_MAX) {
  groups.expression = &expression;
  groups.steps_left = most_steps;
}

// Whether a back-reference comes after the end of its group, which is open before that.
[[nodiscard]] inline bool is_closed(const Expression &expression, const uint8_t *reference) {
  return reference - expression.items.data() >= expression.group_ends[reference[1]];
}

// Whether the items from `item` on match at the position. False, too, when the steps do not suffice
// to find out.
[[nodiscard]] bool regex_match_at(const Subject &subject, Groups &groups, const uint8_t *position,
                                  const uint8_t *item);

// Whether a literal, any or set item, repeated or not, matches the byte.
[[nodiscard]] inline bool consumes(const uint8_t *item, uint8_t byte) {
  switch (plain(*item)) {
    case literal:
      return byte == item[1];
    case any:
      return byte != '\0';
    case set:
      return byte < 0x80 && Bitmap::test(item + 1, byte);
    case negated_set:
      return byte >= 0x80 || !Bitmap::test(item + 1, byte);
    default:
      return Bitmap::test(item + 1, byte);
  }
}

// The item that must match the byte at the position where the items from this one on match: a
// literal or set that comes first. Null when there is none.
[[nodiscard]] const uint8_t *deciding_item(const uint8_t *item);

// Whether a byte is a letter or a digit, in the locale of the process, or '_'.
[[nodiscard]] bool is_word_byte(uint8_t byte);

// Whether a position is the start of the text, or a word begins at it.
[[nodiscard]] inline bool is_word_start(const uint8_t *text, const uint8_t *position) {
  return position == text || (is_word_byte(*position) && !is_word_byte(position[-1]));
}

}  // namespace klib::regex
