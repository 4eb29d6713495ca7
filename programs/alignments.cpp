// The usual form of word alignments: a line for each sentence, pairs "i-j" separated by blanks.
#include "programs/alignments.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "programs/program.h"

namespace klib::programs {
namespace {

bool read_number(const char *&position, const char *end, int32_t &number) {
  if (position == end || *position < '0' || *position > '9') return false;
  const auto [behind, error] = std::from_chars(position, end, number);
  position = behind;
  if (error == std::errc::result_out_of_range) number = INT32_MAX;
  return true;
}

bool read_pair(std::string_view pair, Link &link) {
  const char *position = pair.data(), *end = position + pair.size();
  if (!read_number(position, end, link.source)) return false;
  if (position == end || *position++ != '-') return false;
  return read_number(position, end, link.target) && position == end;
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
  size_t position = 0;
  for (std::string_view pair; !(pair = next_word(file.line(), position)).empty();) {
    Link link;
    if (!read_pair(pair, link))
      report_pair(file, pair, "is not two numbers with '-' between them", -1);
    else if (link.source >= source_words)
      report_pair(file, pair, "the sentence", source_words);
    else if (link.target >= target_words)
      report_pair(file, pair, "the translation", target_words);
    else {
      links.push_back(link);
      continue;
    }
    bad++;
  }
  std::sort(links.begin(), links.end());
  links.erase(std::unique(links.begin(), links.end()), links.end());
  return bad;
}

void link_in_order(int32_t source_words, int32_t target_words, std::vector<Link> &links) {
  links.clear();
  for (int32_t k = 0; k < std::min(source_words, target_words); k++) links.push_back({k, k});
}

}  // namespace klib::programs
