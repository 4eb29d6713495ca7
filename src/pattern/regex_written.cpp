// Decides expressions as they are written, where to compile one would take as long as the search.
//
// Plain ones, of bytes that match themselves, are searched by strstr, or after '^' compared with
// the text. The others always take the same number of bytes, and are short: bytes that match
// themselves, '.', bracket expressions of ASCII members without a range, \<, \>, and '$' at the
// end. The longest run of bytes that match themselves is looked for, or where none are side by side
// the first and the last. Where they are in the text, the expression is read along with it.
//
// Tested by regex_test.cpp.

#include <cstring>

#include "pattern/regex.h"
#include "pattern/regex_bytes.h"
#include "pattern/regex_pair.h"

namespace klib::regex {

namespace {

// A compiled form has room for any expression of this length, even for one of seven sets.
constexpr ptrdiff_t longest = 23;

struct Written {
  const char *past;  // its end, or the '$' there
  size_t width;      // the bytes that it takes
  const char *run;   // the longest run of bytes that match themselves, of those the first one,
  size_t run_size;   // 0 when there is none
  LiteralPair pair;  // the first byte of this run, and the last that matches itself
};

const char *pass_ordinary(const char *at) {
  while (ordinary[u8(*at)]) ++at;
  return at;
}

bool begins_with(const char *text, const char *run) {
  while (*run != '\0' && *run == *text) {
    ++run;
    ++text;
  }
  return *run == '\0';
}

// From after '[' to after ']'; null for a bracket expression that has to be compiled.
const char *pass_bracket(const char *at) {
  if (*at == '^') ++at;
  size_t members = 0;
  while (plain_member[u8(at[members])]) ++members;
  return members != 0 && at[members] == ']' ? at + members + 1 : nullptr;
}

// False for an expression that has to be compiled. `at` is where its first run ends, or its
// beginning. Values are stored one by one, as a copy of them all would have to wait.
bool read(const char *expression, const char *at, Written &written) {
  const char *run = expression;
  size_t width = 0, longest_run = 0;
  for (;; at = pass_ordinary(run)) {
    if (at != run) {
      const auto size = static_cast<size_t>(at - run);
      if (size > longest_run) {
        longest_run = size;
        written.run = run;
        written.pair.at[0] = width;
        written.pair.literal[0] = u8(*run);
      }
      width += size;
      written.pair.at[1] = width - 1;
      written.pair.literal[1] = u8(at[-1]);
    }
    if (*at == '[') {
      run = pass_bracket(at + 1);
      if (run == nullptr) return false;
      ++width;
    } else if (*at == '.') {
      run = at + 1;
      ++width;
    } else if (*at == '\\' && (at[1] == '<' || at[1] == '>')) {
      run = at + 2;
    } else {
      break;
    }
  }
  written.past = at;
  written.width = width;
  written.run_size = longest_run;
  return at - expression <= longest;
}

// Whether the byte is one that a bracket expression matches, of which `at` moves past the ']'.
bool is_member(uint8_t byte, const char *&at) {
  const bool negated = at[1] == '^';
  bool found = byte == '\0' && negated;
  for (at += negated ? 2 : 1; *at != ']'; ++at) found |= u8(*at) == byte;
  ++at;
  return found != negated;
}

bool fits(const char *at, const char *past, const char *text, const char *position) {
  const auto *const bytes = reinterpret_cast<const uint8_t *>(text);
  const auto *byte = reinterpret_cast<const uint8_t *>(position);
  while (at != past) {
    if (*at == '[') {
      if (!is_member(*byte++, at)) return false;
    } else if (*at == '\\') {
      if (at[1] == '<' ? !is_word_start(bytes, byte) : is_word_byte(*byte)) return false;
      at += 2;
    } else {
      if (*at == '.' ? *byte == '\0' : *byte != u8(*at)) return false;
      ++at;
      ++byte;
    }
  }
  return true;
}

Answer find_run(const char *expression, const Written &written, const char *text) {
  char copy[longest + 1];
  const char *run = written.run;
  if (run[written.run_size] != '\0') {
    std::memcpy(copy, run, written.run_size);
    copy[written.run_size] = '\0';
    run = copy;
  }
  const char *at = text;
  for (int tries = 16; tries != 0; --tries, ++at) {
    at = std::strstr(at, run);
    if (at == nullptr) return Answer::no;
    const size_t before = written.pair.at[0];
    if (static_cast<size_t>(at - text) >= before &&
        fits(expression, written.past, text, at - before))
      return Answer::yes;
  }
  return Answer::unknown;
}

Answer answer(bool found) { return found ? Answer::yes : Answer::no; }

// `run_end` is where its first run ends, or its beginning. Not inlined, so that plain expressions
// do not wait while its registers are saved.
[[gnu::noinline]] Answer find_fixed(const char *expression, const char *run_end, const char *text,
                                    std::optional<Subject> &subject) {
  Written written;
  if (!read(expression, run_end, written)) return Answer::unknown;
  const bool at_end = *written.past == '$';
  if (written.past[at_end ? 1 : 0] != '\0') return Answer::unknown;
  if (!at_end && written.run_size > 1) return find_run(expression, written, text);
  if (!at_end && written.run_size == 0) return Answer::unknown;
  if (!subject) subject.emplace(text);
  if (written.width > subject->length) return Answer::no;
  const auto fits_at = [&](const uint8_t *position) {
    return fits(expression, written.past, text, reinterpret_cast<const char *>(position));
  };
  if (at_end) return answer(fits_at(subject->text + (subject->length - written.width)));
  return find_pair(written.pair, written.width, *subject, fits_at);
}

}  // namespace

Answer find_as_written(const char *expression, const char *text, std::optional<Subject> &subject) {
  constexpr ptrdiff_t most_literals = (form_size - 1) / 2;
  const bool anchored = *expression == '^';
  const char *const run = anchored ? expression + 1 : expression;
  const char *const run_end = pass_ordinary(run);
  if (*run_end != '\0')
    return anchored ? Answer::unknown : find_fixed(expression, run_end, text, subject);
  if (run_end == run || run_end - run > most_literals) return Answer::unknown;
  return answer(anchored ? begins_with(text, run) : std::strstr(text, run) != nullptr);
}

}  // namespace klib::regex
