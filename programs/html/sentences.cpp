// Sentences end behind '.', '!', '?' or ':' when white space and then a capital letter or a digit
// follow; closing quotes, brackets and tags belong to the end, opening ones to the beginning. The
// exceptions are a word list of regular expressions ("\<Dr\.$"), searched in what the sentence has
// up to the mark.
#include "programs/html/sentences.h"

#include <locale.h>
#include <sys/stat.h>
#include <wctype.h>

#include <string>

#include "klib.h"
#include "programs/common/program.h"
#include "programs/html/text_reader.h"

namespace klib::programs {
namespace {

constexpr std::u32string_view marks = U".!?:";
constexpr std::u32string_view closing = U")]}\"'»›”’“‘";
constexpr std::u32string_view opening = U"([{\"'«‹»›“‘„‚¿¡";
constexpr size_t looked_at = 64;  // bytes of a sentence in which exceptions are searched

bool exceptions_loaded = false;

// The locale of the letters of all languages, whatever the process's own is.
locale_t letters() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

bool is_capital_or_digit(char32_t c) {
  if (c < 0x80) return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  return letters() && iswupper_l(static_cast<wint_t>(c), letters());
}

// What a sentence has so far, for its end to be recognised.
struct SoFar {
  std::u32string word;  // the characters since the last white space
  std::string text;     // engine text before it, as much as exceptions look at or more

  void add_word(const CodePage &page) {
    if (text.size() > 64 * looked_at) text.erase(0, text.size() - looked_at);
    for (const char32_t c : word) append_character(page, c, text);
    text += ' ';
    word.clear();
  }
};

bool ends_with_mark(const std::u32string &word) {
  const size_t last = word.find_last_not_of(closing);
  return last != std::u32string::npos && marks.find(word[last]) != std::u32string_view::npos;
}

// Whether what follows the white space at `i` begins like a sentence.
bool begins_sentence(std::string_view page, const std::vector<Item> &items, size_t i) {
  for (; i < items.size(); i++) {
    if (items[i].kind != Item::text) continue;
    TextReader reader(page.substr(items[i].begin, items[i].end - items[i].begin));
    while (!reader.at_end()) {
      const char32_t c = reader.next().character;
      if (opening.find(c) == std::u32string_view::npos) return is_capital_or_digit(c);
    }
  }
  return false;
}

bool is_exception(const CodePage &page, SoFar so_far) {
  if (!exceptions_loaded) return false;
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
  return Kregex_search(tail.data()) == 1;
}

// The place of the first visible text of [begin, end), or end.
size_t first_visible(const std::vector<Item> &items, size_t begin, size_t end) {
  while (begin < end && !items[begin].visible) begin++;
  return begin;
}

// Adds the frame of the sentence [begin, end), if it has one.
void add_frame(const std::vector<Item> &items, size_t begin, size_t end,
               std::vector<Frame> &frames) {
  const size_t text = first_visible(items, begin, end);
  if (text == end) return;
  size_t last = end - 1;
  while (!items[last].visible) last--;
  Frame frame{text, last + 1};
  // An element around the whole sentence stays outside, and so does one before or behind its text;
  // one that begins or ends between belongs to the frame.
  for (size_t i = text; i > begin && items[i - 1].is_markup(); i--) {
    const size_t partner = items[i - 1].partner;
    if (items[i - 1].kind == Item::open && partner > text && partner < last) frame.first = i - 1;
  }
  for (size_t i = last + 1; i < end && items[i].is_markup(); i++) {
    const size_t partner = items[i].partner;
    if (items[i].kind == Item::close && partner >= frame.first && partner < last)
      frame.last = i + 1;
  }
  frames.push_back(frame);
}

}  // namespace

void find_frames(const CodePage &code_page, std::string_view page, const std::vector<Item> &items,
                 std::vector<Frame> &frames) {
  frames.clear();
  SoFar so_far;
  size_t begin = 0;
  for (size_t i = 0; i < items.size(); i++) {
    const Item &item = items[i];
    if (item.kind == Item::text) {
      TextReader reader(page.substr(item.begin, item.end - item.begin));
      while (!reader.at_end()) so_far.word += reader.next().character;
    } else if (item.kind == Item::white && !so_far.word.empty()) {
      if (ends_with_mark(so_far.word) && begins_sentence(page, items, i) &&
          !is_exception(code_page, so_far)) {
        add_frame(items, begin, i, frames);
        begin = i;
        so_far = SoFar{};
      } else {
        so_far.add_word(code_page);
      }
    }
  }
  add_frame(items, begin, items.size(), frames);
}

void load_sentence_exceptions() {
  const Text name(Klib_pathname("SentenceExceptions", 1), Kfree);
  struct stat status;
  if (!name || stat(name.get(), &status) != 0) return;
  exceptions_loaded = Klist_in(name.get()) == 0;
  if (status.st_size > 0 && (!exceptions_loaded || l_length == 0))
    fail(name.get(), 0, "cannot be read, or holds no line");
}

void free_sentence_exceptions() {
  if (exceptions_loaded) Kdestroy_list();
  exceptions_loaded = false;
}

}  // namespace klib::programs
