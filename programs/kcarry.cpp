// kcarry carries the format codes of a sentence file into a translation, along a word alignment.
// docs/pipeline.md describes the files, and what the result promises.
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "programs/carry/alignments.h"
#include "programs/carry/settle.h"
#include "programs/carry/source.h"
#include "programs/carry/transfer.h"
#include "programs/common/code_page.h"
#include "programs/common/line_reader.h"
#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/common/sentence.h"
#include "programs/common/sentence_file.h"

namespace klib::programs {
namespace {

struct Totals {
  int64_t sentences = 0, fonts = 0, anchors = 0, pairs = 0, untranslated = 0;
};

struct Carry {
  const char *source_language = parameter(TextParameter::language);
  const char *language_of_target = parameter(TextParameter::target_language);
  SentenceFile sentences;
  LineReader translation;
  std::unique_ptr<LineReader> alignment;  // none: the default
  OutputFile out;
  CodePage from, to;
  std::vector<Piece> pieces;
  SourceSentence source;
  std::vector<Link> links;
  Transfer transfer;
  std::string encoded, transferred, settled;
  Totals totals;

  // Without the name of an alignment, word k is translated by word k.
  Carry(const char *sentence_name, const char *translation_name, const char *alignment_name,
        const char *out_name)
      : sentences(sentence_name),
        translation(translation_name),
        alignment(alignment_name ? new LineReader(alignment_name) : nullptr),
        out(out_name) {}
};

// Encodes the translation, words between single blanks, and gives their number.
int32_t encode_translation(Carry &job) {
  const std::string_view line = job.translation.line();
  if (is_plain(line)) {  // printable ASCII is the same in every code page
    job.encoded = line;
    return count_words(line);
  }
  int32_t words = 0;
  job.encoded.clear();
  size_t position = 0;
  for (std::string_view word; !(word = next_word(line, position)).empty();) {
    if (words++ > 0) job.encoded += ' ';
    append_encoded(job.to, word, job.encoded);
  }
  return words;
}

// The anchors alone, for a sentence without translation; gives the number of its fonts.
int64_t keep_anchors(Carry &job) {
  job.settled.clear();
  for (const SourceCode &code : job.source.codes)
    if (!job.source.is_font(code)) job.settled += code.piece.bytes;
  return count_lost_fonts(job.source, {});
}

void append_count(int64_t count, const char *what, const char *how, std::string &text) {
  if (count == 0) return;
  text.append(", ").append(std::to_string(count)).append(" ").append(what);
  text.append(count == 1 ? " " : "s ").append(how);
}

void report_sentence(Carry &job, int64_t fonts, int64_t anchors, bool translated) {
  job.totals.fonts += fonts;
  job.totals.anchors += anchors;
  if (!translated) job.totals.untranslated++;
  if (fonts == 0 && anchors == 0 && translated) return;
  std::string text;
  if (!translated) text = ", no translation";
  append_count(fonts, "font", "dropped", text);
  append_count(anchors, "anchor", "placed by a fallback", text);
  const char *behind_comma = text.c_str() + 2;
  note(job.sentences.name(), job.sentences.line(), "sentence %d: %s",
       static_cast<int>(job.sentences.number()), behind_comma);
}

// Reads the alignment of the sentence.
void find_links(Carry &job, int32_t source_words, int32_t target_words) {
  if (job.alignment)
    job.totals.pairs += read_links(*job.alignment, source_words, target_words, job.links);
  else
    link_in_order(source_words, target_words, job.links);
}

// Writes the translation with the codes of the sentence to `settled`.
void carry_codes(Carry &job, int32_t target_words) {
  read_source(job.sentences, job.from, job.to, job.pieces, job.source);
  const SourceSentence &source = job.source;
  find_links(job, source.text.empty() ? 0 : static_cast<int32_t>(source.words.size()),
             target_words);
  if (target_words == 0) {
    report_sentence(job, keep_anchors(job), 0, false);
    return;
  }
  const int64_t anchors = move_anchors(job.source, job.links);
  initCT(job.language_of_target);
  transfer_codes(source, job.links, job.encoded, target_words, job.transfer, job.transferred);
  int64_t fonts = 0;
  if (source.has_fonts || job.transferred.find(alien_marker) != job.transferred.npos) {
    split_sentence(job.sentences, job.transferred, job.pieces);
    fonts = settle_fonts(job.to, source, job.links, job.pieces, job.settled);
  } else {
    job.settled = job.transferred;
  }
  initCT(job.source_language);
  report_sentence(job, fonts, anchors, true);
}

void carry_sentence(Carry &job) {
  const int32_t target_words = encode_translation(job);
  const std::string &text = job.sentences.text();
  if (has_codes(text)) {
    carry_codes(job, target_words);
  } else {
    find_links(job, count_words(text), target_words);
    job.settled = job.encoded;
    report_sentence(job, 0, 0, target_words > 0);
  }
  kti_format(job.out.stream(), job.settled.data(), -1);
  job.out.check();
  show_progress(++job.totals.sentences);
}

void write_anchor(Carry &job) {
  std::string line;
  append_anchor(job.sentences.number(), line);
  job.out.write(line + "\n");
}

// Fails with the numbers of both, when a file has not one line for each sentence.
void fail_at_lines(Carry &job, int64_t sentences) {
  for (SentenceFile::Kind kind; (kind = job.sentences.next()) != SentenceFile::end;)
    if (kind == SentenceFile::frame) sentences++;
  for (LineReader *file : {&job.translation, job.alignment.get()}) {
    if (!file) continue;
    while (file->next()) continue;
    if (file->number() != sentences)
      report(file->name(), 0, "has %lld lines, but %s has %lld sentences",
             static_cast<long long>(file->number()), job.sentences.name(),
             static_cast<long long>(sentences));
  }
  throw Failed{};
}

void show_summary(const Carry &job) {
  const Totals &totals = job.totals;
  note(job.sentences.name(), 0,
       "%lld sentences carried: %lld fonts dropped, %lld anchors placed by a fallback, %lld bad "
       "alignment pairs, %lld without translation",
       static_cast<long long>(totals.sentences), static_cast<long long>(totals.fonts),
       static_cast<long long>(totals.anchors), static_cast<long long>(totals.pairs),
       static_cast<long long>(totals.untranslated));
}

void carry(const char *sentences, const char *translation, const char *alignment, const char *out) {
  if (alignment && strcmp(alignment, "-") == 0 && strcmp(translation, "-") == 0)
    fail("standard input", 0, "cannot be both TRANSLATION and ALIGNMENT");
  const auto owner = std::make_unique<Carry>(sentences, translation, alignment, out);
  Carry &job = *owner;
  make_code_page(job.language_of_target, job.to);
  make_code_page(job.source_language, job.from);
  const ActiveLanguage active(job.source_language);
  init_kti_format(1);
  for (SentenceFile::Kind kind; (kind = job.sentences.next()) != SentenceFile::end;) {
    if (kind == SentenceFile::anchor) {
      write_anchor(job);
      continue;
    }
    const bool translated = job.translation.next();
    const bool aligned = !job.alignment || job.alignment->next();
    if (!translated || !aligned) fail_at_lines(job, job.totals.sentences + 1);
    carry_sentence(job);
  }
  if (job.translation.next() || (job.alignment && job.alignment->next()))
    fail_at_lines(job, job.totals.sentences);
  job.out.finish();
  job.out.publish();
  exit_kti_format();
  show_summary(job);
}

const char *align;  // the value of --align

void carry_without_file(const char *sentences, const char *translation, const char *out) {
  if (strcmp(align, "identity") != 0)
    fail("kcarry", 0, "--align=%s: the alignment without a file is identity", align);
  carry(sentences, translation, nullptr, out);
}

constexpr const char *purpose =
    "Carries the format codes of the sentences in JOB.kti into their translations and\n"
    "writes OUT.kti. TRANSLATION has one sentence a line, in UTF-8. ALIGNMENT has a\n"
    "line of pairs i-j for each: word i of the sentence (from 0) is translated by\n"
    "word j. With '-' for either of both, standard input is read.\n";

constexpr Parameter parameters[] = {
    {"LANGUAGE", "NAME", "the language of JOB.kti (GERMAN)"},
    {"TARGET-LANGUAGE", "NAME", "the language of TRANSLATION and OUT.kti (ENGLISH)"},
};

constexpr Option options[] = {
    {"align", "[identity]", &align, "take no ALIGNMENT: word k is translated by word k",
     &job<carry_without_file, 3>},
};

}  // namespace

const Program kcarry = {.name = "kcarry",
                        .files =
                            "JOB.kti TRANSLATION ALIGNMENT OUT.kti ...\n"
                            "--align=identity JOB.kti TRANSLATION OUT.kti ...",
                        .purpose = purpose,
                        .parameters = parameters,
                        .options = options,
                        .job = job<carry, 4>};

}  // namespace klib::programs
