#include "programs/translate/page_report.h"

#include <cstring>

#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/report/notes.h"

namespace klib::programs {
namespace {

// The text of a document for the view side by side; nothing when there is none to be read.
std::string document_text(const std::string &name, const DocumentReader &read) {
  if (name == "-" || name.empty()) return {};
  try {
    return read(name);
  } catch (const Failed &) {
    return {};
  }
}

ReportPage report_page(const PageFiles &page, const RunNotes &notes, const DocumentReader &read) {
  ReportPage report;
  report.name = page.page;
  const auto found = notes.find(page.page);
  if (found != notes.end()) report.notes = found->second;
  if (!page.is_finished) return report;
  report.result_name = page.result;
  report.coded = page.coded();
  report.anchors = page.anchors();
  report.carried = page.carried();
  report.alignment = page.alignment();
  if (page.counts_tokens) {
    report.source_tokens = page.source_tokens();
    report.target_tokens = page.target_tokens();
  }
  report.source_html = document_text(page.page, read);
  report.result_html = document_text(page.result, read);
  return report;
}

}  // namespace

Listening::Listening(RunNotes *notes) {
  if (!notes) return;
  tell_also([notes](const Record &record) {
    if (record.severity == Severity::data) return;
    ReportNote note = make_note(record.kind, record.place.sentence, std::string(record.text));
    // That a font is not used follows from what was reported of its sentence.
    if (strcmp(record.kind, "totals") != 0 && strcmp(record.kind, "font-unused") != 0)
      (*notes)[record.place.file].push_back(std::move(note));
  });
}

Listening::~Listening() { tell_also(nullptr); }

void write_report(const char *name, const std::vector<PageFiles> &pages, const RunNotes &notes,
                  const DocumentReader &read) {
  OutputFile file(name);
  std::string body;
  ReportTotals totals;
  for (const PageFiles &page : pages) append_page(report_page(page, notes, read), body, totals);
  file.write(report_begin(pages.size() == 1 ? pages.front().page : "Translated pages", totals));
  file.write(body);
  file.write(report_end());
  file.finish();
  file.publish();
}

}  // namespace klib::programs
