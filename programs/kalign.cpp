// kalign finds out which words of two texts translate each other. docs/pipeline.md describes the
// files, programs/align the method.
#include <sys/stat.h>

#include <optional>
#include <string>
#include <vector>

#include "programs/align/material.h"
#include "programs/align/model_file.h"
#include "programs/align/tokens.h"
#include "programs/common/line_reader.h"
#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/frame/job_files.h"

namespace klib::programs {
namespace {

align::Material material;
const char *saved_model, *token_prefix;

const Option options[] = {
    {"memory", "SOURCE TARGET", &material.memories,
     "more lines and their translations to learn from;\nmay be repeated"},
    {"lexicon", "FILE", &material.lexicons,
     "words and their translations, a tab between them;\nmay be repeated"},
    {"model", "FILE", &material.model, "begin with what an earlier run has learned"},
    {"save", "FILE", &saved_model, "write what this run has learned, for --model"},
    {"tokens", "PREFIX", &token_prefix,
     "write what the pairs count to PREFIX.source and\nPREFIX.target: words, and in scripts "
     "without "
     "blanks\nthe words of a dictionary"},
    {"jobs", "N", NumberOption{&material.jobs, 0, 0, align::most_jobs},
     "use N processors (0, the default: all); the result\nis the same"},
};

// The files that --tokens writes.
struct TokenFiles {
  OutputFile source, target;

  explicit TokenFiles(const std::string &prefix)
      : source(prefix + ".source"), target(prefix + ".target") {}
};

void add_side(std::string_view line, align::LanguageModel &language, OutputFile *tokens,
              std::vector<align::Unit> &units) {
  align::read_units(line, language.vocabulary, units);
  if (!tokens) return;
  std::vector<align::Token> found;
  align::divide_into_tokens(line, units, found);
  tokens->write(align::token_line(line, found));
}

[[noreturn]] void fail_at_lines(LineReader &source, LineReader &target) {
  for (LineReader *file : {&source, &target})
    while (file->next()) continue;
  fail(target.name(), 0, "has %s, but %s has %lld", counted(target.number(), "line").c_str(),
       source.name(), static_cast<long long>(source.number()));
}

// Reads the texts, line by line.
void add_texts(const char *source_name, const char *target_name, TokenFiles *tokens,
               align::Alignment &alignment) {
  LineReader source(source_name), target(target_name);
  std::vector<align::Unit> units, partners;
  for (;;) {
    const bool has_source = source.next(), has_target = target.next();
    if (has_source != has_target) fail_at_lines(source, target);
    if (!has_source) return;
    add_side(align::source_line(source.line()), alignment.model.source,
             tokens ? &tokens->source : nullptr, units);
    add_side(target.line(), alignment.model.target, tokens ? &tokens->target : nullptr, partners);
    align::add_units(units, partners, alignment.model, alignment.corpus);
  }
}

std::string pairs_line(const std::vector<align::WordLink> &links) {
  std::string text;
  for (const align::WordLink &link : links) {
    if (!text.empty()) text += ' ';
    text.append(std::to_string(link.source)).append("-").append(std::to_string(link.target));
  }
  return text += '\n';
}

void align_files(const char *source, const char *target, const char *out_name) {
  OutputFile out(out_name);
  std::optional<TokenFiles> tokens;
  if (token_prefix) tokens.emplace(token_prefix);
  std::optional<OutputFile> model;
  if (saved_model) model.emplace(saved_model);
  align::Alignment alignment;
  align::start_alignment(material, source, alignment);
  add_texts(source, target, tokens ? &*tokens : nullptr, alignment);
  align::align_words(
      alignment.corpus, alignment.job, alignment.model,
      [&](int64_t, const std::vector<align::WordLink> &links) { out.write(pairs_line(links)); });
  if (model) model->write(align::write_model(alignment.model));
  std::vector<OutputFile *> files;
  if (tokens) files = {&tokens->source, &tokens->target};
  if (model) files.push_back(&*model);
  files.push_back(&out);
  for (OutputFile *file : files) file->finish();
  publish_all(files);
}

bool is_alignment(std::string_view first_bytes) {
  return first_bytes.find_first_not_of("0123456789- \n") == first_bytes.npos;
}

// Token lines look like any text. They are replaced beside an alignment, which they were made with.
void check_tokens(const std::string &name, const char *out) {
  struct stat status;
  const bool has_alignment =
      stat(out, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
  if (!has_alignment)
    check_replaced(
        name, [](std::string_view) { return false; }, "belongs to no ALIGNMENT");
}

// All jobs together, so that none replaces the result of another.
void check_files(std::span<const char *const> names, size_t group) {
  std::vector<std::string> inputs = align::files_of(material), outputs;
  for (size_t i = 0; i < names.size(); i++)
    (i % group == group - 1 ? outputs : inputs).emplace_back(names[i]);
  if (saved_model) outputs.emplace_back(saved_model);
  if (token_prefix)
    for (const char *side : {".source", ".target"})
      outputs.push_back(std::string(token_prefix).append(side));
  check_job_files(inputs, outputs);
  for (size_t i = group - 1; i < names.size(); i += group)
    check_replaced(names[i], is_alignment, "is no alignment");
  if (saved_model) check_replaced(saved_model, align::is_model, "is no model of kalign");
  if (token_prefix)
    for (const char *side : {".source", ".target"})
      check_tokens(std::string(token_prefix) + side, names[group - 1]);
}

void align_all(std::span<const char *const> names) {
  constexpr size_t group = 3;
  if (names.empty() || names.size() % group != 0)
    fail("kalign", 0, "%zu file name%s, but each job takes %zu", names.size(),
         names.size() == 1 ? "" : "s", group);
  if (names.size() > group && (saved_model || token_prefix))
    fail("kalign", 0, "--save and --tokens are for one job alone");
  check_files(names, group);
  for (; !names.empty(); names = names.subspan(group)) {
    try {
      align_files(names[0], names[1], names[2]);
    } catch (const Failed &) {
      // That was reported; the next job is independent of it.
    }
  }
}

}  // namespace

constinit const Program kalign = {
    .name = "kalign",
    .files = "SOURCE TARGET ALIGNMENT ...",
    .purpose =
        "Finds out which words translate each other. SOURCE has a sentence a line, such as\n"
        "JOB.txt of kextract, TARGET its translations, both in UTF-8. ALIGNMENT gets a line\n"
        "of pairs i-j for each, as kcarry takes them: word i of the sentence (from 0,\n"
        "between blanks) is translated by word j. No language need be given. '-' is standard\n"
        "input or output.\n",
    .options = options,
    .job = job<align_all, Job::any_files>,
};

}  // namespace klib::programs
