// Alien characters: characters outside the code page, written as a marker byte and four digits,
//
//     na{9D}00EFve        the word naive with a diaeresis
//
// go through a translation as bare markers and get their digits back afterwards: the first marker
// of the translation those of the source's first one, and so on.
//
// Digits that are put back may themselves contain marker bytes, which then are the next markers of
// the translation. So the new text is written at the front of its block while the translation is
// read from the back of it: digits are put before what is still to be read, and read from there.

#include <algorithm>
#include <cstring>
#include <string_view>

#include "format/codes.h"
#include "format/parser.h"
#include "frame/memory.h"
#include "frame/messages.h"

namespace klib::alien_characters {

namespace {

constexpr char marker = static_cast<char>(codes::of(P_ALIEN).open);
constexpr size_t digits = codes::alien_digits;

size_t count_markers(std::string_view text) {
  return static_cast<size_t>(std::ranges::count(text, marker));
}

memory::Buffer without_font_codes(const char *text) {
  memory::Buffer kept;
  parser::Level level(P_FONT, text);
  for (int32_t kind; (kind = level.next()) != P_END;)
    if (kind != P_FONT) kept.append(p_root[parser_level].token);
  return kept;
}

void report_different_counts(size_t read, size_t expected) {
  Kmessage(MESSAGE_SENTENCE_NUMBER, current_sentence_number);
  Kmessage(MESSAGE_ALIEN_COUNT_DIFFERS, static_cast<int32_t>(read), static_cast<int32_t>(expected));
}

// A copy of the translation with the digits of the source's first `count` markers after its own.
// The translation holds as many.
memory::Text with_digits(std::string_view source, std::string_view translation, size_t count) {
  const size_t size = translation.size() + digits * count + 1;
  memory::Text result = memory::allocate_array<char>(size);
  char *write = result.get();
  char *read = write + digits * count;
  char *const end = read + translation.size();
  std::ranges::copy(translation, read);
  for (size_t from = 0; count > 0; --count, ++from) {
    const std::string_view ahead(read, static_cast<size_t>(end - read));
    char *const after = read + ahead.find(marker) + 1;
    write = std::copy(read, after, write);
    from = source.find(marker, from);
    const std::string_view inserted = source.substr(from + 1, digits);
    read = after - inserted.size();
    std::ranges::copy(inserted, read);
  }
  *std::copy(read, end, write) = '\0';
  return result;
}

}  // namespace

}  // namespace klib::alien_characters

// Exported names

using namespace klib;
using namespace klib::alien_characters;

char *WithoutAlienCharacters(char *text) {
  const std::string_view source(text);
  if (source.find(marker) == source.npos) return text;
  return memory::guarded<char *>(nullptr, [&] {
    memory::Text result = memory::allocate_array<char>(source.size() + 1);
    char *write = result.get();
    for (size_t from = 0; from < source.size();) {
      const size_t after = std::min(source.find(marker, from), source.size() - 1) + 1;
      write = std::ranges::copy(source.substr(from, after - from), write).out;
      from = after + (source[after - 1] == marker ? digits : 0);
    }
    *write = '\0';
    return result.release();
  });
}

char *CopyAlienCharacters(const char *source, char *translation, int32_t without_fonts) {
  if (std::strchr(source, marker) == nullptr) return translation;
  return memory::guarded<char *>(nullptr, [&]() -> char * {
    memory::Text owned(translation);
    memory::Buffer kept;
    if (without_fonts != 0) kept = without_font_codes(source);
    const std::string_view characters = without_fonts != 0 ? kept.view() : source;
    const size_t expected = count_markers(characters);
    if (expected == 0) return owned.release();
    const size_t read = count_markers(translation);
    if (read != expected) report_different_counts(read, expected);
    return with_digits(characters, translation, std::min(read, expected)).release();
  });
}
