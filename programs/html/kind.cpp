// The table of what HTML is for kextract and kmerge; each function is a few lines over the rest of
// this room.
#include "programs/html/kind.h"

#include <algorithm>
#include <memory>

#include "programs/common/languages.h"
#include "programs/common/program.h"
#include "programs/common/sentence.h"
#include "programs/common/utf8.h"
#include "programs/html/attributes.h"
#include "programs/html/conversion.h"
#include "programs/html/exceptions.h"
#include "programs/html/page_file.h"
#include "programs/html/paragraph.h"
#include "programs/html/sentences.h"
#include "programs/html/text_reader.h"
#include "programs/html/tokenizer.h"

namespace klib::programs {
namespace {

struct LoadedExceptions {
  LoadedExceptions() { load_sentence_exceptions(); }
  ~LoadedExceptions() { free_sentence_exceptions(); }
};

void split(const Document &page, const CodePage &code_page, const Wishes &wishes,
           std::vector<Slot> &slots, const SentenceSink &sink) {
  const LoadedExceptions exceptions;
  const size_t mark = page.text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  Protection protection(language_code(parameter(TextParameter::language)), wishes.translate_code);
  ParagraphReader paragraphs(page.text, mark, protection, slots, wishes.offer,
                             !wishes.placeable.empty());
  std::vector<Item> items;
  std::vector<Frame> frames;
  while (paragraphs.next(items)) {
    find_frames(code_page, page.text, items, frames);
    for (const Frame &frame : frames) sink(items, frame);
  }
}

bool find_spellings(std::string_view raw, std::vector<std::string_view> &spellings) {
  bool any_reference = false;
  for (TextReader reader(raw); !reader.at_end();) {
    if (reader.skip_plain()) continue;
    const size_t begin = reader.position();
    const char32_t c = reader.next().character;
    if (c <= ' ' || !is_invisible(c)) continue;
    spellings.push_back(raw.substr(begin, reader.position() - begin));
    any_reference = any_reference || raw[begin] == '&';
  }
  return any_reference;
}

void write_character(char32_t c, std::string &text) {
  if (c == '<')
    text += "&lt;";
  else if (c == '>')
    text += "&gt;";
  else if (c == '&')
    text += "&amp;";
  else
    append_utf8(c & ~bare_flag, text);
}

std::string closing_tag(std::string_view opening) {
  const size_t begin = std::min(opening.find('<'), opening.size() - 1);  // after white space
  return std::string("</").append(next_token(opening, begin).name).append(">");
}

Encoder encoder(std::string_view encoding) {
  const auto owner = std::make_shared<PageEncoder>(encoding);
  if (!owner->good()) return {};
  return {[owner](std::string_view text, std::string &encoded) { owner->append(text, encoded); },
          [owner](std::string &encoded) { owner->finish(encoded); }};
}

}  // namespace

const DocumentKind html = {.name = "html",
                           .is_html = true,
                           .read = read_page,
                           .split = split,
                           .read_text = read_text,
                           .find_spellings = find_spellings,
                           .write_character = write_character,
                           .read_value = read_value,
                           .write_value = write_value,
                           .write_for_language = write_for_language,
                           .closing_tag = closing_tag,
                           .encoder = encoder};

}  // namespace klib::programs
