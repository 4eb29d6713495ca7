// A document as the files of a job. Everything that is not a sentence becomes an anchor: what is
// between two sentences one between their frames, markup inside a sentence one or a font in its
// frame. docs/file-formats.md describes the files.
#include "programs/document/extraction.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "programs/common/job_header.h"
#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/common/sentence.h"
#include "programs/common/utf8.h"
#include "programs/document/anchor_writer.h"
#include "programs/document/frame_items.h"
#include "programs/document/slots.h"
#include "programs/document/spellings.h"

namespace klib::programs {
namespace {

// The text of a slot, as a sentence of its own.
struct Value {
  size_t position;  // of the slot, in the document
  int32_t number;
  std::u32string text;
};

// What a document becomes, written piece by piece.
struct Extraction {
  const DocumentKind &kind;
  const Document &document;
  const CodePage &page;
  OutputFile kti, txt;
  AnchorWriter anchors;
  Sentence sentence;
  std::string bytes, words;  // of the sentence
  int64_t sentences = 0, number = parameter(NumberParameter::kti_start);
  size_t written = 0;        // of the document: what is before it is in the files
  size_t line_position = 0;  // of the document, and the line that it is in
  int64_t line = 1;
  std::vector<Slot> slots{};
  size_t next_slot = 0;                                  // the first that is not in the files
  std::unordered_map<std::u32string, int32_t> values{};  // the anchors of the texts of slots
  std::string_view placeable{};                          // the word for atoms, or none
  int32_t atoms = 0;                                     // in the sentence
  Spellings spellings{kind};
  bool has_spellings = false;               // whether the document has references of that kind
  std::vector<std::string_view> spelled{};  // in the sentence
  std::vector<Value> due{};                 // texts that have not been written
  ContentMark mark;                         // of the sentences

  Extraction(const DocumentKind &document_kind, const Document &taken, const CodePage &code_page,
             const JobHeader &header, const char *name)
      : kind(document_kind),
        document(taken),
        page(code_page),
        kti(name),
        txt(with_type(name, "txt")),
        anchors(with_type(name, "anc"), header) {
    kti.write(sentence_header(header));
  }

  std::string_view raw(size_t begin, size_t end) const {
    return std::string_view(document.text).substr(begin, end - begin);
  }
};

// The number of the text of a slot; one that is new will be written as a sentence.
int32_t value_of(Extraction &job, const Slot &slot) {
  std::u32string text = job.kind.read_value(job.raw(slot.begin, slot.end)), key = text;
  for (char32_t &c : key) c &= ~bare_flag;
  const auto [value, is_new] = job.values.try_emplace(std::move(key));
  if (is_new) {
    value->second = job.anchors.add(Anchor::value, "");
    job.due.push_back({slot.begin, value->second, std::move(text)});
  }
  return value->second;
}

// The document from `begin` to `end`, with its slots.
std::string with_slots(Extraction &job, size_t begin, size_t end) {
  std::string raw;
  const auto &slots = job.slots;
  while (job.next_slot < slots.size() && slots[job.next_slot].begin < begin) job.next_slot++;
  size_t position = begin;
  for (; job.next_slot < slots.size() && slots[job.next_slot].end <= end; job.next_slot++) {
    const Slot &slot = slots[job.next_slot];
    raw += job.raw(position, slot.begin);
    append_slot(slot.kind == Slot::text       ? std::to_string(value_of(job, slot))
                : slot.kind == Slot::language ? "lang"
                                              : "dir",
                job.raw(slot.begin, slot.end), raw);
    position = slot.end;
  }
  return raw.append(job.raw(position, end));
}

void write_sentence(Extraction &job, size_t position);

// Writes the texts of slots before a position.
void write_values(Extraction &job, size_t end) {
  size_t count = 0;
  while (count < job.due.size() && job.due[count].position < end) {
    Value &value = job.due[count++];
    std::string line;
    append_anchor(value.number, line);
    job.kti.write(line += '\n');
    job.sentence.clear();
    job.sentence.number = static_cast<int32_t>(job.number);
    job.sentence.text = std::move(value.text);
    write_sentence(job, value.position);
  }
  job.due.erase(job.due.begin(), job.due.begin() + static_cast<std::ptrdiff_t>(count));
}

// What is before `end` and has not been written becomes an anchor between frames, after the texts
// of its slots as far as they are before the paragraph of the next sentence.
void write_between(Extraction &job, size_t end, size_t paragraph) {
  if (end == job.written) return;
  const std::string raw = with_slots(job, job.written, end);
  write_values(job, paragraph);
  std::string line;
  append_anchor(job.anchors.add(Anchor::single, raw), line);
  job.kti.write(line += '\n');
  job.written = end;
}

// Adds the markup at `i` and returns the place of the last item that it took.
size_t add_markup(Extraction &job, FrameItems &look, size_t i) {
  const Item &item = look.item(i);
  const size_t partner = item.kind == Item::single ? Item::none : look.partner(i);
  size_t last = i;
  Anchor::Kind kind = Anchor::single;
  int32_t opened_by = 0;
  if (partner != Item::none && item.kind == Item::close) {
    if (const int group = look.known[partner].group; group >= 0) {
      look.is_open[group] = false;
      job.sentence.add_font(group, 0);
      return last;
    }
    kind = Anchor::close;
    opened_by = look.known[partner].number;
  } else if (partner != Item::none && look.known[i].content_after > partner) {
    last = partner;  // an element without content is one anchor
  } else if (partner != Item::none) {
    look.known[i].group = font_of(look, i, partner);
    kind = look.known[i].group >= 0 ? Anchor::font : Anchor::open;
  } else if (item.partner != Item::none || item.reaches_out) {
    kind = item.kind == Item::open ? Anchor::opens_out : Anchor::closes_from;
  }
  const std::string raw = with_slots(job, begin_of_tag(look, i), end_of_tag(look, last));
  look.known[i].number = job.anchors.add(kind, raw, opened_by);
  if (const int group = look.known[i].group; group >= 0) {
    look.is_open[group] = true;
    job.sentence.add_font(group, look.known[i].number);
  } else {
    job.sentence.add_anchor(look.known[i].number);
  }
  return last;
}

// The words of the sentence in UTF-8, single blanks between them.
void collect_words(Extraction &job) {
  job.words.clear();
  bool blank_is_due = false;
  for (const char32_t c : job.sentence.text) {
    if (c == ' ') {
      blank_is_due = !job.words.empty();
      continue;
    }
    if (blank_is_due) job.words += ' ';
    blank_is_due = false;
    if (c < 0x80)
      job.words += static_cast<char>(c);
    else
      append_utf8(c & ~bare_flag, job.words);
  }
}

// The line of the document at a position, counted from the one that was asked for before.
int64_t line_at(Extraction &job, size_t position) {
  const auto lines_between = [&](size_t begin, size_t end) {
    const std::string_view text = job.raw(begin, end);
    return std::count(text.begin(), text.end(), '\n');
  };
  if (position >= job.line_position)
    job.line += lines_between(job.line_position, position);
  else
    job.line -= lines_between(position, job.line_position);
  job.line_position = position;
  return job.line;
}

// Writes the sentence, which begins at a position of the document.
void write_sentence(Extraction &job, size_t position) {
  job.bytes.clear();
  append_sentence(job.sentence, job.page, job.bytes);
  job.mark.add(job.bytes);
  write_frame(job.kti.stream(), job.sentence.number, job.bytes);
  job.kti.check();
  collect_words(job);
  job.txt.write(job.words += '\n');
  job.number = std::min<int64_t>(job.number + parameter(NumberParameter::kti_step), INT32_MAX);
  record({job.txt.name(), ++job.sentences, job.sentence.number}, "sentence",
         {{"page-line", line_at(job, position)}});
  show_progress(job.sentences);
}

void add_text(Extraction &job, const Item &item) {
  if (item.kind == Item::text)
    job.kind.read_text(job.raw(item.begin, item.end), job.sentence.text);
  else if (item.kind == Item::white)
    job.sentence.text += ' ';
}

// Adds the items from `begin` to `end` as a piece that comes back as it is. Its text is there for
// those who translate the rest.
void add_kept_piece(Extraction &job, const FrameItems &look, size_t begin, size_t end) {
  const std::string_view raw = job.raw(look.item(begin).begin, look.item(end - 1).end);
  const int32_t number = job.anchors.add(Anchor::kept, raw);
  job.sentence.add_anchor(number);
  for (size_t i = begin; i < end; i++)
    if (!look.is_at_edge(i)) add_text(job, look.item(i));
  job.sentence.add_anchor(job.anchors.add(Anchor::kept_end, "", number));
}

// Writes how the sentence has its characters that cannot be seen, when that is new.
void write_spellings(Extraction &job) {
  if (!job.spellings.are_in_force(job.spelled)) {
    std::string record, line;
    for (const std::string_view spelling : job.spelled)
      record.append(record.empty() ? "" : " ").append(spelling);
    append_anchor(job.anchors.add(Anchor::spelling, record), line);
    job.kti.write(line += '\n');
    job.spellings.take(record);
    job.spellings.end_frame();
  }
  job.spelled.clear();
}

// Writes the first spelling of each character that the document has a reference for.
void begin_spellings(Extraction &job) {
  job.kind.find_spellings(job.document.text, job.spelled);
  std::vector<std::string_view> first;
  std::unordered_set<std::u32string> seen;
  for (const std::string_view spelling : job.spelled) {
    std::u32string character;
    job.kind.read_text(spelling, character);
    if (spelling.starts_with('&') && seen.insert(character).second) first.push_back(spelling);
  }
  job.has_spellings = !first.empty();
  job.spelled = first;
  write_spellings(job);
}

// Adds an atom as a word that represents it, separated from letters around it.
void add_atom(Extraction &job, const Item &item, bool letter_follows) {
  const int32_t number = job.anchors.add(Anchor::kept, with_slots(job, item.begin, item.end));
  std::u32string &text = job.sentence.text;
  const auto is_word = [](char32_t c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           (c >= 0x80 && c < bare_flag);
  };
  const bool after_letter = !text.empty() && text.back() != ' ' && is_word(text.back());
  job.sentence.add_anchor(number);
  if (after_letter) text += ' ';
  job.atoms++;
  for (const char c : job.placeable) {
    if (c != '#')
      text += static_cast<unsigned char>(c);
    else
      for (const char digit : std::to_string(job.atoms)) text += static_cast<unsigned char>(digit);
  }
  if (letter_follows) text += ' ';
  job.sentence.add_anchor(job.anchors.add(Anchor::kept_end, "", number));
}

void add_frame(Extraction &job, const std::vector<Item> &items, const Frame &frame) {
  write_between(job, items[frame.first].begin, items.front().begin);
  job.sentence.clear();
  job.sentence.number = static_cast<int32_t>(job.number);
  job.atoms = 0;
  FrameItems look = look_at(items, frame, !job.placeable.empty());
  for (size_t i = 0; i < look.size(); i++) {
    const size_t kept_end = end_of_kept_piece(look, i);
    if (kept_end > i) {
      add_kept_piece(job, look, i, kept_end);
      i = kept_end - 1;
    } else if (look.item(i).atom && !job.placeable.empty()) {
      const size_t next = look.known[i].content_after;
      const bool is_next = next == i + 1 && look.item(next).kind == Item::text;
      add_atom(job, look.item(i), is_next && look.item(next).lettered);
    } else if (look.item(i).is_markup()) {
      i = add_markup(job, look, i);
    } else if (!look.is_at_edge(i)) {
      const Item &item = look.item(i);
      add_text(job, item);
      if (job.has_spellings && item.kind == Item::text)
        job.kind.find_spellings(job.raw(item.begin, item.end), job.spelled);
    }
  }
  write_spellings(job);
  job.written = items[frame.last - 1].end;
  write_sentence(job, items[frame.first].begin);
  write_values(job, job.written);
}

// Renames the files, all or none: an old JOB.kti is removed first, the new one comes last.
void publish(Extraction &job) {
  OutputFile *const files[] = {&job.txt, &job.anchors.text(), &job.anchors.index(), &job.kti};
  job.kti.remove_old();
  publish_all(files);
}

// Completes the files with the mark of their content, and renames them.
void finish(Extraction &job, const JobHeader &header) {
  job.mark.add(job.anchors.mark().text());
  const std::string mark = job.mark.text();
  job.kti.replace(mark_position(sentence_header(header)), mark);
  job.kti.finish();
  job.txt.finish();
  job.anchors.finish(mark);
  record({job.kti.name()}, "totals",
         {{"sentences", job.sentences}, {"anchors", job.anchors.count()}});
  publish(job);
}

}  // namespace

void extract_document(const DocumentKind &kind, const Document &document, const Wishes &wishes,
                      const char *name) {
  const ActiveLanguage language(parameter(TextParameter::language));
  CodePage page;
  make_code_page(parameter(TextParameter::language), page);
  const JobHeader header = {std::string(mark_size, '0'), parameter(TextParameter::language), "",
                            std::string(kind.name), document.encoding};
  Extraction job(kind, document, page, header, name);
  init_kti_format(1);
  job.placeable = wishes.placeable;
  begin_spellings(job);
  kind.split(
      document, page, wishes, job.slots,
      [&](const std::vector<Item> &items, const Frame &frame) { add_frame(job, items, frame); });
  write_between(job, document.text.size(), document.text.size());
  exit_kti_format();
  finish(job, header);
}

}  // namespace klib::programs
