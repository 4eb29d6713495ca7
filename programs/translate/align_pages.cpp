#include "programs/translate/align_pages.h"

#include "programs/align/tokens.h"
#include "programs/common/program.h"
#include "programs/translate/interruption.h"

namespace klib::programs {
namespace {

// One side of a page: its lines as units, and in tokens.
struct SideReader {
  LineReader lines;
  OutputFile tokens;
  bool has_tokens = false;  // that are not the words between blanks
  std::vector<align::Unit> units;

  SideReader(const std::string &name, const std::string &token_name)
      : lines(name.c_str()), tokens(token_name) {}

  void read(align::LanguageModel &language) {
    align::read_units(lines.line(), language.vocabulary, units);
    std::vector<align::Token> found;
    align::divide_into_tokens(lines.line(), units, found);
    has_tokens = has_tokens || found.size() != static_cast<size_t>(count_words(lines.line()));
    tokens.write(align::token_line(lines.line(), found));
  }
};

// Adds the lines of a page that nobody else has aligned. If it has words in a script without
// blanks, its pairs count tokens.
void add_tokens(PageFiles &page, align::Alignment &alignment) {
  SideReader source(page.text(), page.source_tokens());
  SideReader target(page.translation(), page.target_tokens());
  while (source.lines.next() && target.lines.next()) {
    source.read(alignment.model.source);
    target.read(alignment.model.target);
    align::add_units(source.units, target.units, alignment.model, alignment.corpus);
  }
  page.counts_tokens = source.has_tokens || target.has_tokens;
  source.tokens.finish(), target.tokens.finish();
  source.tokens.publish(), target.tokens.publish();
}

// Adds the lines of a page of which the engine has aligned some: pairs count words.
void add_words(const PageFiles &page, align::Alignment &alignment) {
  LineReader source(page.text().c_str()), target(page.translation().c_str());
  while (source.next() && target.next())
    align::add_line(source.line(), target.line(), alignment.model, alignment.corpus);
}

// The lines of an alignment file, with those that were unknown taken from the aligner.
struct Rewriter {
  std::vector<PageFiles> &pages;
  size_t page = 0;
  std::unique_ptr<LineReader> known;
  std::unique_ptr<OutputFile> file;
  int64_t lines = 0;  // of the page

  void begin();
  void take(const std::vector<align::WordLink> &links);
};

// Goes to the next page that takes part and has lines left.
void Rewriter::begin() {
  while (!file) {
    PageFiles &next = pages[page];
    if (next.is_translated && next.sentences > 0) {
      known = std::make_unique<LineReader>(next.alignment().c_str());
      file = std::make_unique<OutputFile>(next.alignment());
      lines = 0;
    } else {
      page++;
    }
  }
}

void Rewriter::take(const std::vector<align::WordLink> &links) {
  end_if_interrupted();
  begin();
  known->next();
  std::string line(known->line());
  if (line == unaligned) {
    line.clear();
    for (const auto &[source, target] : links) {
      if (!line.empty()) line += ' ';
      line.append(std::to_string(source)).append("-").append(std::to_string(target));
    }
  }
  file->write(line + "\n");
  if (++lines < pages[page].sentences) return;
  known.reset();
  file->finish();
  file->publish();
  file.reset();
  page++;
}

}  // namespace

void align_pages(std::vector<PageFiles> &pages, const align::Material &material) {
  bool is_needed = false;
  for (const PageFiles &page : pages) is_needed |= page.is_translated && !page.is_aligned();
  if (!is_needed) return;
  align::Alignment alignment;
  align::start_alignment(material, "ktranslate", alignment);
  for (PageFiles &page : pages) {
    if (!page.is_translated) continue;
    if (page.aligned == 0)
      add_tokens(page, alignment);
    else
      add_words(page, alignment);
  }
  Rewriter rewriter{pages, 0, nullptr, nullptr};
  align::align_words(
      alignment.corpus, alignment.job, alignment.model,
      [&](int64_t, const std::vector<align::WordLink> &links) { rewriter.take(links); });
}

}  // namespace klib::programs
