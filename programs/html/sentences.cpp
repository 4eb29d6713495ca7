// Where sentences end, after the letters of two kinds of scripts:
//
//   with capital letters   after '.', '!', '?', an ellipsis or ':' when white space and then a
//                          capital letter or, except after ':', a digit follow
//   all others             where Unicode's rules say, with or without white space
//
// A mark that is none of the first kind ends sentences by Unicode's rules in any script. Closing
// quotes, brackets and tags belong to the end, opening ones to the beginning of the next sentence.
// The exceptions are a word list of regular expressions ("\<Dr\.$"), searched in what the sentence
// has up to the mark.
#include "programs/html/sentences.h"

#include <algorithm>
#include <string>

#include "klib.h"
#include "programs/common/program.h"
#include "programs/common/utf8.h"
#include "programs/html/boundaries.h"
#include "programs/html/exceptions.h"
#include "programs/html/text_reader.h"

namespace klib::programs {
namespace {

constexpr std::u32string_view marks = U".!?…:";
constexpr std::u32string_view closing =
    U")]}\"'»›”’“‘\u3009\u300B\u300D\u300F\u3011\u3015\uFF09\uFF3D\uFF5D\uFF63";
constexpr std::u32string_view opening =
    U"([{\"'«‹»›“‘„‚¿¡\u3008\u300A\u300C\u300E\u3010\u3014\uFF08\uFF3B\uFF5B\uFF62";
constexpr size_t looked_at = 64;  // bytes of a sentence in which exceptions are searched

// What a sentence has so far, for its end to be recognised.
struct SoFar {
  std::u32string word;   // the characters since the last white space
  std::string text;      // engine text before it, as much as exceptions look at or more
  bool uncased = false;  // whether the last letter is of a script without capitals

  void add_character(char32_t c) {
    word += c;
    const SentencePart part = sentence_part(c);
    if (part == SentencePart::cased_letter) uncased = false;
    if (part == SentencePart::uncased_letter) uncased = true;
  }

  void add_plain(std::string_view plain) {
    append_plain(plain, word);
    if (uncased)
      uncased = std::ranges::none_of(plain, [](char c) {
        return sentence_part(static_cast<unsigned char>(c)) == SentencePart::cased_letter;
      });
  }

  void add_word(const CodePage &page) {
    if (text.size() > 64 * looked_at) text.erase(0, text.size() - looked_at);
    for (const char32_t c : word) {
      if (const unsigned char byte = c < 0x80 ? page.byte[c] : 0; byte != 0)
        text += static_cast<char>(byte);
      else if (c == 0xA0 || c == 0x202F)  // the blanks inside an abbreviation
        text += ' ';
      else
        append_character(page, c, text);
    }
    text += ' ';
    word.clear();
  }

  // The last character but for closing ones, or 0.
  char32_t mark() const {
    if (!word.empty() && word.back() < 0x80 && is_letter_or_digit(word.back())) return word.back();
    const size_t last = word.find_last_not_of(closing);
    return last == std::u32string::npos ? 0 : word[last];
  }
};

// Whether Unicode's rules decide after this mark.
bool is_left_to_unicode(const SoFar &so_far) {
  const char32_t mark = so_far.mark();
  return sentence_part(mark) == SentencePart::mark &&
         (so_far.uncased || marks.find(mark) == marks.npos);
}

// Whether what follows the white space at `i` begins like a sentence after the mark.
bool begins_sentence(std::string_view page, const std::vector<Item> &items, size_t i,
                     char32_t mark) {
  for (; i < items.size(); i++) {
    if (items[i].kind != Item::text) continue;
    TextReader reader(page.substr(items[i].begin, items[i].end - items[i].begin));
    while (!reader.at_end()) {
      const char32_t c = reader.next().character;
      if (opening.find(c) == std::u32string_view::npos)
        return is_capital(c) || (mark != ':' && c >= '0' && c <= '9');
    }
  }
  return false;
}

bool is_exception(const CodePage &page, SoFar so_far) {
  if (!has_sentence_exceptions()) return false;
  so_far.word.resize(so_far.word.find_last_not_of(closing) + 1);
  so_far.add_word(page);
  std::string &text = so_far.text;
  text.pop_back();
  const Text reduced(string_copy(text.c_str()), Kfree);
  char *bare = WithoutAlienCharacters(reduced.get());
  const Text owned(bare == reduced.get() ? nullptr : bare, Kfree);
  std::string_view tail(bare);
  if (tail.size() > looked_at) {
    tail.remove_prefix(tail.size() - looked_at);
    const size_t blank = tail.find(' ');
    if (blank != std::string_view::npos) tail.remove_prefix(blank);
  }
  return is_sentence_exception(tail.data());
}

// The end of a sentence, in the page: inside an item, or right after it, or where white space
// begins.
struct End {
  size_t item, position;
};

struct EndFinder {
  const CodePage &code_page;
  std::string_view page;
  const std::vector<Item> &items;
  std::vector<End> &ends;
  std::u32string text{};             // of the paragraph, white space as a blank
  std::vector<bool> unicode_ends{};  // for each character of the text, or empty
  size_t place = 0;                  // how far the text has been read
  SoFar so_far{};

  TextReader reader(const Item &item) const {
    return TextReader(page.substr(item.begin, item.end - item.begin));
  }
};

// Whether there is anything for which Unicode's rules are asked: a mark or letter beyond ASCII.
bool needs_unicode(const EndFinder &finder) {
  if (finder.items.empty()) return false;
  const size_t begin = finder.items.front().begin;
  const std::string_view raw = finder.page.substr(begin, finder.items.back().end - begin);
  if (ascii_length(raw) == raw.size() && raw.find('&') == raw.npos) return false;
  for (const Item &item : finder.items) {
    if (item.kind != Item::text) continue;
    for (TextReader reader = finder.reader(item); !reader.at_end();) {
      if (!reader.take_plain().empty()) continue;
      const char32_t c = reader.next().character;
      if (c < 0x80) continue;
      const SentencePart part = sentence_part(c);
      if (part == SentencePart::uncased_letter || part == SentencePart::mark) return true;
    }
  }
  return false;
}

// Lets Unicode's rules find their ends.
void ask_unicode(EndFinder &finder) {
  for (const Item &item : finder.items) {
    if (item.kind == Item::white) finder.text += ' ';
    if (item.kind != Item::text) continue;
    for (TextReader reader = finder.reader(item); !reader.at_end();)
      finder.text += reader.next().character;
  }
  find_sentence_ends(finder.text, finder.unicode_ends);
}

void end_sentence(EndFinder &finder, size_t item, size_t position) {
  finder.ends.push_back({item, position});
  finder.so_far = SoFar{};
}

// Reads text, in which sentences end that go on without white space.
void take_text(EndFinder &finder, size_t i) {
  for (TextReader reader = finder.reader(finder.items[i]); !reader.at_end();) {
    if (finder.unicode_ends.empty()) {
      const std::string_view plain = reader.take_plain();
      finder.so_far.add_plain(plain);
      finder.place += plain.size();
      if (!plain.empty()) continue;
    }
    finder.so_far.add_character(reader.next().character);
    const size_t place = finder.place++;
    if (finder.unicode_ends.empty() || !finder.unicode_ends[place]) continue;
    if (finder.items[i].kept) continue;
    const bool goes_on = finder.place < finder.text.size() && finder.text[finder.place] != ' ';
    if (goes_on && is_left_to_unicode(finder.so_far) &&
        !is_exception(finder.code_page, finder.so_far))
      end_sentence(finder, i, finder.items[i].begin + reader.position());
  }
}

void take_white(EndFinder &finder, size_t i) {
  const size_t place = finder.place++;
  if (finder.so_far.word.empty()) return;
  const char32_t mark = finder.so_far.mark();
  const bool ends =
      !finder.unicode_ends.empty() && is_left_to_unicode(finder.so_far)
          ? static_cast<bool>(finder.unicode_ends[place - 1])
          : marks.find(mark) != marks.npos && begins_sentence(finder.page, finder.items, i, mark);
  if (ends && !finder.items[i].kept && !is_exception(finder.code_page, finder.so_far))
    end_sentence(finder, i, finder.items[i].begin);
  else
    finder.so_far.add_word(finder.code_page);
}

// Splits the items inside which sentences end. Adds to `next_items` the number of the item after
// each end.
void split_items(std::string_view page, const std::vector<End> &ends, std::vector<Item> &items,
                 std::vector<size_t> &next_items) {
  std::vector<Item> parts;
  parts.reserve(items.size() + ends.size());
  std::vector<size_t> moved_to(items.size());
  auto end = ends.begin();
  for (size_t i = 0; i < items.size(); i++) {
    Item rest = items[i];
    moved_to[i] = parts.size();
    for (; end != ends.end() && end->item == i && end->position < rest.end; ++end) {
      if (end->position > rest.begin) {
        parts.push_back(part_of(page, rest, rest.begin, end->position));
        rest = part_of(page, rest, end->position, rest.end);
      }
      next_items.push_back(parts.size());
    }
    parts.push_back(rest);
    if (end == ends.end() || end->item != i) continue;
    for (; i + 1 < items.size() && items[i + 1].kind == Item::close; i++) {
      moved_to[i + 1] = parts.size();  // closing tags belong to the sentence that ends
      parts.push_back(items[i + 1]);
    }
    next_items.push_back(parts.size());
    ++end;
  }
  for (Item &item : parts)
    if (item.partner != Item::none) item.partner = moved_to[item.partner];
  items = std::move(parts);
}

// Whether the text at `i`, right after an element, makes that element a part of the sentence, as a
// comma does.
bool goes_on(std::string_view page, const std::vector<Item> &items, size_t i) {
  if (i == items.size() || items[i].kind != Item::text) return false;
  const char32_t c =
      TextReader(page.substr(items[i].begin, items[i].end - items[i].begin)).next().character;
  return !is_letter_or_digit(c) && opening.find(c) == std::u32string_view::npos;
}

// Leaves out elements at the edges of a sentence that have no letter or digit, such as "#" and
// permalinks. Inside an element that is not around all of the text they stay: "[1]" in a link.
void trim(std::string_view page, const std::vector<Item> &items, size_t &begin, size_t &end) {
  size_t last = end;  // after the last letter
  while (last > begin && !items[last - 1].lettered) last--;
  if (last == begin) return;  // all of it is marks, such as "(*)" in a table
  size_t first_visible = begin, last_visible = end - 1;
  while (!items[first_visible].visible) first_visible++;
  while (!items[last_visible].visible) last_visible--;
  for (size_t i = end; i > last;) {
    const Item &item = items[i - 1];
    const bool closes = item.kind == Item::close && item.partner != Item::none;
    if (closes && item.partner >= last)
      end = i = item.partner;
    else if (item.visible || (closes && item.partner > first_visible))
      break;
    else
      i--;
  }
  size_t first = begin;  // the first letter
  while (first < end && !items[first].lettered) first++;
  for (size_t i = begin; i < first;) {
    const Item &item = items[i];
    const bool opens = item.kind == Item::open && item.partner != Item::none;
    if (opens && item.partner < first && !goes_on(page, items, item.partner + 1))
      begin = i = item.partner + 1;
    else if (item.visible || (opens && item.partner < last_visible))
      break;
    else
      i++;
  }
}

// Whether the sentence has something to translate: if part of it is not to be, another part that
// has letters.
bool is_offered(const std::vector<Item> &items, size_t begin, size_t end) {
  bool kept = false;
  for (size_t i = begin; i < end; i++) {
    if (items[i].lettered && !items[i].kept) return true;
    kept = kept || (items[i].visible && items[i].kept);
  }
  return !kept;
}

// Adds the frame of the sentence [begin, end), if it has one.
void add_frame(std::string_view page, const std::vector<Item> &items, size_t begin, size_t end,
               std::vector<Frame> &frames) {
  trim(page, items, begin, end);
  size_t text = begin;
  while (text < end && !items[text].visible) text++;
  if (text == end || !is_offered(items, begin, end)) return;
  size_t last = end - 1;
  while (!items[last].visible) last--;
  Frame frame{text, last + 1};
  // An element around the whole sentence stays outside, and so does one before or after its text;
  // one that begins or ends between belongs to the frame, with white space at its edge.
  for (size_t i = text; i > begin && items[i - 1].kind != Item::text; i--) {
    const size_t partner = items[i - 1].partner;
    if (items[i - 1].kind == Item::open && partner > text && partner < last) frame.first = i - 1;
  }
  for (size_t i = last + 1; i < end && items[i].kind != Item::text; i++) {
    const size_t partner = items[i].partner;
    if (items[i].kind == Item::close && partner >= frame.first && partner < last)
      frame.last = i + 1;
  }
  frames.push_back(frame);
}

}  // namespace

void find_frames(const CodePage &code_page, std::string_view page, std::vector<Item> &items,
                 std::vector<Frame> &frames) {
  frames.clear();
  std::vector<End> ends;
  EndFinder finder{code_page, page, items, ends};
  if (needs_unicode(finder)) ask_unicode(finder);
  for (size_t i = 0; i < items.size(); i++) {
    if (items[i].kind == Item::text)
      take_text(finder, i);
    else if (items[i].kind == Item::white)
      take_white(finder, i);
  }
  std::vector<size_t> next_items;
  if (!ends.empty()) split_items(page, ends, items, next_items);
  size_t begin = 0;
  for (const size_t end : next_items) {
    add_frame(page, items, begin, end, frames);
    begin = end;
  }
  add_frame(page, items, begin, items.size(), frames);
}

}  // namespace klib::programs
