// kcarry carries the format codes of a sentence file into a translation, along a word alignment.
// docs/pipeline.md describes the files, and what the result promises.

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "programs/carry/alignments.h"
#include "programs/carry/place.h"
#include "programs/common/code_page.h"
#include "programs/common/line_reader.h"
#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/common/sentence.h"
#include "programs/common/sentence_file.h"
#include "programs/common/utf8.h"
#include "programs/frame/job_files.h"
#include "programs/kcarry_lines.h"

namespace klib::programs {
namespace {

struct Totals {
  int64_t sentences = 0, fonts = 0, anchors = 0, pairs = 0, untranslated = 0;
};

struct Carry {
  SentenceFile sentences;  // first: it knows the language
  const char *source_language = parameter(TextParameter::language);
  const char *language_of_target = parameter(TextParameter::target_language);
  std::unique_ptr<LineReader> translation, alignment;  // without the second, in order
  std::vector<CarryLine> lines;                        // or else all of this, read before
  std::string_view line;                               // of the translation
  OutputFile out;
  std::string anchor_name;
  std::unique_ptr<AnchorKinds> anchors;  // none: nothing is known about them
  bool lack_is_reported = false;         // of anchor files
  CodePage from, to;
  Sentence source, result;
  std::vector<Link> links;
  Placement placement;
  std::string encoded;
  Totals totals;

  // Whether all lines were read before, and the one of the current sentence.
  bool is_prepared() const { return !translation; }
  const CarryLine &prepared() const { return lines[static_cast<size_t>(totals.sentences)]; }

  Carry(const char *sentence_name, const char *out_name)
      : sentences(sentence_name), out(out_name) {}
};

// Writes the words of the translation to `encoded`, one blank between them; the result is their
// number.
int32_t encode_translation(Carry &job) {
  const std::string_view line = job.line;
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

// The source as placing takes it.
void take_source(Carry &job) {
  Side &source = job.placement.source;
  source.text.resize(job.source.text.size());
  std::ranges::transform(job.source.text, source.text.begin(),
                         [](char32_t c) { return c & ~bare_flag; });
  split_at_blanks(source);
}

// The translation as placing takes it: its words, one blank between them.
void take_target(Carry &job) {
  Side &target = job.placement.target;
  const std::string_view line = job.line;
  target.words.clear();
  target.text.resize(line.size() + 1);
  char32_t *const text = target.text.data();
  uint32_t size = 0;
  size_t position = 0;
  for (std::string_view word; !(word = next_word(line, position)).empty();) {
    if (size > 0) text[size++] = ' ';
    const uint32_t begin = size;
    for (size_t i = 0; i < word.size();) {
      const auto byte = static_cast<unsigned char>(word[i]);
      text[size++] = byte < 0x80 ? (i++, byte) : next_utf8(word, i);
    }
    target.words.push_back({begin, size});
  }
  target.text.resize(size);
}

// Reads the markup of the sentence. A lack of anchor files is reported before the first anchor that
// is placed without them.
void take_markup(Carry &job) {
  const auto &codes = job.source.codes;
  const bool has_anchors =
      std::ranges::any_of(codes, [](const Code &code) { return !code.is_font(); });
  if (has_anchors && !job.anchors && !job.lack_is_reported) {
    note(
        job.anchor_name.c_str(), 0,
        "is not there: which anchors are the two tags of an element is unknown, and each is placed "
        "by itself");
    job.lack_is_reported = true;
  }
  survey(job.placement.source);
  read_markup(job.sentences, job.source, job.placement.source, job.anchors.get(),
              job.placement.markup);
}

// The anchors alone, for a sentence without translation; the result is the number of its fonts.
int64_t keep_anchors(Carry &job) {
  job.encoded.clear();
  for (const Code &code : job.source.codes)
    if (!code.is_font()) append_anchor(code.number, job.encoded);
  const Markup &markup = job.placement.markup;
  return markup.lost_fonts + std::ranges::count_if(markup.spans, &Span::is_font);
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
  const char *after_comma = text.c_str() + 2;
  note({job.sentences.name(), job.sentences.line(), job.sentences.number()},
       translated ? "placement" : "untranslated",
       {{"fonts-dropped", fonts}, {"anchors-by-fallback", anchors}}, "%s", after_comma);
}

// Reads the alignment of the sentence.
void find_links(Carry &job, int32_t source_words, int32_t target_words) {
  if (job.is_prepared())
    job.links = job.prepared().links;
  else if (job.alignment)
    job.totals.pairs += read_links(*job.alignment, source_words, target_words, job.links);
  else
    link_in_order(source_words, target_words, job.links);
}

// Whether the translation, whose words have a blank between them, has those of the sentence.
bool has_same_words(std::u32string_view source, std::u32string_view target) {
  constexpr std::u32string_view white = U" \t\n\v\f\r";
  size_t i = 0, j = 0;
  for (;; i++) {
    const size_t begin = std::min(source.find_first_not_of(white, i), source.size());
    const bool is_parted = begin > i;
    i = begin;
    if (j == target.size()) return i == source.size();
    if (is_parted && j > 0 && target[j++] != ' ') return false;
    if (i == source.size() || source[i] != target[j++]) return false;
  }
}

// Whether there is more to carry than words: codes, or a '<', '>' or '&' that is in the page as
// itself and may be so again.
bool has_more_than_words(const Carry &job) {
  const std::string &text = job.sentences.text();
  return has_codes(text) ||
         (text.find(alien_marker) != text.npos && job.line.find_first_of("<>&") != job.line.npos);
}

// Writes the translation with the codes of the sentence to `encoded`.
void carry_codes(Carry &job) {
  read_sentence(job.sentences, job.from, job.source);
  take_source(job);
  take_target(job);
  Placement &placement = job.placement;
  if (job.is_prepared()) {
    placement.source.words = job.prepared().source_words;
    placement.target.words = job.prepared().target_words;
  }
  take_markup(job);
  find_links(job, static_cast<int32_t>(placement.source.words.size()),
             static_cast<int32_t>(placement.target.words.size()));
  if (placement.target.words.empty()) {
    report_sentence(job, keep_anchors(job), 0, false);
    return;
  }
  if (has_same_words(placement.source.text, placement.target.text)) {
    job.encoded.clear();
    append_sentence(job.source, job.to, job.encoded);
    return;
  }
  place_markup(job.links, placement);
  job.result.text.swap(placement.target.text);
  job.result.codes.swap(placement.codes);
  job.encoded.clear();
  append_sentence(job.result, job.to, job.encoded);
  report_sentence(job, placement.dropped_fonts, placement.fallback_anchors, true);
}

void carry_sentence(Carry &job) {
  if (has_more_than_words(job)) {
    carry_codes(job);
  } else {
    const std::string &text = job.sentences.text();
    const int32_t target_words = encode_translation(job);
    find_links(job, count_words(text), target_words);
    report_sentence(job, 0, 0, target_words > 0);
  }
  write_frame(job.out.stream(), job.sentences.number(), job.encoded);
  job.out.check();
  show_progress(++job.totals.sentences);
}

void write_anchor(Carry &job) {
  std::string line;
  append_anchor(job.sentences.number(), line);
  job.out.write(line + "\n");
}

// Fails with both numbers: a file does not have one line for each sentence.
void fail_at_lines(Carry &job, int64_t sentences) {
  for (SentenceFile::Kind kind; (kind = job.sentences.next()) != SentenceFile::end;)
    if (kind == SentenceFile::frame) sentences++;
  for (LineReader *file : {job.translation.get(), job.alignment.get()}) {
    if (!file) continue;
    while (file->next()) continue;
    if (file->number() != sentences)
      report({file->name()}, "wrong-count", {{"lines", file->number()}, {"sentences", sentences}},
             "has %s, but %s has %s", counted(file->number(), "line").c_str(), job.sentences.name(),
             counted(sentences, "sentence").c_str());
  }
  throw Failed{};
}

void show_summary(const Carry &job) {
  const Totals &totals = job.totals;
  note({job.sentences.name()}, "totals",
       {{"sentences", totals.sentences},
        {"fonts-dropped", totals.fonts},
        {"anchors-by-fallback", totals.anchors},
        {"bad-pairs", totals.pairs},
        {"untranslated", totals.untranslated}},
       "%s carried: %s dropped, %s placed by a fallback, %s, %lld without translation",
       counted(totals.sentences, "sentence").c_str(), counted(totals.fonts, "font").c_str(),
       counted(totals.anchors, "anchor").c_str(),
       counted(totals.pairs, "bad alignment pair").c_str(),
       static_cast<long long>(totals.untranslated));
}

// Whether the sentence has a line in every file.
bool next_lines(Carry &job) {
  if (job.is_prepared()) {
    job.line = job.prepared().translation;
    return true;
  }
  const bool translated = job.translation->next();
  const bool aligned = !job.alignment || job.alignment->next();
  if (translated) job.line = job.translation->line();
  return translated && aligned;
}

const char *alignment_kind;  // the value of --align
const char *source_tokens, *target_tokens;
align::Material material;

void open_files(Carry &job, const char *translation, const char *alignment) {
  const bool in_order = !alignment && strcmp(alignment_kind, "identity") == 0;
  if (!in_order && (!alignment || source_tokens || target_tokens)) {
    const CarryFiles files = {job.sentences.name(), translation, alignment, source_tokens,
                              target_tokens};
    job.lines = prepare_lines(files, material, job.from, job.totals.pairs);
    return;
  }
  job.translation = std::make_unique<LineReader>(translation);
  if (alignment) job.alignment = std::make_unique<LineReader>(alignment);
}

void carry(const char *sentences, const char *translation, const char *alignment, const char *out) {
  if (alignment && strcmp(alignment, "-") == 0 && strcmp(translation, "-") == 0)
    fail("standard input", 0, "cannot be both TRANSLATION and ALIGNMENT");
  std::vector<std::string> inputs = align::files_of(material);
  inputs.insert(inputs.end(),
                {sentences, translation, with_type(sentences, "anc"), with_type(sentences, "anx")});
  for (const char *name : {alignment, source_tokens, target_tokens})
    if (name) inputs.emplace_back(name);
  const std::string outputs[] = {out};
  check_job_files(inputs, outputs);
  check_sentence_file(out);
  const auto owner = std::make_unique<Carry>(sentences, out);
  Carry &job = *owner;
  job.anchor_name = with_type(sentences, "anc");
  if (is_there(job.anchor_name)) {
    job.anchors = std::make_unique<AnchorKinds>(job.anchor_name);
    check_same_job(sentences, job.sentences.header(), job.anchor_name.c_str(),
                   job.anchors->header());
  }
  make_code_page(job.language_of_target, job.to);
  make_code_page(job.source_language, job.from);
  const ActiveLanguage active(job.source_language);
  JobHeader header = job.sentences.header();
  header.target = job.language_of_target;
  job.out.write(sentence_header(header));
  open_files(job, translation, alignment);
  init_kti_format(1);
  for (SentenceFile::Kind kind; (kind = job.sentences.next()) != SentenceFile::end;) {
    if (kind == SentenceFile::anchor) {
      write_anchor(job);
      continue;
    }
    if (!next_lines(job)) fail_at_lines(job, job.totals.sentences + 1);
    carry_sentence(job);
  }
  if (!job.is_prepared() && (job.translation->next() || (job.alignment && job.alignment->next())))
    fail_at_lines(job, job.totals.sentences);
  job.out.finish();
  exit_kti_format();
  show_summary(job);
  job.out.publish();  // nothing that can fail comes after it
}

void carry_without_file(const char *sentences, const char *translation, const char *out) {
  if (alignment_kind[0] != '\0' && strcmp(alignment_kind, "identity") != 0)
    fail("kcarry", 0, "--align=%s: the alignment without a file is --align or --align=identity",
         alignment_kind);
  if (source_tokens || target_tokens)
    fail("kcarry", 0, "tokens are for an ALIGNMENT that counts them, not for --align");
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

const Option options[] = {
    {"align", "[identity]", &alignment_kind,
     "take no ALIGNMENT: find it, as kalign does; or, with\n=identity, word k is translated by "
     "word "
     "k",
     &job<carry_without_file, 3>},
    {"memory", "SOURCE TARGET", &material.memories,
     "for --align, more lines and their translations to\nlearn from; may be repeated"},
    {"lexicon", "FILE", &material.lexicons,
     "for --align, words and their translations, a tab\nbetween them; may be repeated"},
    {"model", "FILE", &material.model, "for --align, what a run of kalign has learned"},
    {"jobs", "N", NumberOption{&material.jobs, 0, 0, align::most_jobs},
     "for --align, use N processors (0, the default: all)"},
    {"source-tokens", "FILE", &source_tokens,
     "ALIGNMENT counts the tokens of these lines, not the\nwords of the sentences"},
    {"target-tokens", "FILE", &target_tokens, "the same for the translations"},
};

}  // namespace

const Program kcarry = {.name = "kcarry",
                        .files =
                            "JOB.kti TRANSLATION ALIGNMENT OUT.kti ...\n"
                            "--align[=identity] JOB.kti TRANSLATION OUT.kti ...",
                        .purpose = purpose,
                        .parameters = parameters,
                        .options = options,
                        .job = job<carry, 4>};

}  // namespace klib::programs
