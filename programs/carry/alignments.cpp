// The usual form of word alignments: a line for each sentence, pairs "i-j" separated by blanks.
#include "programs/carry/alignments.h"

#include <algorithm>
#include <string_view>

#include "programs/common/program.h"

namespace klib::programs {
namespace {

bool read_number(const char *&position, const char *end, int32_t &number) {
  const char *const begin = position;
  int64_t value = 0;
  for (; position != end && *position >= '0' && *position <= '9'; position++)
    value = std::min<int64_t>(10 * value + (*position - '0'), INT32_MAX);
  number = static_cast<int32_t>(value);
  return position != begin;
}

// Reads a pair that ends with the line or before white space.
bool read_pair(const char *&position, const char *end, Link &link) {
  if (!read_number(position, end, link.source)) return false;
  if (position == end || *position++ != '-') return false;
  return read_number(position, end, link.target) && (position == end || is_white(*position));
}

void report_pair(const LineReader &file, std::string_view pair, const char *what, int32_t words) {
  constexpr size_t shown = 40;
  const int length = static_cast<int>(std::min(pair.size(), shown));
  if (words < 0)
    report(file.name(), file.number(), "pair '%.*s': %s", length, pair.data(), what);
  else
    report(file.name(), file.number(), "pair '%.*s': %s has only %d word%s", length, pair.data(),
           what, static_cast<int>(words), words == 1 ? "" : "s");
}

}  // namespace

int64_t read_links(const LineReader &file, int32_t source_words, int32_t target_words,
                   std::vector<Link> &links) {
  links.clear();
  int64_t bad = 0;
  bool ascending = true;
  const char *position = file.line().data(), *const end = position + file.line().size();
  for (;;) {
    while (position != end && is_white(*position)) position++;
    if (position == end) break;
    const char *const begin = position;
    Link link;
    const bool is_pair = read_pair(position, end, link);
    while (position != end && !is_white(*position)) position++;
    const std::string_view pair(begin, static_cast<size_t>(position - begin));
    if (!is_pair)
      report_pair(file, pair, "is not two numbers with '-' between them", -1);
    else if (link.source >= source_words)
      report_pair(file, pair, "the sentence", source_words);
    else if (link.target >= target_words)
      report_pair(file, pair, "the translation", target_words);
    else {
      ascending = ascending && (links.empty() || links.back() < link);
      links.push_back(link);
      continue;
    }
    bad++;
  }
  if (!ascending) {
    std::sort(links.begin(), links.end());
    links.erase(std::unique(links.begin(), links.end()), links.end());
  }
  return bad;
}

void link_in_order(int32_t source_words, int32_t target_words, std::vector<Link> &links) {
  links.clear();
  for (int32_t k = 0; k < std::min(source_words, target_words); k++) links.push_back({k, k});
}

}  // namespace klib::programs
