// kmerge puts a sentence file and the anchors of a page together into a page. docs/pipeline.md
// describes the files and what is done with markup that a translation has put out of order.
#include <algorithm>
#include <string>

#include "programs/common/code_page.h"
#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/common/sentence_file.h"
#include "programs/common/utf8.h"
#include "programs/document/anchor_file.h"
#include "programs/document/nesting.h"
#include "programs/document/sentence_markup.h"
#include "programs/html/conversion.h"
#include "programs/html/tokenizer.h"

namespace klib::programs {
namespace {

constexpr int message_set = 90;
constexpr int64_t lost_shown = 20;

struct Merge {
  SentenceFile sentences;
  AnchorFile anchors;
  PageEncoder encoder;
  OutputFile result;
  CodePage code_page;
  std::string html[256];  // of each byte of the code page
  std::vector<Piece> pieces;
  SentenceMarkup markup;
  std::string encoded;
  int64_t frames = 0;

  Merge(const char *sentence_name, const char *anchor_name, const char *result_name)
      : sentences(sentence_name),
        anchors(anchor_name),
        encoder(anchors.encoding()),
        result(result_name) {}
};

std::string html_of(char32_t c) {
  std::string html;
  if (c == '<')
    html = "&lt;";
  else if (c == '>')
    html = "&gt;";
  else if (c == '&')
    html = "&amp;";
  else
    append_utf8(c, html);
  return html;
}

void write(Merge &job, std::string_view text) {
  job.encoded.clear();
  job.encoder.append(text, job.encoded);
  job.result.write(job.encoded);
}

[[noreturn]] void fail_at_byte(const Merge &job, std::string_view bytes) {
  fail(job.sentences.name(), job.sentences.line(), "sentence %d: %s is no character of %s",
       static_cast<int>(job.sentences.number()), readable(bytes).c_str(),
       parameter(TextParameter::language));
}

void write_text(const Merge &job, std::string_view bytes, NestedWriter &writer) {
  std::string html;
  for (size_t i = 0; i < bytes.size(); i++) {
    const std::string &one = job.html[static_cast<unsigned char>(bytes[i])];
    if (one.empty()) fail_at_byte(job, bytes.substr(i, 1));
    html += one;
  }
  writer.text(html);
}

// Writes the alien at `i`, which may be the first half of a pair, and gives the last piece taken.
size_t write_alien(const Merge &job, size_t i, NestedWriter &writer) {
  const std::vector<Part> &parts = job.markup.parts;
  std::string bytes(parts[i].piece.bytes);
  if (bytes.size() > 1 && bytes[1] == 'D' && i + 1 < parts.size() &&
      parts[i + 1].piece.kind == Piece::alien && parts[i + 1].piece.bytes.substr(1, 1) == "D")
    bytes += parts[i + 1].piece.bytes;
  size_t position = 0;
  const char32_t c = next_character(job.code_page, bytes, position);
  if (c == 0) fail_at_byte(job, bytes);
  if (c == '<') {
    writer.bare_less_than();
  } else {
    std::string text;
    append_utf8(c, text);
    writer.text(text);
  }
  return position > 5 ? i + 1 : i;
}

NestedWriter::Element element_of(const Merge &job, const Part &part) {
  const std::string &raw = part.anchor->raw;
  NestedWriter::Element element{part.piece.number, raw, {}};
  const auto closer = job.markup.closers.find(part.piece.number);
  if (closer != job.markup.closers.end())
    element.closing = job.markup.anchors.at(closer->second).raw;
  else if (!raw.empty())
    element.closing = "</" + std::string(next_token(raw, 0).name) + ">";
  element.outlives = part.anchor->kind == Anchor::opens_out;
  return element;
}

void write_anchor(const Merge &job, const Part &part, NestedWriter &writer) {
  switch (part.anchor->kind) {
    case Anchor::open:
    case Anchor::opens_out:
      writer.open(element_of(job, part));
      break;
    case Anchor::close:
      writer.close(part.anchor->partner);
      break;
    case Anchor::closes_from:
      writer.close_from_before(part.anchor->raw);
      break;
    default:
      writer.single(part.piece.number, part.anchor->raw);
  }
}

void write_frame(Merge &job) {
  split_sentence(job.sentences, job.sentences.text(), job.pieces);
  read_markup(job.sentences, job.pieces, job.anchors, job.markup);
  NestedWriter writer;
  for (size_t i = 0; i < job.markup.parts.size(); i++) {
    const Part &part = job.markup.parts[i];
    switch (part.piece.kind) {
      case Piece::text:
        write_text(job, part.piece.bytes, writer);
        break;
      case Piece::blank:
        writer.blank();
        break;
      case Piece::alien:
        i = write_alien(job, i, writer);
        break;
      case Piece::anchor:
        write_anchor(job, part, writer);
        break;
      case Piece::font:
        writer.select(part.piece.group,
                      part.anchor ? element_of(job, part) : NestedWriter::Element{0, {}, {}});
    }
  }
  writer.end();
  for (const int32_t number : writer.reopened())
    note(job.sentences.name(), job.sentences.line(),
         "sentence %d: the element of anchor %d is closed and opened again",
         static_cast<int>(job.sentences.number()), static_cast<int>(number));
  write(job, writer.result());
  c_tick(1);
  show_progress(++job.frames);
}

void write_between(Merge &job) {
  const int32_t number = job.sentences.number();
  const char *name = job.sentences.name();
  if (!job.anchors.has(number))
    fail(name, job.sentences.line(), "there is no anchor %d", static_cast<int>(number));
  if (job.anchors.times_read(number) > 0)
    report(name, job.sentences.line(), "anchor %d stands in an earlier place, too",
           static_cast<int>(number));
  write(job, job.anchors.read(number).raw);
}

void report_lost_anchors(Merge &job, const char *name) {
  Kcheck_all_anchors_used();
  int64_t lost = 0;
  for (int32_t number = 1; number <= job.anchors.count(); number++) {
    if (job.anchors.times_read(number) > 0) continue;
    if (job.anchors.kind(number) == Anchor::font)
      note(name, 0, "anchor %d, a font, is not used", static_cast<int>(number));
    else if (++lost <= lost_shown)
      report(name, 0, "anchor %d is lost", static_cast<int>(number));
  }
  if (lost > lost_shown)
    report(name, 0, "and %lld more", static_cast<long long>(lost - lost_shown));
}

void merge(const char *sentence_name, const char *anchor_name, const char *result_name) {
  Merge job(sentence_name, anchor_name, result_name);
  if (!job.encoder.good())
    fail(anchor_name, 1, "unknown encoding '%s'", job.anchors.encoding().c_str());
  make_code_page(parameter(TextParameter::language), job.code_page);
  for (int byte = 0; byte < 256; byte++)
    if (job.code_page.character[byte]) job.html[byte] = html_of(job.code_page.character[byte]);
  c_init();
  for (SentenceFile::Kind kind; (kind = job.sentences.next()) != SentenceFile::end;) {
    if (kind == SentenceFile::frame)
      write_frame(job);
    else
      write_between(job);
  }
  report_lost_anchors(job, anchor_name);
  job.encoded.clear();
  job.encoder.finish(job.encoded);
  job.result.write(job.encoded);
  job.result.finish();
  job.result.publish();
  c_exit(message_set, 1, "No sentence has been merged.\n", message_set, 2,
         "One sentence has been merged.\n", message_set, 3, "%d sentences have been merged.\n");
}

constexpr const char *purpose =
    "Puts the sentences of OUT.kti and the anchors of JOB.anc (with its index JOB.anx)\n"
    "together into the page RESULT. Markup that a translation has put out of order is\n"
    "repaired and reported. With '-' for RESULT, standard output is written.\n";

constexpr Parameter parameters[] = {
    {"LANGUAGE", "NAME", "the language of OUT.kti (GERMAN)"},
};

}  // namespace

const Program kmerge = {.name = "kmerge",
                        .files = "OUT.kti JOB.anc RESULT ...",
                        .purpose = purpose,
                        .parameters = parameters,
                        .job = job<merge, 3>};

}  // namespace klib::programs
