// The analysis of "a big house" is "^a/a<det>$ ^big/big<adj>$ ^house/house<n>$^./.<sent>$[][\n]";
// it is read beside the sentence, character by character, so that each unit knows its place.
#include "programs/engine/apertium_text.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>

#include "programs/common/line_reader.h"

namespace klib::programs {
namespace {

constexpr std::string_view open_mark = "[[t:w:", close_mark = "[[/]]", block_end = ".[][\n]";
constexpr size_t longest_table = 2000000;  // cells, for the comparison of two translations

bool is_special(char c) { return c != '\0' && strchr("\\[]{}<>@/^$", c) != nullptr; }

std::vector<std::string_view> split_words(std::string_view text) {
  std::vector<std::string_view> words;
  size_t position = 0;
  for (std::string_view word; !(word = next_word(text, position)).empty();) words.push_back(word);
  return words;
}

// The number of the word at each byte of the text, -1 for white space.
std::vector<int32_t> words_at(std::string_view text) {
  std::vector<int32_t> words(text.size(), -1);
  int32_t word = -1;
  for (size_t i = 0; i < text.size(); i++) {
    if (is_white(text[i])) continue;
    if (i == 0 || is_white(text[i - 1])) word++;
    words[i] = word;
  }
  return words;
}

// Reads a character that may be escaped; '\0' at the end.
char next_character(std::string_view text, size_t &position, bool &bare) {
  bare = true;
  if (position >= text.size()) return '\0';
  if (text[position] == '\\' && position + 1 < text.size()) {
    bare = false;
    position++;
  }
  return text[position++];
}

// An analysis and its sentence.
struct Reading {
  std::string_view analysis, sentence;
  size_t position = 0;  // in the analysis
  size_t place = 0;     // in the sentence with its full stop

  // Whether the character is the next one of the sentence. Analysers put blanks between units
  // ("computer 's") and take them away, so blanks are not compared.
  bool take(char c) {
    if (is_white(c)) return true;
    while (place < sentence.size() && is_white(sentence[place])) place++;
    const bool is_next =
        place < sentence.size() ? sentence[place] == c : place == sentence.size() && c == '.';
    if (is_next) place++;
    return is_next;
  }
};

// Reads text of the sentence until a bare `stop`; false when it is another text.
bool read_text(Reading &reading, char stop) {
  for (;;) {
    bool bare;
    const char c = next_character(reading.analysis, reading.position, bare);
    if (c == '\0') return false;
    if (bare && c == stop) return true;
    if (!reading.take(c)) return false;
  }
}

// Reads from after the surface of a unit to after its '$'.
bool skip_analyses(Reading &reading) {
  for (;;) {
    bool bare;
    const char c = next_character(reading.analysis, reading.position, bare);
    if (c == '\0') return false;
    if (bare && c == '$') return true;
  }
}

std::vector<int32_t> words_between(const std::vector<int32_t> &words, size_t begin, size_t end) {
  std::vector<int32_t> found;
  for (size_t i = begin; i < std::min(end, words.size()); i++)
    if (words[i] >= 0 && (found.empty() || found.back() != words[i])) found.push_back(words[i]);
  return found;
}

// Reads the units of an opening mark: "[[t:w:3; t:w:4]]"; the position is after "[[".
std::vector<int32_t> read_mark(std::string_view mark) {
  std::vector<int32_t> units;
  constexpr std::string_view prefix = "t:w:";
  for (size_t at = 0; (at = mark.find(prefix, at)) != mark.npos;) {
    at += prefix.size();
    int32_t unit = 0;
    if (std::from_chars(mark.data() + at, mark.data() + mark.size(), unit).ec == std::errc())
      units.push_back(unit);
  }
  return units;
}

void add_units(const std::vector<int32_t> &more, std::vector<int32_t> &units) {
  for (const int32_t unit : more)
    if (std::find(units.begin(), units.end(), unit) == units.end()) units.push_back(unit);
}

// Where each word of `from` is in `to`, or -1: a longest common subsequence, without what is equal
// at both ends; nothing in a middle that is too large to compare.
std::vector<int32_t> match_words(const std::vector<std::string_view> &from,
                                 const std::vector<std::string_view> &to) {
  std::vector<int32_t> places(from.size(), -1);
  size_t first = 0, from_end = from.size(), to_end = to.size();
  for (; first < std::min(from_end, to_end) && from[first] == to[first]; first++)
    places[first] = static_cast<int32_t>(first);
  while (from_end > first && to_end > first && from[from_end - 1] == to[to_end - 1])
    places[--from_end] = static_cast<int32_t>(--to_end);
  const size_t rows = from_end - first, columns = to_end - first;
  if (rows == 0 || columns == 0 || rows > longest_table / columns) return places;
  // longest[r * (columns + 1) + c]: of the words from row r and column c on.
  std::vector<uint32_t> longest((rows + 1) * (columns + 1), 0);
  const auto at = [&](size_t row, size_t column) -> uint32_t & {
    return longest[row * (columns + 1) + column];
  };
  for (size_t r = rows; r-- > 0;)
    for (size_t c = columns; c-- > 0;)
      at(r, c) = from[first + r] == to[first + c] ? at(r + 1, c + 1) + 1
                                                  : std::max(at(r + 1, c), at(r, c + 1));
  for (size_t r = 0, c = 0; r < rows && c < columns;) {
    if (from[first + r] == to[first + c])
      places[first + r++] = static_cast<int32_t>(first + c++);
    else
      at(r + 1, c) >= at(r, c + 1) ? r++ : c++;
  }
  return places;
}

// Words that no unit knows, such as a dash, pass through as they are.
void pair_equal_strangers(const std::vector<std::string_view> &source,
                          const std::vector<std::string_view> &target,
                          const std::vector<bool> &source_is_known,
                          const std::vector<bool> &target_is_known,
                          std::vector<std::pair<int32_t, int32_t>> &pairs) {
  std::map<std::string_view, std::vector<int32_t>> strangers;
  for (size_t j = target.size(); j-- > 0;)
    if (!target_is_known[j]) strangers[target[j]].push_back(static_cast<int32_t>(j));
  for (size_t i = 0; i < source.size(); i++) {
    const auto found = source_is_known[i] ? strangers.end() : strangers.find(source[i]);
    if (found == strangers.end() || found->second.empty()) continue;
    pairs.emplace_back(static_cast<int32_t>(i), found->second.back());
    found->second.pop_back();
  }
}

}  // namespace

std::string apertium_block(std::string_view sentence) {
  std::string block;
  for (const char c : sentence) {
    if (is_special(c)) block += '\\';
    if (c == '~')
      block += "[~]";
    else
      block += c;
  }
  return block.append(block_end);
}

bool mark_units(std::string_view analysis, std::string_view sentence, std::string &marked,
                UnitWords &units) {
  marked.clear();
  units.clear();
  Reading reading{analysis, sentence};
  const std::vector<int32_t> words = words_at(sentence);
  size_t copied = 0;
  while (reading.position < analysis.size()) {
    const size_t begin = reading.position, place = reading.place;
    bool bare;
    const char c = next_character(analysis, reading.position, bare);
    if (bare && c == '[') {
      const bool is_end = analysis[begin + 1 < analysis.size() ? begin + 1 : begin] == ']';
      if (is_end) break;  // "[][\n]"
      if (!read_text(reading, ']')) return false;
    } else if (bare && c == '^') {
      if (!read_text(reading, '/') || !skip_analyses(reading)) return false;
      std::vector<int32_t> covered = words_between(words, place, reading.place);
      if (covered.empty()) continue;
      marked.append(analysis.substr(copied, begin - copied)).append(open_mark);
      marked.append(std::to_string(units.size())).append("]]");
      marked.append(analysis.substr(begin, reading.position - begin)).append(close_mark);
      copied = reading.position;
      units.push_back(std::move(covered));
    } else if (!reading.take(c)) {
      return false;
    }
  }
  marked.append(analysis.substr(copied));
  return reading.place == sentence.size() + 1;
}

bool read_answer(std::string_view block, ApertiumAnswer &answer) {
  answer.text.clear();
  answer.units.clear();
  std::vector<std::pair<size_t, std::vector<int32_t>>> marks;  // where the units change
  size_t end = std::string_view::npos;                         // of the text, at "[]"
  for (size_t i = 0; i < block.size();) {
    bool bare;
    if (block.substr(i).starts_with("[[")) {
      const size_t close = block.find("]]", i);
      if (close == block.npos) return false;
      marks.emplace_back(answer.text.size(), read_mark(block.substr(i, close - i)));
      i = close + 2;
    } else if (block.substr(i).starts_with("[]")) {
      end = answer.text.size();
      i += 2;
    } else if (const char c = next_character(block, i, bare); !bare || (c != '[' && c != ']')) {
      answer.text += c;
    }
  }
  if (end == std::string_view::npos) return false;
  const bool has_stop = end > 0 && answer.text[end - 1] == '.';
  answer.text.erase(end - (has_stop ? 1 : 0));
  while (!answer.text.empty() && is_white(answer.text.back())) answer.text.pop_back();
  const std::vector<int32_t> words = words_at(answer.text);
  for (const int32_t word : words)
    if (word >= 0) answer.units.resize(static_cast<size_t>(word) + 1);
  for (size_t m = 0; m < marks.size(); m++) {
    const size_t next = m + 1 < marks.size() ? marks[m + 1].first : words.size();
    for (const int32_t word : words_between(words, marks[m].first, next))
      add_units(marks[m].second, answer.units[static_cast<size_t>(word)]);
  }
  return true;
}

std::vector<std::pair<int32_t, int32_t>> apertium_pairs(std::string_view sentence,
                                                        const UnitWords &units,
                                                        const ApertiumAnswer &answer,
                                                        std::string_view plain) {
  const std::vector<std::string_view> source = split_words(sentence), target = split_words(plain);
  const std::vector<int32_t> places = match_words(split_words(answer.text), target);
  std::vector<std::pair<int32_t, int32_t>> pairs;
  std::vector<bool> source_is_known(source.size()), target_is_known(target.size());
  for (const std::vector<int32_t> &words : units)
    for (const int32_t i : words) source_is_known[static_cast<size_t>(i)] = true;
  for (size_t word = 0; word < places.size(); word++) {
    const int32_t j = places[word];
    if (j < 0) continue;
    for (const int32_t unit : answer.units[word]) {
      if (unit < 0 || static_cast<size_t>(unit) >= units.size()) continue;
      target_is_known[static_cast<size_t>(j)] = true;
      for (const int32_t i : units[static_cast<size_t>(unit)]) pairs.emplace_back(i, j);
    }
  }
  pair_equal_strangers(source, target, source_is_known, target_is_known, pairs);
  std::sort(pairs.begin(), pairs.end());
  pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
  return pairs;
}

}  // namespace klib::programs
