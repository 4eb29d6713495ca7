// The report of a run: one HTML file that needs nothing else.
//
// Every sentence has its number, its source and its result, with brackets for the elements, words
// that show their partners, the matrix of the alignment, and the messages about it. All of that is
// in the file as plain markup; its script only moves what is there. Text of pages is escaped, and
// the file's own content security policy lets no other script run and nothing be fetched.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace klib::programs {

// A message about a sentence, or about a page as a whole.
struct ReportNote {
  int64_t sentence;   // its number; no_sentence: the page
  const char *badge;  // one of the names that badge_of() returns
  std::string text;
};

// The badge for a record: "repair", "fallback", "font dropped", "split", "untranslated", "bad pair"
// or "note".
const char *badge_of(const std::string &kind, const std::string &text);

// A page of the report. What is empty is not shown; without `coded` only the notes are.
struct ReportPage {
  std::string name, result_name;  // for people
  std::string coded, anchors;     // JOB.kti; JOB.anc, for the names of the elements
  std::string carried;            // OUT.kti
  std::string alignment;
  std::string source_tokens, target_tokens;  // which the alignment counts, if it does
  std::string source_html, result_html;      // the pages themselves, in UTF-8
  std::vector<ReportNote> notes;
};

struct ReportTotals {
  int64_t pages = 0, sentences = 0, words = 0, noted = 0;  // noted: sentences with notes
  std::map<std::string, int64_t> badges;                   // notes of each kind
};

// Appends the part of a page and adds to the totals. Files that cannot be read end the job
// (fail()).
void append_page(const ReportPage &page, std::string &html, ReportTotals &totals);

// The beginning, before the parts of the pages, and the end of the file.
std::string report_begin(const std::string &title, const ReportTotals &totals);
std::string report_end();

// Whether a file that begins so is a report.
bool is_report(std::string_view first_bytes);

// The hash of the script that the policy names, in base64; for the test that it is right.
std::string report_script_hash();
std::string report_script();

}  // namespace klib::programs
