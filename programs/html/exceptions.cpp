// Nearly every exception ends in a letter and a full stop, and says so plainly. What the last two
// bytes of a matching text may be is read from it once, so that only the few that can match a text
// are searched in it. An expression that says it in another way is searched always.
#include "programs/html/exceptions.h"

#include <sys/stat.h>

#include <bitset>
#include <cstring>
#include <string_view>
#include <vector>

#include "klib.h"
#include "programs/common/input_file.h"
#include "programs/common/program.h"

namespace klib::programs {
namespace {

using Bytes = std::bitset<256>;

// What the last byte of a matching text and the one before it may be.
struct Ending {
  Bytes before_last, last;
};

struct Exceptions {
  bool loaded = false;
  std::vector<Ending> endings;     // of each expression
  std::vector<char *> candidates;  // room for a search
};
Exceptions exceptions;

// One byte of an expression, or a set.
struct Part {
  Bytes bytes;
  bool repeated = false;  // any number of times
};

constexpr size_t most_parts = 16, most_sets = 2;  // what surely has room when it is compiled

// Reads a set from its '[', and moves `i` after it; false when it is none of the plain ones.
bool read_set(std::string_view expression, size_t &i, Bytes &bytes) {
  const size_t close = expression.find(']', i);
  if (close == expression.npos) return false;
  const std::string_view members = expression.substr(i + 1, close - i - 1);
  if (members.empty() || members[0] == '^' || members[0] == '-' || members.ends_with('-'))
    return false;
  for (size_t m = 0; m < members.size(); m++) {
    const auto first = static_cast<unsigned char>(members[m]);
    unsigned last = first;
    if (m + 2 < members.size() && members[m + 1] == '-')
      last = static_cast<unsigned char>(members[m += 2]);
    if (last < first) return false;
    for (unsigned byte = first; byte <= last; byte++) bytes.set(byte);
  }
  i = close + 1;
  return true;
}

// Takes an expression that ends in '$' apart, if it is nothing but bytes and sets, some of them
// with '*', after '^' or '\<'.
bool read_parts(std::string_view expression, std::vector<Part> &parts) {
  if (!expression.ends_with('$')) return false;
  expression.remove_suffix(1);
  size_t sets = 0, i = expression.starts_with('^') ? 1 : expression.starts_with("\\<") ? 2 : 0;
  while (i < expression.size()) {
    const char c = expression[i];
    Part part;
    if (c == '[') {
      if (++sets > most_sets || !read_set(expression, i, part.bytes)) return false;
    } else if (c == '\\') {
      if (expression.substr(i, 2) != "\\.") return false;
      part.bytes.set('.');
      i += 2;
    } else if (strchr(".*^$", c) != nullptr) {
      return false;
    } else {
      part.bytes.set(static_cast<unsigned char>(c));
      i++;
    }
    part.repeated = i < expression.size() && expression[i] == '*';
    if (part.repeated) i++;
    parts.push_back(part);
  }
  return parts.size() <= most_parts;
}

// `parts` is room for those of the expression.
Ending ending_of(const char *expression, std::vector<Part> &parts) {
  const Ending any = {~Bytes{}, ~Bytes{}};
  parts.clear();
  if (!read_parts(expression, parts) || parts.empty() || parts.back().repeated) return any;
  Ending ending = {{}, parts.back().bytes};
  for (size_t i = parts.size() - 1; i-- > 0;) {
    ending.before_last |= parts[i].bytes;
    if (!parts[i].repeated) return ending;
  }
  return any;
}

void read_endings() {
  bool all = true;  // an empty expression means one before it
  for (int32_t i = 0; i < l_length; i++) all = all && l_array[i][0] != '\0';
  std::vector<Part> parts;
  exceptions.endings.reserve(static_cast<size_t>(l_length));
  for (int32_t i = 0; i < l_length; i++)
    exceptions.endings.push_back(ending_of(all ? l_array[i] : "", parts));
}

}  // namespace

void load_sentence_exceptions() {
  const Text name(Klib_pathname("SentenceExceptions", 1), Kfree);
  if (!name || !is_there(name.get())) return;
  struct stat status;
  if (stat(name.get(), &status) != 0) fail_reading(name.get());
  exceptions.loaded = Klist_in(name.get()) == 0;
  if (status.st_size > 0 && (!exceptions.loaded || l_length == 0))
    fail(name.get(), 0, "cannot be read, or holds no line");
  if (exceptions.loaded) read_endings();
}

void free_sentence_exceptions() {
  if (exceptions.loaded) Kdestroy_list();
  exceptions = Exceptions{};
}

bool has_sentence_exceptions() { return exceptions.loaded; }

bool is_sentence_exception(const char *text) {
  const size_t length = strlen(text);
  const auto byte = [&](size_t from_end) {
    return length < from_end ? size_t{0} : static_cast<unsigned char>(text[length - from_end]);
  };
  exceptions.candidates.clear();
  for (size_t i = 0; i < exceptions.endings.size(); i++) {
    const Ending &ending = exceptions.endings[i];
    if (ending.last[byte(1)] && ending.before_last[byte(2)])
      exceptions.candidates.push_back(l_array[i]);
  }
  return regex_search(text, static_cast<int32_t>(exceptions.candidates.size()),
                      exceptions.candidates.data()) >= 0;
}

}  // namespace klib::programs
