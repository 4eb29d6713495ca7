#include "programs/translate/align_pages.h"

#include "programs/align/align.h"
#include "programs/common/program.h"
#include "programs/translate/interruption.h"

namespace klib::programs {
namespace {

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

void align_pages(std::vector<PageFiles> &pages, int jobs) {
  bool is_needed = false;
  for (const PageFiles &page : pages) is_needed |= page.is_translated && !page.is_aligned;
  if (!is_needed) return;
  align::Model model;
  align::Corpus corpus;
  for (const PageFiles &page : pages) {
    if (!page.is_translated) continue;
    LineReader source(page.text().c_str()), target(page.translation().c_str());
    while (source.next() && target.next())
      align::add_line(source.line(), target.line(), model, corpus);
  }
  Rewriter rewriter{pages, 0, nullptr, nullptr};
  align::AlignmentJob job;
  job.jobs = jobs;
  align::align_words(corpus, job, model, [&](int64_t, const std::vector<align::WordLink> &links) {
    rewriter.take(links);
  });
}

}  // namespace klib::programs
