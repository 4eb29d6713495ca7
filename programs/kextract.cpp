// kextract takes a page apart: its sentences with format codes, their words for the translation,
// and everything else as anchors. docs/file-formats.md describes the files.
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

#include "programs/common/code_page.h"
#include "programs/common/output_file.h"
#include "programs/common/program.h"
#include "programs/common/utf8.h"
#include "programs/html/elements.h"
#include "programs/html/page_file.h"
#include "programs/html/paragraph.h"
#include "programs/html/sentences.h"
#include "programs/html/text_reader.h"
#include "programs/html/tokenizer.h"

namespace klib::programs {
namespace {

// What one page becomes, written piece by piece.
struct Extraction {
  const Page &page;
  CodePage code_page;
  OutputFile kti, txt, anchors, index;
  int64_t anchor_bytes = 0, anchor_count = 0, sentences = 0;
  int64_t number = parameter(NumberParameter::kti_start);
  size_t written = 0;  // of the page: what stands before is in the files

  Extraction(const Page &extracted, const char *name)
      : page(extracted),
        kti(name),
        txt(with_type(name, "txt")),
        anchors(with_type(name, "anc")),
        index(with_type(name, "anx")) {}
};

void write_header(Extraction &job) {
  const std::string header = "klib-page 1 " + job.page.encoding + "\n";
  Kwrite(job.anchors.descriptor(), header.data(), static_cast<int32_t>(header.size()));
  job.anchor_bytes = static_cast<int64_t>(header.size());
  init_anchor_index_file();
}

// Stores an anchor and gives its number.
int32_t add_anchor(Extraction &job, const std::string &mark, size_t begin, size_t end) {
  const std::string record = mark + job.page.text.substr(begin, end - begin);
  job.anchor_bytes += static_cast<int64_t>(record.size());
  if (job.anchor_bytes > INT32_MAX) fail("anchor text file", 0, "would pass 2 GiB");
  store_anchor(job.anchors.descriptor(), job.index.descriptor(), record.c_str());
  const Text code(make_anchor(), Kfree);
  job.anchor_count++;
  return atoi(body(code.get()));
}

// What stands before `end` and has not been written becomes an anchor between frames.
void write_between(Extraction &job, size_t end) {
  if (end == job.written) return;
  std::string line;
  append_anchor(add_anchor(job, "=", job.written, end), line);
  job.kti.write(line + "\n");
  job.written = end;
}

// A frame while it is written. The vectors have an element for each item of the frame.
struct Sentence {
  const std::vector<Item> &items;
  Frame frame;
  std::vector<size_t> content_before, content_behind;  // the nearest items that are no markup
  std::vector<int32_t> numbers;                        // of anchors
  std::vector<int> groups;                             // of opening tags that became fonts, else -1
  std::string coded, words;
  bool open_groups[font_group_count] = {};
  bool blank_is_due = false;  // in `words`
};

bool is_inside(const Sentence &sentence, size_t partner) {
  return partner != Item::none && partner >= sentence.frame.first && partner < sentence.frame.last;
}

// Notes for every item of the frame where the nearest content is, on both sides.
void find_content(Sentence &sentence) {
  const Frame &frame = sentence.frame;
  const size_t size = frame.last - frame.first;
  sentence.content_before.resize(size);
  sentence.content_behind.resize(size);
  size_t content = Item::none;
  for (size_t i = 0; i < size; i++) {
    if (!sentence.items[frame.first + i].is_markup()) content = frame.first + i;
    sentence.content_before[i] = content;
  }
  content = Item::none;
  for (size_t i = size; i-- > 0;) {
    if (!sentence.items[frame.first + i].is_markup()) content = frame.first + i;
    sentence.content_behind[i] = content;
  }
}

bool is_without_content(const Sentence &sentence, size_t i) {
  return sentence.content_behind[i - sentence.frame.first] > sentence.items[i].partner;
}

// The font group by which an element in the frame can be said, or -1.
int font_of(const Extraction &job, const Sentence &sentence, size_t i) {
  const Item &open = sentence.items[i], &close = sentence.items[open.partner];
  const int group = element(open.name).font_group;
  if (group < 0 || sentence.open_groups[group]) return -1;
  const std::string end_tag = "</" + std::string(open.name) + ">";
  if (job.page.text.compare(close.begin, close.end - close.begin, end_tag) != 0) return -1;
  const size_t first = sentence.content_behind[i - sentence.frame.first];
  const size_t last = sentence.content_before[open.partner - sentence.frame.first];
  const bool text = sentence.items[first].kind == Item::text;
  return text && sentence.items[last].kind == Item::text ? group : -1;
}

void add_text(Extraction &job, const Item &item, Sentence &sentence) {
  if (sentence.blank_is_due) sentence.words += ' ';
  sentence.blank_is_due = false;
  TextReader reader(std::string_view(job.page.text).substr(item.begin, item.end - item.begin));
  while (!reader.at_end()) {
    const TextCharacter c = reader.next();
    append_utf8(c.character, sentence.words);
    if (c.bare)
      append_alien(c.character, sentence.coded);
    else
      append_character(job.code_page, c.character, sentence.coded);
  }
}

// Adds the markup at `i` and gives the place of the last item that it took.
size_t add_markup(Extraction &job, size_t i, Sentence &sentence) {
  const Item &item = sentence.items[i];
  const size_t place = i - sentence.frame.first;
  std::vector<int> &groups = sentence.groups;
  size_t last = i;
  std::string mark = "=";
  if (item.kind != Item::single && is_inside(sentence, item.partner)) {
    if (item.kind == Item::close) {
      const size_t partner = item.partner - sentence.frame.first;
      if (groups[partner] >= 0) {
        sentence.open_groups[groups[partner]] = false;
        append_font(groups[partner], 0, sentence.coded);
        return last;
      }
      mark = ")" + std::to_string(sentence.numbers[partner]) + " ";
    } else if (is_without_content(sentence, i)) {
      last = item.partner;
    } else {
      groups[place] = font_of(job, sentence, i);
      mark = groups[place] >= 0 ? "*" : "(";
    }
  } else if (item.partner != Item::none || item.reaches_out) {
    mark = item.kind == Item::open ? "<" : ">";
  }
  const int32_t number = add_anchor(job, mark, item.begin, sentence.items[last].end);
  sentence.numbers[place] = number;
  if (groups[place] >= 0) {
    sentence.open_groups[groups[place]] = true;
    append_font(groups[place], number, sentence.coded);
  } else {
    append_anchor(number, sentence.coded);
  }
  return last;
}

void write_frame(Extraction &job, const std::vector<Item> &items, const Frame &frame) {
  Sentence sentence{items, frame, {}, {}, {}, {}, {}, {}};
  sentence.numbers.assign(frame.last - frame.first, 0);
  sentence.groups.assign(frame.last - frame.first, -1);
  find_content(sentence);
  write_between(job, items[frame.first].begin);
  for (size_t i = frame.first; i < frame.last; i++) {
    if (items[i].is_markup()) {
      i = add_markup(job, i, sentence);
    } else if (items[i].kind == Item::text) {
      add_text(job, items[i], sentence);
    } else {
      sentence.coded += ' ';
      sentence.blank_is_due = true;
    }
  }
  job.written = items[frame.last - 1].end;
  current_sentence_number = static_cast<int32_t>(job.number);
  kti_format(job.kti.stream(), sentence.coded.data(), -1);
  job.kti.check();
  job.number = std::min<int64_t>(job.number + parameter(NumberParameter::kti_step), INT32_MAX);
  job.txt.write(sentence.words + "\n");
  show_progress(++job.sentences);
}

// The library writes anchors without telling whether it could.
void check_size(OutputFile &file, const std::string &name, int64_t expected) {
  struct stat status;
  if (fstat(file.descriptor(), &status) != 0 || status.st_size != expected)
    fail(name.c_str(), 0, "could not be written");
}

void finish(Extraction &job, const char *name) {
  write_between(job, job.page.text.size());
  finish_anchor_index_file(job.anchors.descriptor(), job.index.descriptor());
  check_size(job.anchors, with_type(name, "anc"), job.anchor_bytes);
  check_size(job.index, with_type(name, "anx"), 4 * (job.anchor_count + 1));
  for (OutputFile *file : {&job.kti, &job.txt, &job.anchors, &job.index}) file->finish();
  for (OutputFile *file : {&job.kti, &job.txt, &job.anchors, &job.index}) file->publish();
}

struct SentenceExceptions {
  SentenceExceptions() { load_sentence_exceptions(); }
  ~SentenceExceptions() { free_sentence_exceptions(); }
};

const char *encoding;  // the value of --encoding

void extract(const char *sentences, const char *page_name) {
  const Page page = read_page(page_name, encoding ? encoding : "");
  Extraction job(page, sentences);
  make_code_page(parameter(TextParameter::language), job.code_page);
  const SentenceExceptions exceptions;
  write_header(job);
  init_kti_format(1);
  const size_t mark = page.text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  ParagraphReader paragraphs(page.text, mark);
  std::vector<Item> items;
  std::vector<Frame> frames;
  while (paragraphs.next(items)) {
    find_frames(job.code_page, page.text, items, frames);
    for (const Frame &frame : frames) write_frame(job, items, frame);
  }
  finish(job, sentences);
  exit_kti_format();
}

constexpr const char *purpose =
    "Takes the HTML page PAGE apart and writes\n"
    "  JOB.kti           its sentences, numbered, with format codes\n"
    "  JOB.txt           their words, one sentence a line, in UTF-8, for the translation\n"
    "  JOB.anc, JOB.anx  everything else: anchor text and anchor index\n"
    "With '-' for PAGE, standard input is read.\n";

constexpr Parameter parameters[] = {
    {"LANGUAGE", "NAME", "the language of the page (GERMAN)"},
    {"KTI-START", "NUMBER", "the number of the first sentence (0)"},
    {"KTI-STEP", "NUMBER", "the distance to the next number (1)"},
    {"KTI-WIDTH", "NUMBER", "the width at which JOB.kti is wrapped (it is not)"},
};

constexpr Option options[] = {
    {"encoding", "NAME", &encoding, "the encoding of a page that does not say it (utf-8)"},
};

}  // namespace

const Program kextract = {.name = "kextract",
                          .files = "JOB.kti PAGE ...",
                          .purpose = purpose,
                          .parameters = parameters,
                          .options = options,
                          .job = job<extract, 2>};

}  // namespace klib::programs
