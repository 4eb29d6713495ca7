// The parts of the report. A sentence is
//
//     <li id=p1s4 data-p="0-0 1-2" class=n> number, badges, <p class=s> source, <p class=t> result
//
// with class n where it has notes; the script reads words and pairs from there.
#include "programs/report/report.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "programs/common/line_reader.h"
#include "programs/common/program.h"
#include "programs/common/sentence.h"
#include "programs/common/sentence_file.h"
#include "programs/report/assets.h"
#include "programs/report/markup.h"

namespace klib::programs {
namespace {

// How every report begins, and no other file.
constexpr std::string_view opening =
    "<!DOCTYPE html>\n<html lang=en><head><meta charset=utf-8>\n"
    "<meta name=generator content=\"klib report\">\n";

// A sentence file read frame by frame.
struct Side {
  SentenceFile file;
  CodePage page;
  Sentence sentence;

  explicit Side(const std::string &name) : file(name.c_str(), false) {
    make_code_page(file.header().own_language().c_str(), page);
  }
  bool next() {
    for (SentenceFile::Kind kind; (kind = file.next()) != SentenceFile::end;) {
      if (kind != SentenceFile::frame) continue;
      read_sentence(file, page, sentence);
      return true;
    }
    return false;
  }
};

// The pairs of a line. What is not a pair is left out, as in kcarry, which reports it.
std::string clean_pairs(std::string_view line) {
  std::string pairs;
  size_t position = 0;
  for (std::string_view pair; !(pair = next_word(line, position)).empty();) {
    const size_t dash = pair.find('-');
    if (dash == 0 || dash == pair.npos || dash + 1 == pair.size() || pair.size() > 20 ||
        pair.find_first_not_of("0123456789-") != pair.npos || pair.find('-', dash + 1) != pair.npos)
      continue;
    pairs.append(pairs.empty() ? "" : " ").append(pair);
  }
  return pairs;
}

// The lines of a file, one after the other; empty ones without a file and after its end.
struct Lines {
  std::optional<LineReader> file;

  explicit Lines(const std::string &name) {
    if (!name.empty()) file.emplace(name.c_str());
  }
  std::string_view next() { return file && file->next() ? file->line() : std::string_view(); }
};

using NotesBySentence = std::multimap<int64_t, const ReportNote *>;

void append_badges(const NotesBySentence &notes, int64_t number, std::string &html,
                   ReportTotals &totals) {
  const auto [first, last] = notes.equal_range(number);
  for (auto it = first; it != last; ++it) {
    const ReportNote &note = *it->second;
    totals.badges[note.badge]++;
    html.append("<em data-b=\"").append(note.badge).append("\" title=\"");
    append_escaped(note.text, html);
    html.append("\">").append(note.badge).append("</em>");
  }
}

void append_page_view(const char *name, const std::string &document, std::string &html) {
  html.append("<figure><figcaption>").append(name).append("</figcaption>");
  // In a sandbox without rights: no script, no form, no window; and nothing is fetched.
  html += "<iframe sandbox loading=lazy title=\"";
  html.append(name).append("\" srcdoc=\"");
  for (const char c : document) {
    if (c == '&')
      html += "&amp;";
    else if (c == '<')
      html += "&lt;";
    else if (c == '"')
      html += "&quot;";
    else if (c != '\0')
      html += c;
  }
  html += "\"></iframe></figure>";
}

void append_head(const ReportPage &page, std::string &html) {
  html += "<section><h2>";
  append_escaped(page.name, html);
  if (!page.result_name.empty()) {
    html += " <span class=to>→</span> ";
    append_escaped(page.result_name, html);
  }
  html += "</h2>";
}

// The messages about the page as a whole, in full.
void append_page_notes(const NotesBySentence &notes, std::string &html, ReportTotals &totals) {
  const auto [first, last] = notes.equal_range(no_sentence);
  for (auto it = first; it != last; ++it) {
    totals.badges[it->second->badge]++;
    html.append("<p class=pn><em>").append(it->second->badge).append("</em>");
    append_escaped(it->second->text, html);
    html += "</p>";
  }
}

void append_views(const ReportPage &page, std::string &html) {
  if (page.source_html.empty() && page.result_html.empty()) return;
  html += "<details class=v><summary>The pages side by side</summary><div>";
  append_page_view("source", page.source_html, html);
  if (!page.result_html.empty()) append_page_view("result", page.result_html, html);
  html += "</div></details>";
}

}  // namespace

const char *badge_of(const std::string &kind, const std::string &text) {
  const auto says = [&](const char *word) {
    return kind.find(word) != kind.npos || text.find(word) != text.npos;
  };
  if (says("untranslated") || says("no translation") || says("stays in its language"))
    return "untranslated";
  if (kind == "bad-pair" || text.starts_with("pair '")) return "bad pair";
  if (says("fallback")) return "fallback";
  if (says("dropped") || kind == "font-unused") return "font dropped";
  if (kind == "reopened" || kind == "split" || says("torn") || says("pieces")) return "split";
  for (const char *repair : {"pair-inverted", "anchors-reordered", "put-around", "closer-left-out",
                             "not-closed", "anchor-twice", "anchor-repeated", "anchor-lost"})
    if (kind == repair) return "repair";
  return "note";
}

void append_page(const ReportPage &page, std::string &html, ReportTotals &totals) {
  std::unique_ptr<AnchorFile> anchors;
  if (!page.anchors.empty()) anchors = std::make_unique<AnchorFile>(page.anchors.c_str());
  // Reading a sentence file takes a level of the parser, so one after the other.
  std::vector<std::string> results;
  if (!page.carried.empty()) {
    Side result(page.carried);
    Lines tokens(page.target_tokens);
    while (result.next())
      append_sentence_html(result.sentence, anchors.get(), tokens.next(), results.emplace_back());
  }
  std::optional<LineReader> pairs;
  if (!page.alignment.empty()) pairs.emplace(page.alignment.c_str());
  NotesBySentence notes;
  for (const ReportNote &note : page.notes) notes.emplace(note.sentence, &note);
  const std::string page_number = std::to_string(++totals.pages);
  append_head(page, html);
  append_page_notes(notes, html, totals);
  if (page.coded.empty()) return void(html += "</section>\n");
  append_views(page, html);
  html += "<ol>";
  Side source(page.coded);
  Lines tokens(page.source_tokens);
  for (size_t i = 0; source.next(); i++) {
    const int64_t number = source.sentence.number;
    totals.sentences++;
    std::string badges;
    append_badges(notes, number, badges, totals);
    if (!badges.empty()) totals.noted++;
    html.append("<li id=p").append(page_number).append("s").append(std::to_string(number));
    if (pairs && pairs->next())
      html.append(" data-p=\"").append(clean_pairs(pairs->line())).append("\"");
    html.append(badges.empty() ? ">" : " class=n>").append("<div class=h><a href=\"#p");
    html.append(page_number).append("s").append(std::to_string(number)).append("\">");
    html.append(std::to_string(number)).append("</a>").append(badges).append("</div><p class=s>");
    totals.words += append_sentence_html(source.sentence, anchors.get(), tokens.next(), html);
    if (i < results.size()) html.append("<p class=t>").append(results[i]);
    html += '\n';
  }
  html += "</ol></section>\n";
}

std::string report_script() { return script; }
std::string report_script_hash() { return script_hash; }

bool is_report(std::string_view first_bytes) { return first_bytes.starts_with(opening); }

std::string report_begin(const std::string &title, const ReportTotals &totals) {
  std::string html(opening);
  html +=
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
      "style-src 'unsafe-inline'; img-src data:; form-action 'none'; base-uri 'none'; "
      "script-src 'sha256-";
  html.append(script_hash).append("'\">\n");
  html += "<meta name=viewport content=\"width=device-width, initial-scale=1\">\n";
  html += "<meta name=color-scheme content=\"light dark\">\n<title>";
  append_escaped(title, html);
  html.append("</title>\n<style>").append(style).append("</style></head><body>\n<header><h1>");
  append_escaped(title, html);
  html += "</h1><p id=counts>";
  const auto count = [&](int64_t number, const char *one, const char *many) {
    html.append("<span><strong>").append(std::to_string(number)).append("</strong> ");
    html.append(number == 1 ? one : many).append("</span> ");
  };
  count(totals.pages, "page", "pages");
  count(totals.sentences, "sentence", "sentences");
  count(totals.words, "word", "words");
  count(totals.noted, "sentence with notes", "sentences with notes");
  html += "</p><p id=kinds>";
  for (const auto &[badge, number] : totals.badges)
    html.append("<button type=button aria-pressed=false data-b=\"")
        .append(badge)
        .append("\">")
        .append(badge)
        .append(" ")
        .append(std::to_string(number))
        .append("</button> ");
  html +=
      "</p><form role=search><label><input type=checkbox id=only> only sentences with "
      "notes</label> "
      "<label>search <input type=search id=find autocomplete=off></label> "
      "<output id=shown></output></form>"
      "<p id=help>Point at a word to see its partners. With the keyboard: Tab to a sentence, the "
      "arrow keys for its words, Enter for the matrix of its alignment.</p></header>\n<main>\n";
  return html;
}

std::string report_end() {
  return "</main><script>" + std::string(script) + "</script></body></html>\n";
}

}  // namespace klib::programs
