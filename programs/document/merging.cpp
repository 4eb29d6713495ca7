// Anchors become their texts, fonts the opening tag of their number and a closing tag; text is
// written as its kind of document has it. docs/pipeline.md says what is done with markup that a
// translation has put out of order.
#include "programs/document/merging.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "programs/common/code_page.h"
#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/common/sentence.h"
#include "programs/common/sentence_file.h"
#include "programs/common/utf8.h"
#include "programs/document/anchor_file.h"
#include "programs/document/nesting.h"
#include "programs/document/sentence_markup.h"
#include "programs/document/slots.h"
#include "programs/document/spellings.h"

namespace klib::programs {
namespace {

constexpr int message_set = 90;
constexpr int64_t lost_shown = 20;

// The kind of document, when both files belong together.
const DocumentKind &kind_of(FindKind find, const SentenceFile &sentences, const AnchorFile &anchors,
                            const char *anchor_name) {
  const JobHeader &header = anchors.header();
  check_same_job(sentences.name(), sentences.header(), anchor_name, header);
  const DocumentKind *kind = find(header.kind);
  if (!kind)
    fail({anchor_name, 1}, "wrong-kind", {}, "unknown kind of document '%s'", header.kind.c_str());
  return *kind;
}

struct Merge {
  SentenceFile sentences;
  AnchorFile anchors;
  const DocumentKind &kind;
  Encoder encoder;
  OutputFile result;
  CodePage page;
  Sentence sentence;
  SentenceMarkup markup;
  std::string text, encoded;
  std::unordered_map<int32_t, std::u32string> values{};  // the texts of slots
  int32_t value = 0;  // the anchor of the text that is next, or 0
  Spellings spellings{kind};
  std::string held{};     // what waits for the texts of its slots
  size_t held_begin = 0;  // what is before it has been written
  int64_t frames = 0;

  Merge(FindKind find, const char *sentence_name, const char *anchor_name, const char *result_name)
      : sentences(sentence_name),
        anchors(anchor_name),
        kind(kind_of(find, sentences, anchors, anchor_name)),
        encoder(kind.encoder(anchors.header().encoding)),
        result(result_name) {}

  Place place() const { return {sentences.name(), sentences.line(), sentences.number()}; }
};

void write_encoded(Merge &job, std::string_view text) {
  job.encoded.clear();
  job.encoder.append(text, job.encoded);
  job.result.write(job.encoded);
}

// Appends a text as the value of an attribute.
void write_value(Merge &job, std::string_view written, std::u32string_view text,
                 std::string &result) {
  std::string value;
  job.kind.write_value(written, text, value);
  for (size_t i = 0; i < value.size();) {
    const size_t begin = i;
    const std::string_view spelling = job.spellings.next(next_utf8(value, i));
    result += spelling.empty() ? std::string_view(value).substr(begin, i - begin) : spelling;
  }
}

// Appends what comes in the place of a slot; false when its text is not known yet.
bool fill(Merge &job, const SlotPlace &slot, std::string &result) {
  const JobHeader &header = job.sentences.header();
  if (slot.key == "lang" || slot.key == "dir") {
    if (header.target.empty() || header.target == header.language)
      result += slot.written;
    else
      job.kind.write_for_language(slot.key, slot.written, header.language, header.target, result);
    return true;
  }
  int32_t number = 0;
  std::from_chars(slot.key.data(), slot.key.data() + slot.key.size(), number);
  const auto value = job.values.find(number);
  if (value == job.values.end()) return false;
  std::u32string as_written = job.kind.read_value(slot.written);
  for (char32_t &c : as_written) c &= ~bare_flag;
  if (value->second.empty() || value->second == as_written)
    result += slot.written;
  else
    write_value(job, slot.written, value->second, result);
  return true;
}

// Writes what is held up to the first slot whose text is not known; at the end all of it.
void write_held(Merge &job, bool at_end) {
  std::string filled;
  size_t position = job.held_begin;
  for (SlotPlace slot; find_slot(job.held, position, slot); position = slot.end) {
    filled.append(job.held, position, slot.begin - position);
    if (fill(job, slot, filled)) continue;
    if (at_end) {
      filled += slot.written;
      continue;
    }
    write_encoded(job, filled);
    job.held_begin = slot.begin;
    if (job.held_begin > job.held.size() / 2)  // not each time: slots can be many
      job.held.erase(0, std::exchange(job.held_begin, 0));
    return;
  }
  write_encoded(job, filled.append(job.held, position));
  job.held.clear();
  job.held_begin = 0;
}

void write(Merge &job, std::string_view text) {
  if (job.held.empty() && text.find('\xFF') == text.npos) {
    write_encoded(job, text);
  } else {
    job.held += text;
    write_held(job, false);
  }
}

NestedWriter::Element element_of(const Merge &job, int32_t number) {
  const Anchor &anchor = job.markup.anchors.at(number);
  NestedWriter::Element element{number, anchor.raw, {}};
  const auto closer = job.markup.closers.find(number);
  if (closer != job.markup.closers.end())
    element.closing = job.markup.anchors.at(closer->second).raw;
  else if (!anchor.raw.empty())
    element.closing = job.kind.closing_tag(anchor.raw);
  element.outlives = anchor.kind == Anchor::opens_out;
  return element;
}

void write_code(const Merge &job, const Code &code, bool closers_are_written,
                NestedWriter &writer) {
  if (code.is_font()) {
    writer.select(code.group, code.number > 0 ? element_of(job, code.number)
                                              : NestedWriter::Element{0, {}, {}});
    return;
  }
  const Anchor &anchor = job.markup.anchors.at(code.number);
  switch (anchor.kind) {
    case Anchor::open:
    case Anchor::opens_out:
      writer.open(element_of(job, code.number));
      break;
    case Anchor::close:
      writer.close(anchor.partner);
      break;
    case Anchor::closes_from:
      if (!closers_are_written) writer.close_from_before(anchor.raw);
      break;
    case Anchor::kept:
      writer.text(anchor.raw);
      break;
    case Anchor::kept_end:
      break;
    default:
      writer.single(code.number, anchor.raw);
  }
}

void write_character(Merge &job, char32_t c, std::string &text) {
  const std::string_view spelling =
      job.spellings.are_all_themselves() ? std::string_view() : job.spellings.next(c);
  if (spelling.empty())
    job.kind.write_character(c, text);
  else
    text += spelling;
}

// Writes the characters of the sentence from `begin` to before `end`.
void write_characters(Merge &job, size_t begin, size_t end, NestedWriter &writer) {
  const std::u32string &text = job.sentence.text;
  for (size_t i = begin; i < end;) {
    if (text[i] == ' ') {
      writer.blank();
      i++;
    } else if (text[i] == (U'<' | bare_flag)) {
      writer.bare_less_than();
      i++;
    } else {
      job.text.clear();
      for (; i < end && text[i] != ' ' && text[i] != (U'<' | bare_flag); i++)
        write_character(job, text[i], job.text);
      writer.text(job.text);
    }
  }
}

// The place of the end of a kept piece that begins with the code at `i`, or `i` when it has none.
size_t end_of_kept(const Merge &job, size_t i) {
  const std::vector<Code> &codes = job.sentence.codes;
  if (codes[i].is_font() || job.markup.anchors.at(codes[i].number).kind != Anchor::kept) return i;
  const auto closer = job.markup.closers.find(codes[i].number);
  if (closer == job.markup.closers.end()) return i;
  for (size_t end = i + 1; end < codes.size(); end++)
    if (!codes[end].is_font() && codes[end].number == closer->second) return end;
  return i;
}

void write_nested(Merge &job, bool closers_are_written, NestedWriter &writer) {
  const std::vector<Code> &codes = job.sentence.codes;
  size_t position = 0;
  for (size_t i = 0; i < codes.size(); i++) {
    write_characters(job, position, codes[i].at, writer);
    write_code(job, codes[i], closers_are_written, writer);
    // The text up to its end is written already, by the piece. What else is there follows it.
    const size_t end = end_of_kept(job, i);
    position = codes[end].at;
    while (i < end) write_code(job, codes[++i], closers_are_written, writer);
  }
  write_characters(job, position, job.sentence.text.size(), writer);
  writer.end();
}

// What opening elements again may cost in a sentence: more than any real one needs, and no more
// than a multiple of its size.
size_t budget_of(const Merge &job) {
  constexpr size_t always = 4096, factor = 4;
  size_t size = job.sentence.text.size();
  for (const auto &[number, anchor] : job.markup.anchors) size += anchor.raw.size();
  return always + factor * size;
}

// Writes the sentence with the elements around it that crossed others too often. Closing tags of
// elements opened before the sentence then come first.
void write_surrounded(Merge &job, std::vector<NestedWriter::Element> &around,
                      NestedWriter &writer) {
  std::ranges::sort(around, [](const auto &one, const auto &other) {
    return one.outlives != other.outlives ? one.outlives : one.number < other.number;
  });
  for (const Code &code : job.sentence.codes)
    if (!code.is_font() && job.markup.anchors.at(code.number).kind == Anchor::closes_from)
      writer.close_from_before(job.markup.anchors.at(code.number).raw);
  writer.put_around(around);
  write_nested(job, true, writer);
}

// Takes the frame that holds the text of slots.
void take_value(Merge &job) {
  std::u32string text = job.sentence.text;
  for (char32_t &c : text) c &= ~bare_flag;
  job.values[std::exchange(job.value, 0)] = std::move(text);
  for (const Code &code : job.sentence.codes)
    report(job.place(), "code-left-out", {{"anchor", code.number}},
           "anchor %d is in the text of an attribute, and is left out",
           static_cast<int>(code.number));
  write_held(job, false);
}

void merge_frame(Merge &job) {
  read_sentence(job.sentences, job.page, job.sentence);
  if (job.value != 0) {
    take_value(job);
    c_tick(1);
    show_progress(++job.frames);
    return;
  }
  repair_markup(job.sentences, job.anchors, job.sentence, job.markup);
  std::optional<NestedWriter> writer(budget_of(job));
  write_nested(job, false, *writer);
  std::vector<NestedWriter::Element> around;
  while (!writer->too_costly().empty()) {
    around.insert(around.end(), writer->too_costly().begin(), writer->too_costly().end());
    writer.emplace(budget_of(job));
    write_surrounded(job, around, *writer);
  }
  for (const NestedWriter::Element &element : around)
    note(job.place(), "put-around", {{"anchor", element.number}},
         "the element of anchor %d crosses too many others; it is put around the whole sentence",
         static_cast<int>(element.number));
  for (const int32_t number : writer->reopened())
    note(job.place(), "reopened", {{"anchor", number}},
         "the element of anchor %d is closed and opened again", static_cast<int>(number));
  write(job, writer->result());
  job.spellings.end_frame();
  c_tick(1);
  show_progress(++job.frames);
}

void merge_between(Merge &job) {
  const int32_t number = job.sentences.number();
  const Place place = {job.sentences.name(), job.sentences.line()};
  if (!job.anchors.has(number))
    fail(place, "no-anchor", {{"anchor", number}}, "there is no anchor %d",
         static_cast<int>(number));
  if (job.anchors.times_read(number) > 0)
    report(place, "anchor-repeated", {{"anchor", number}}, "anchor %d is in an earlier place, too",
           static_cast<int>(number));
  const Anchor anchor = job.anchors.read(number);
  if (anchor.kind == Anchor::value)
    job.value = number;
  else if (anchor.kind == Anchor::spelling)
    job.spellings.take(anchor.raw);
  else
    write(job, anchor.raw);
}

void report_lost_anchors(Merge &job, const char *name) {
  int64_t lost = 0;
  for (int32_t number = 1; number <= job.anchors.count(); number++) {
    if (job.anchors.times_read(number) > 0) continue;
    const Figures figures = {{"anchor", number}};
    if (job.anchors.report_lost(number) == Anchor::font)
      note({name}, "font-unused", figures, "anchor %d, a font, is not used",
           static_cast<int>(number));
    else if (++lost <= lost_shown)
      report({name}, "anchor-lost", figures, "anchor %d is lost", static_cast<int>(number));
  }
  if (lost > lost_shown)
    report({name}, "anchors-lost", {{"more", lost - lost_shown}}, "and %lld more",
           static_cast<long long>(lost - lost_shown));
}

}  // namespace

void merge_document(FindKind find, const char *sentence_name, const char *anchor_name,
                    const char *result_name) {
  Merge job(find, sentence_name, anchor_name, result_name);
  if (!job.encoder.append)
    fail(anchor_name, 1, "unknown encoding '%s'", job.anchors.header().encoding.c_str());
  make_code_page(parameter(TextParameter::language), job.page);
  c_init();
  for (SentenceFile::Kind kind; (kind = job.sentences.next()) != SentenceFile::end;) {
    if (kind == SentenceFile::frame)
      merge_frame(job);
    else
      merge_between(job);
  }
  write_held(job, true);
  report_lost_anchors(job, anchor_name);
  job.encoded.clear();
  job.encoder.finish(job.encoded);
  job.result.write(job.encoded);
  job.result.finish();
  record({sentence_name}, "totals", {{"sentences", job.frames}, {"anchors", job.anchors.count()}});
  c_exit(message_set, 1, "No sentence has been merged.\n", message_set, 2,
         "One sentence has been merged.\n", message_set, 3, "%d sentences have been merged.\n");
  job.result.publish();  // nothing that can fail comes after it
}

}  // namespace klib::programs
