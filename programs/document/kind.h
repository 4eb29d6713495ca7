// What kextract and kmerge need to know about a kind of document: each kind has a folder of its
// own, which fills one of these tables, and a row in programs/kinds.cpp. Nothing else knows the
// kinds.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "programs/common/code_page.h"

namespace klib::programs {

// A document brought to UTF-8: the text that pieces are cut from, markup and all.
struct Document {
  std::string text;
  std::string encoding;  // its name, by which encoder() finds the way back
};

// A piece of running text. The pieces of a paragraph follow each other without a gap.
struct Item {
  enum Kind { text, white, open, close, single };  // the last three are markup
  Kind kind;
  size_t begin, end;      // in the text of the document
  std::string_view name;  // of a tag
  size_t partner = none;  // of a tag that is one of a properly nested pair: the other's place
  bool visible = false;   // text that has a character to see
  bool lettered = false;  // text that has a letter or a digit
  bool atom = false;      // a single piece of markup that is like a word: an image, a formula
  bool kept = false;      // not to be translated; of a tag: what is in its element
  // A tag without partner, of an element that may have been opened before the paragraph or may be
  // closed after it: nothing in the paragraph crosses it.
  bool reaches_out = false;
  // Of an opening tag with a partner: the font group that expresses the whole element, so that its
  // closing tag can be made from its name; -1: none does.
  int font_group = -1;

  static constexpr size_t none = ~size_t{0};
  bool is_markup() const { return kind >= open; }
};

// A piece of markup that a translation replaces (document/slots.h).
struct Slot {
  enum Kind { text, language, direction };
  Kind kind;
  size_t begin, end;  // in the text of the document, with quotes
};

// What a user asks of extraction, as far as it concerns kinds of documents.
struct Wishes {
  std::string_view placeable{};  // the word for what is like a word without being text
  bool translate_code = false;   // text that is code is like any other
  std::string_view offer{};      // elements whose text is otherwise kept whole; commas between them
};

// The items of one sentence that are in its frame: from the first to before the last.
struct Frame {
  size_t first, last;
};

// Takes the sentences of a document, in order.
using SentenceSink = std::function<void(const std::vector<Item> &items, const Frame &frame)>;

// Brings UTF-8 to an encoding, piece by piece.
struct Encoder {
  // Appends the text; a character that the encoding lacks is written as a reference.
  std::function<void(std::string_view text, std::string &encoded)> append;
  std::function<void(std::string &encoded)> finish;  // back to the encoding's first state
};

struct DocumentKind {
  std::string_view name;  // in the anchor file
  bool is_html = false;   // a browser shows it: reports have it beside its translation

  // Reads a file ("-": standard input) in the encoding that it declares, else in the one of this
  // label, which may be empty. What could not come back as it was ends the job (fail()).
  Document (*read)(const char *name, const std::string &encoding);

  // Passes the sentences to the sink. What is between them stays as it is. The code page is that of
  // the language in use. Slots are added to `slots` in their order, those of a sentence before it
  // is passed on.
  void (*split)(const Document &document, const CodePage &page, const Wishes &wishes,
                std::vector<Slot> &slots, const SentenceSink &sink);

  // Appends the characters of an item of text; those that could be markup and are not have
  // bare_flag (common/sentence.h).
  void (*read_text)(std::string_view raw, std::u32string &text);

  // Appends how each character of a text that cannot be seen is written: itself or a reference.
  // False when all are themselves.
  bool (*find_spellings)(std::string_view raw, std::vector<std::string_view> &spellings);

  // Appends a character of a sentence as the document has it.
  void (*write_character)(char32_t character, std::string &text);

  // The text of what is written in a slot of that kind, and how a text is written in its place.
  std::u32string (*read_value)(std::string_view written);
  void (*write_value)(std::string_view written, std::u32string_view text, std::string &result);

  // What is written in another slot after a translation from one language into another.
  void (*write_for_language)(std::string_view key, std::string_view written,
                             const std::string &from, const std::string &to, std::string &result);

  // The closing tag that is made from the name of an opening one.
  std::string (*closing_tag)(std::string_view opening);

  // The way back to an encoding; without functions when there is no such encoding.
  Encoder (*encoder)(std::string_view encoding);
};

}  // namespace klib::programs
