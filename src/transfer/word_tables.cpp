// Reading the two sentences of a transfer into words.
//
// The source is a sequence of white space, codes and text. White space separates words; anchors
// {94}body{95} and fonts {98}body{99} are codes of the word that contains them; the inside of a
// segment {1E}text{1F} belongs to one word, white space included, and the codes in it are codes of
// that word. A code nests in its own kind; an unterminated one ends with the sentence, which is
// reported. Everything else is text. The translation has no codes: its words are the runs of bytes
// that are not white space.

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <initializer_list>

#include "format/codes.h"
#include "frame/messages.h"
#include "text/byte_blocks.h"
#include "text/bytes.h"
#include "text/character_types.h"
#include "transfer/transfer.h"

namespace klib::transfer {

namespace {

constexpr char open_byte(int32_t kind) { return static_cast<char>(codes::of(kind).open); }

// The closing byte of every byte that opens a code; 0 for all others.
using Codes = std::array<char, 256>;
constexpr Codes closing_bytes(std::initializer_list<int32_t> kinds) {
  Codes result{};
  for (const int32_t kind : kinds)
    result[codes::of(kind).open] = static_cast<char>(codes::of(kind).close);
  return result;
}
constexpr Codes codes_in_segment = closing_bytes({P_ANCHOR, P_FONT});
constexpr Codes codes_in_sentence = closing_bytes({P_ANCHOR, P_FONT, P_CODE_1E});
static_assert([] {
  for (size_t byte = 0; byte < codes_in_sentence.size(); ++byte)
    if (codes_in_sentence[byte] != 0 && (byte & 0x60) != 0) return false;
  return true;
}());

// What most sentences need.
constexpr size_t reserved_words = 32, reserved_codes = 8, reserved_bodies = 64;

// Looks for white space in a text, a block at a time.
struct Scanner {
  std::string_view text;
  const uint32_t *types = c_t;
  bool by_blocks = character_types::is_built_in(c_t);
  size_t block = SIZE_MAX;  // the offset of the block that was looked at last
  uint64_t special = 0;     // its bytes that may be white or open a code, and those after the end

  [[nodiscard]] bool is_white(size_t at) const {
    return (types[u8(text[at])] & character_types::white) != 0;
  }
};

void look_at_block(Scanner &scanner, size_t start) {
  const std::string_view rest = scanner.text.substr(start);
  char last[block_size];
  const char *bytes = rest.data();
  if (rest.size() < block_size) {
    std::memset(last, 0, sizeof last);
    std::memcpy(last, bytes, rest.size());
    bytes = last;
  }
  scanner.block = start;
  scanner.special = character_types::may_be_white(bytes);
}

// The offset of the first byte at `at` or after it that may be white or open a code; the size when
// there is none.
size_t find_special(Scanner &scanner, size_t at) {
  if (!scanner.by_blocks) return at;
  while (at < scanner.text.size()) {
    const size_t place = at % block_size;
    if (at - place != scanner.block) look_at_block(scanner, at - place);
    if (const uint64_t rest = scanner.special >> place; rest != 0)
      return at + static_cast<size_t>(std::countr_zero(rest));
    at += block_size - place;
  }
  return at;
}

// Likewise for the first byte that is white or, with `codes`, opens a code of the sentence.
template <bool codes>
size_t find_word_end(Scanner &scanner, size_t at) {
  const std::string_view text = scanner.text;
  for (;; ++at) {
    at = find_special(scanner, at);
    if (at >= text.size() || scanner.is_white(at)) return at;
    if (codes && codes_in_sentence[u8(text[at])] != 0) return at;
  }
}

// Likewise for the first byte that is not white.
size_t find_word(const Scanner &scanner, size_t at) {
  while (at < scanner.text.size() && scanner.is_white(at)) ++at;
  return at;
}

// The code that begins `text`, closing byte included. An unterminated one is the whole of `text`,
// and is reported that many times.
std::string_view leading_code(std::string_view text, char close, int reports) {
  size_t depth = 0;
  for (size_t i = 1; i < text.size(); ++i) {
    if (text[i] == text[0]) ++depth;
    if (text[i] == close && depth-- == 0) return text.substr(0, i + 1);
  }
  for (; reports > 0; --reports) report_and_abort(MESSAGE_PREMATURE_END);
  return text;
}

// What is between the first and the last byte of a code, whatever its last byte is.
std::string_view inside(std::string_view code) {
  return code.size() < 2 ? std::string_view{} : code.substr(1, code.size() - 2);
}

struct Reading {
  SourceTable &table;
  size_t codes_before_text = 0;  // codes from this one on wait for the byte after them
  char last_byte = '\0';         // of the current word's text
};

void open_word(Reading &reading) {
  reading.table.words.push_back({.first_code = static_cast<uint32_t>(reading.table.codes.size())});
  reading.codes_before_text = reading.table.codes.size();
}

void add_text(Reading &reading, std::string_view text) {
  SourceWord &word = reading.table.words.back();
  word.has_text = true;
  if (text.empty()) return;
  auto &codes = reading.table.codes;
  for (; reading.codes_before_text < codes.size(); ++reading.codes_before_text)
    codes[reading.codes_before_text].after = text.front();
  reading.last_byte = text.back();
  word.text_length += static_cast<uint32_t>(text.size());
}

void add_code(Reading &reading, std::string_view code) {
  const std::string_view body = inside(code);
  const SourceWord &word = reading.table.words.back();
  if (reading.table.codes.empty()) {
    reading.table.codes.reserve(reserved_codes);
    reading.table.bodies.reserve(reserved_bodies);
  }
  reading.table.codes.push_back(
      {.body = static_cast<uint32_t>(reading.table.bodies.size()),
       .length = static_cast<uint32_t>(body.size()),
       .position = word.text_length,
       .kind = static_cast<uint8_t>(code.front() == open_byte(P_FONT) ? P_FONT : P_ANCHOR),
       .before = reading.last_byte,
       .after = '\0'});
  auto &bodies = reading.table.bodies;
  bodies.insert(bodies.end(), body.begin(), body.end());
  bodies.push_back('\0');
}

void add_segment(Reading &reading, std::string_view segment) {
  reading.table.words.back().has_text = true;
  while (!segment.empty()) {
    size_t text = 0;
    while (text < segment.size() && codes_in_segment[u8(segment[text])] == 0) ++text;
    if (text != 0) add_text(reading, segment.substr(0, text));
    segment.remove_prefix(text);
    if (segment.empty()) return;
    // Two reports: a segment counts as read twice, to measure its word and to fill it.
    const auto code = leading_code(segment, codes_in_segment[u8(segment[0])], 2);
    add_code(reading, code);
    reading.table.has_anchors = true;
    segment.remove_prefix(code.size());
  }
}

void add_outer_code(Reading &reading, std::string_view code) {
  if (code.front() == open_byte(P_CODE_1E)) {
    add_segment(reading, inside(code));
    return;
  }
  add_code(reading, code);
  if (code.front() == open_byte(P_ANCHOR)) reading.table.has_anchors = true;
}

// A word that is made of codes alone is no word: its codes end the word before it when there is
// text before them, and otherwise begin the word after them, if there is one.
void join_code_only_groups(SourceTable &table) {
  auto &words = table.words;
  size_t kept = 0;  // words that stay; their codes reach to words[i]
  bool text_before = false;
  for (size_t i = 0; i < words.size(); ++i) {
    const bool is_group = !words[i].has_text && !table.codes_of(i).empty();
    SourceWord *last = kept == 0 ? nullptr : &words[kept - 1];
    if (is_group && text_before) {
      for (size_t code = 0; code < table.codes_of(i).size(); ++code)
        table.codes[words[i].first_code + code].position = last->text_length;
    } else if (last != nullptr && !last->has_text && last->first_code != words[i].first_code) {
      last->text_length = words[i].text_length;
      last->has_text = words[i].has_text;
    } else {
      if (kept != i) words[kept] = words[i];  // mostly all stay in place
      ++kept;
    }
    text_before |= words[i].has_text;
  }
  words.resize(kept, SourceWord{0});
}

}  // namespace

bool has_codes(std::string_view source) {
  const auto opens = [](char byte) { return codes_in_sentence[u8(byte)] != 0; };
  // Bytes that open codes have neither bit 5 nor bit 6, and in a word of text few bytes have none.
  constexpr uint64_t bit_6 = in_each_byte(0x40);
  while (source.size() >= word_size) {
    const uint64_t word = load_word(source.data());
    if (((word | word << 1) & bit_6) != bit_6 &&
        std::any_of(source.begin(), source.begin() + word_size, opens))
      return true;
    source.remove_prefix(word_size);
  }
  return std::any_of(source.begin(), source.end(), opens);
}

SourceTable read_source_words(std::string_view source, memory::Arena &arena) {
  SourceTable table{.words = memory::ArenaVector<SourceWord>(arena),
                    .codes = memory::ArenaVector<WordCode>(arena),
                    .bodies = memory::ArenaVector<char>(arena)};
  Reading reading{.table = table};
  table.words.reserve(reserved_words);
  open_word(reading);
  Scanner scanner{.text = source};
  for (size_t at = 0; at < source.size();) {
    if (const size_t end = find_word_end<true>(scanner, at); end != at) {
      add_text(reading, source.substr(at, end - at));
      at = end;
    } else if (const size_t word = find_word(scanner, at); word != at) {
      if (word < source.size()) open_word(reading);
      at = word;
    } else {
      const auto code = leading_code(source.substr(at), codes_in_sentence[u8(source[at])], 1);
      add_outer_code(reading, code);
      at += code.size();
    }
  }
  join_code_only_groups(table);
  return table;
}

TargetTable read_target_words(std::string_view target, memory::Arena &arena) {
  TargetTable table{.text = target, .words = memory::ArenaVector<TargetWord>(arena)};
  table.words.reserve(reserved_words);
  Scanner scanner{.text = target};
  for (size_t at = find_word(scanner, 0); at < target.size();) {
    const size_t end = find_word_end<false>(scanner, at);
    table.words.push_back({static_cast<uint32_t>(at), static_cast<uint32_t>(end - at)});
    at = find_word(scanner, end);
  }
  return table;
}

}  // namespace klib::transfer
