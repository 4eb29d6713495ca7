// ktranslate takes pages to their translations: it runs what kextract, kcarry and kmerge do on
// every page, with a translation engine and the word aligner between them. docs/pipeline.md
// describes the steps, docs/many-documents.md how to run it over many pages.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <thread>

#include "programs/common/input_file.h"
#include "programs/common/languages.h"
#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/document/wishes.h"
#include "programs/frame/job_files.h"
#include "programs/kinds.h"
#include "programs/translate/align_pages.h"
#include "programs/translate/interruption.h"
#include "programs/translate/page_report.h"
#include "programs/translate/result_names.h"
#include "programs/translate/sentences.h"
#include "programs/translate/temporary_folder.h"
#include "programs/translate/work.h"

namespace klib::programs {
namespace {

const char *engine, *translation, *cache_name, *folder, *encoding, *html, *placeable, *offer;
bool copy, marks_unknown, translate_code;
align::Material material;
int64_t jobs, timeout;

constexpr std::string_view apertium_prefix = "apertium:";

// Apertium takes this for a number: it comes through all of its modes as it is, and an article and
// its noun stay together around it. What another engine does with such a word is not known.
constexpr const char *apertium_placeable = "{90#}";

bool is_apertium() { return engine && std::string_view(engine).starts_with(apertium_prefix); }

// A run over its pages.
struct Run {
  std::vector<PageFiles> pages;
  std::string folder;  // of the files between the steps, with '/'
  RunNotes notes;
  int64_t jobs = 1;
  int64_t sentences = 0, answered = 0;
  size_t pages_done = 0;
  std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();
};

void check_options() {
  const bool is_none = engine && strcmp(engine, "none") == 0;
  const char *fault = nullptr;
  if (copy ? engine || translation : !engine)
    fault = copy ? "--copy takes no engine and no translation"
                 : "which engine? --engine COMMAND, --engine apertium:MODE, --engine none "
                   "--translation FILE, or --copy";
  else if (is_none && !translation)
    fault = "--engine none takes its lines from --translation FILE";
  else if (!is_none && translation)
    fault = "--translation FILE takes the place of an engine: --engine none";
  else if (engine && *engine == '\0')
    fault = "--engine: the command is empty";
  if (fault) fail("ktranslate", 0, "%s", fault);
  check_wishes("ktranslate", offer, placeable && *placeable == '\0' ? nullptr : placeable);
}

void name_pages(std::span<const char *const> names, Run &run) {
  if (folder) {
    if (names.empty()) fail("ktranslate", 0, "no file names");
    const std::vector<std::string> results = result_names(names, folder);
    for (size_t i = 0; i < names.size(); i++) {
      run.pages.emplace_back().page = names[i];
      run.pages.back().result = results[i];
    }
    return;
  }
  if (names.size() != 2)
    fail("ktranslate", 0, "%zu file names: it takes IN and OUT, or any number with --out-dir",
         names.size());
  run.pages.emplace_back().page = names[0];
  run.pages.back().result = names[1];
}

// All files of the run, so that nothing that a user has is lost.
void check_files(const Run &run) {
  std::vector<std::string> inputs = align::files_of(material), outputs;
  if (translation) inputs.emplace_back(translation);
  for (const char *name : {html, cache_name})
    if (name) outputs.emplace_back(name);
  for (const PageFiles &page : run.pages) {
    inputs.push_back(page.page);
    outputs.push_back(page.result);
  }
  check_job_files(inputs, outputs);
  if (html) check_replaced(html, is_report, "is no report of sentences");
}

// An engine knows its languages; what the user or a parameter file says comes first.
void set_languages() {
  if (!is_apertium()) return;
  std::string source, target;
  apertium_languages(engine + apertium_prefix.size(), source, target);
  const auto set = [](TextParameter name, const std::string &code) {
    const std::string language = language_name(code);
    if (!language.empty() && !is_given(name)) set_parameter(name, language);
  };
  set(TextParameter::language, source);
  set(TextParameter::target_language, target);
}

void show_run(const Run &run) {
  std::string line = std::to_string(run.pages_done) + " of " + std::to_string(run.pages.size()) +
                     (run.pages.size() == 1 ? " page" : " pages");
  if (run.sentences > 0) {
    line += ", " + std::to_string(run.answered) + " of " + std::to_string(run.sentences) +
            (run.sentences == 1 ? " sentence" : " sentences");
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - run.begun).count();
    if (run.answered > 0 && run.answered < run.sentences && seconds > 2) {
      const auto left =
          static_cast<int64_t>(seconds * static_cast<double>(run.sentences - run.answered) /
                               static_cast<double>(run.answered));
      line += ", " +
              (left < 120 ? std::to_string(left) + " s" : std::to_string(left / 60) + " min") +
              " left";
    }
  }
  show_progress_line(line);
}

// What a page's job has reported of a file between the steps, as a report about the page. Lines of
// such files mean nothing to a person, but those of translations and alignments count sentences.
Place place_for_people(const Run &run, const Place &place) {
  const std::string_view file(place.file);
  if (!file.starts_with(run.folder)) return place;
  const auto number = static_cast<size_t>(atoll(place.file + run.folder.size()));
  const PageFiles &page = run.pages[std::min(number, run.pages.size() - 1)];
  const bool counts = file == page.translation() || file == page.alignment();
  const int64_t sentence =
      counts && place.line > 0 ? sentence_number(place.line - 1) : place.sentence;
  return {page.page.c_str(), 0, sentence};
}

void run_on_pages(Run &run, std::vector<Task> &tasks, const std::function<void(size_t)> &ended) {
  run_tasks(
      tasks, run.jobs, [&](const Place &place) { return place_for_people(run, place); }, ended);
}

// Sets an option of another program whose job is run here: a text, or whether it is given. A name
// that the program does not have is a fault of this one.
template <typename Value>
void set_option(const Program &program, const char *name, Value value) {
  for (const Option &option : program.options)
    if (strcmp(option.name, name) == 0) {
      *std::get<Value *>(option.place) = value;
      return;
    }
  std::abort();
}

// Runs the job of another program on files, with the parameters of this one.
void run_job(const Program &program, const std::vector<std::string> &files) {
  std::vector<const char *> names;
  names.reserve(files.size());
  for (const std::string &file : files) names.push_back(file.c_str());
  program.job.run({names.data(), names.size()});
}

// The word for atoms in sentences, or none. Lines of a file belong to sentences that the user has
// extracted, without such words unless the user says otherwise.
const char *placeable_form() {
  if (placeable) return *placeable == '\0' ? nullptr : placeable;
  return is_apertium() ? apertium_placeable : nullptr;
}

void extract_pages(Run &run) {
  std::vector<Task> tasks;
  for (const PageFiles &page : run.pages)
    tasks.push_back({page.page, page.records(), [&page] {
                       set_option(kextract, "encoding", encoding);
                       set_option(kextract, "translate-code", translate_code);
                       set_option(kextract, "placeable", placeable_form());
                       set_option(kextract, "offer", offer);
                       run_job(kextract, {page.coded(), page.page});
                     }});
  run_on_pages(run, tasks, [&](size_t) { show_run(run); });
  for (size_t i = 0; i < tasks.size(); i++) {
    PageFiles &page = run.pages[i];
    page.is_extracted = tasks[i].is_done;
    if (!page.is_extracted) continue;
    LineReader text(page.text().c_str());
    while (text.next()) page.sentences++;
    run.sentences += page.sentences;
  }
}

void translate_pages(Run &run) {
  std::optional<Cache> cache;
  std::string key = engine ? engine : "";
  if (marks_unknown) key += "\n--mark-unknown";
  if (cache_name && engine && !translation) cache.emplace(cache_name, key);
  run.begun = std::chrono::steady_clock::now();
  SentenceFeed feed(run.pages, cache ? &*cache : nullptr, [&] {
    run.answered++;
    show_run(run);
  });
  if (copy) return translate_as_copy(feed);
  feed.set_engine(engine);
  if (translation) return translate_with_file(translation, feed);
  if (!is_apertium()) return translate_with_command({engine, static_cast<int>(timeout)}, feed);
  Apertium apertium;
  apertium.timeout = static_cast<int>(timeout);
  std::string problem;
  if (!open_apertium(engine + apertium_prefix.size(), marks_unknown, apertium, problem))
    fail(engine, 0, "%s", problem.c_str());
  translate_with_apertium(apertium, feed);
}

// Carries the markup into the translation, and puts the page together in the target language. Not
// in its place yet: what its process reports comes first.
void finish_page(const PageFiles &page) {
  const std::string source_tokens = page.source_tokens(), target_tokens = page.target_tokens();
  if (page.counts_tokens) {
    set_option(kcarry, "source-tokens", source_tokens.c_str());
    set_option(kcarry, "target-tokens", target_tokens.c_str());
  }
  run_job(kcarry, {page.coded(), page.translation(), page.alignment(), page.carried()});
  set_parameter(TextParameter::language, parameter(TextParameter::target_language));
  run_job(kmerge, {page.carried(), page.anchors(), page.merged()});
}

// Renames the page to its final name. Nothing that can fail comes after it, except for other pages
// and the report.
void publish_page(const PageFiles &page) {
  make_folders(page.result);
  OutputFile result(page.result);
  {
    const InputFile merged = open_input(page.merged().c_str());
    char block[65536];
    for (size_t count; (count = fread(block, 1, sizeof block, merged.get())) > 0;)
      result.write({block, count});
    if (ferror(merged.get())) fail_reading(page.merged().c_str());
  }
  unlink(page.merged().c_str());
  result.finish();
  result.publish();
}

void finish_pages(Run &run) {
  std::vector<Task> tasks;
  std::vector<PageFiles *> pages;  // of the tasks
  for (PageFiles &page : run.pages) {
    if (!page.is_translated) continue;
    pages.push_back(&page);
    tasks.push_back({page.page, page.records(), [&page] { finish_page(page); },
                     [&page] { publish_page(page); }});
  }
  run_on_pages(run, tasks, [&](size_t done) {
    run.pages_done = done;
    show_run(run);
  });
  run.pages_done = 0;
  for (size_t i = 0; i < tasks.size(); i++) {
    pages[i]->is_finished = tasks[i].is_done;
    run.pages_done += tasks[i].is_done ? 1 : 0;
  }
}

void translate(std::span<const char *const> names) {
  check_options();
  check_font_groups("ktranslate");
  Run run;
  name_pages(names, run);
  check_files(run);
  set_languages();
  run.jobs = jobs > 0 ? jobs : std::max<int64_t>(std::thread::hardware_concurrency(), 1);
  const Interruptible interruptible;
  const TemporaryFolder temporary;
  run.folder = temporary.name() + "/";
  for (size_t i = 0; i < run.pages.size(); i++)
    run.pages[i].base = run.folder + std::to_string(i) + "_page";
  const Listening listening(html ? &run.notes : nullptr);
  extract_pages(run);
  translate_pages(run);
  material.jobs = std::min(run.jobs, align::most_jobs);
  align_pages(run.pages, material);
  finish_pages(run);
  if (html)
    write_report(html, run.pages, run.notes, [](const std::string &name) {
      const DocumentKind &kind = kind_of_file(name);
      return kind.is_html ? kind.read(name.c_str(), encoding ? encoding : "").text : "";
    });
  if (run.pages.size() > 1)
    note("ktranslate", 0, "%zu of %zu pages translated, %s", run.pages_done, run.pages.size(),
         counted(run.sentences, "sentence").c_str());
}

constexpr const char *purpose =
    "Translates the page IN to the page OUT, or many pages into a folder, where each\n"
    "keeps its place below their common folder. '-' is standard input or output.\n"
    "The engine is a command that reads one sentence a line and answers each with a\n"
    "line: 'TRANSLATION', or with its word alignment 'TRANSLATION ||| i-j i-j ...'.\n"
    "Without alignment the built-in aligner makes it, over all pages.\n";

constexpr Parameter parameters[] = {
    {"LANGUAGE", "NAME", "the language of the pages (GERMAN; what Apertium's mode says)"},
    {"TARGET-LANGUAGE", "NAME", "that of their translations (ENGLISH; likewise)"},
};

const Option options[] = {
    {"engine", "COMMAND", &engine,
     "a command for sh -c; apertium:MODE, such as apertium:eng-spa; none"},
    {"translation", "FILE", &translation,
     "with --engine none: the translations, a line a sentence"},
    {"copy", nullptr, &copy, "no engine: each page with its own text, to check its markup"},
    {"out-dir", "DIR", &folder, "the folder of the results; then every name is a page"},
    {"cache", "FILE", &cache_name, "keep translations there, and do not ask for them again"},
    {"memory", "SOURCE TARGET", &material.memories,
     "more lines and their translations for the aligner to learn from;\nmay be repeated"},
    {"lexicon", "FILE", &material.lexicons,
     "words and their translations for the aligner, a tab between them;\nmay be repeated"},
    {"model", "FILE", &material.model, "what kalign --save has written"},
    {"html", "FILE", &html, "a report: every sentence with its result and the messages about it"},
    {"jobs", "N", NumberOption{&jobs, 0, 0, 1024}, "pages at a time (0: as many as processors)"},
    {"timeout", "SECONDS", NumberOption{&timeout, 600, 0, 1000000},
     "give up an engine that is silent for this long (600; 0: never)"},
    {"mark-unknown", nullptr, &marks_unknown, "let Apertium mark unknown words with a '*'"},
    {"translate-code", nullptr, &translate_code,
     "offer the text of code, kbd, samp and tt for translation, too"},
    {"placeable", "FORM", &placeable,
     "show the engine a word for each image, formula or other atom in a sentence;\n"
     "'#' in FORM is its number there ({90#} for Apertium; '': no word, as for others)"},
    {"offer", "NAMES", &offer,
     "offer the text of textarea, pre and svg, too: those named, commas between"},
    {"encoding", "NAME", &encoding, "the encoding of pages that do not declare one (utf-8)"},
};

}  // namespace

const Program ktranslate = {.name = "ktranslate",
                            .files = "IN OUT\n--out-dir DIR PAGE ...",
                            .purpose = purpose,
                            .parameters = parameters,
                            .options = options,
                            .job = job<translate, Job::any_files>};

}  // namespace klib::programs
