// The sentences of all pages of a run: to the engine, and their translations into files.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "programs/common/line_reader.h"
#include "programs/common/output_file.h"
#include "programs/engine/apertium.h"
#include "programs/engine/cache.h"
#include "programs/engine/stream.h"

namespace klib::programs {

// A page on its way, with the files of its job.
struct PageFiles {
  std::string page, result;
  std::string base;       // of the names of the files below
  int64_t sentences = 0;  // after extraction
  bool is_extracted = false;
  bool is_translated = false;  // `translation` and `alignment` are there
  bool is_finished = false;    // its result is written
  int64_t aligned = 0;         // lines of `alignment` that the engine has made
  bool counts_tokens = false;  // the pairs are of token lines, not of words between blanks

  bool is_aligned() const { return aligned == sentences; }

  std::string coded() const { return base + ".kti"; }
  std::string text() const { return base + ".txt"; }
  std::string anchors() const { return base + ".anc"; }
  std::string translation() const { return base + ".tra"; }
  std::string alignment() const { return base + ".ali"; }
  std::string source_tokens() const { return base + ".sto"; }
  std::string target_tokens() const { return base + ".tto"; }
  std::string carried() const { return base + "_.kti"; }
  std::string merged() const { return base + "_.htm"; }  // the result, not yet in its place
  std::string records() const { return base + ".rec"; }
};

// What is in an alignment file for a line that nobody has aligned.
constexpr std::string_view unaligned = "?";

// The sentences of the extracted pages, in their order.
class SentenceCursor {
 public:
  explicit SentenceCursor(const std::vector<PageFiles> &pages) : pages_(pages) {}
  bool next();  // false at the end of all
  std::string_view text() const { return reader_->line(); }
  size_t page() const { return page_; }     // of the pages
  int64_t index() const { return index_; }  // in the page, from 0

 private:
  const std::vector<PageFiles> &pages_;
  std::unique_ptr<LineReader> reader_;
  size_t page_ = 0;
  int64_t index_ = -1;
};

// Sentences out, answers in. Every answer is checked and written to the files of its page.
class SentenceFeed {
 public:
  // `answered` is called after each answer.
  SentenceFeed(std::vector<PageFiles> &pages, Cache *cache, std::function<void()> answered);

  // The next sentence that the engine has to translate.
  bool next(std::string &sentence);
  // Its answer, in the order of the sentences: "translation", or "translation ||| i-j i-j". One
  // that is not UTF-8 or holds a NUL is reported, and its page is not translated.
  void take(std::string_view answer, bool is_kept = true);
  // After the last answer: what the cache still has. Returns false when answers are missing.
  bool finish();
  // The next answer belongs to this sentence; at the end of all, the last one.
  const PageFiles &awaited_page() const;
  int64_t awaited_sentence() const;
  // Nothing that was answered can be trusted.
  void reject_all();
  // The page of the last sentence that was sent to the engine cannot be trusted.
  void reject_last();

  const std::string &engine() const { return engine_; }
  void set_engine(std::string name) { engine_ = std::move(name); }

 private:
  struct Files {
    OutputFile translation, alignment;
    explicit Files(const PageFiles &page)
        : translation(page.translation()), alignment(page.alignment()) {}
  };
  bool step();
  void write(std::string_view answer);
  void write_cached();
  static void complete(Files &files, PageFiles &page);

  std::vector<PageFiles> &pages_;
  Cache *cache_;
  std::function<void()> answered_;
  SentenceCursor sending_, receiving_;
  std::vector<bool> is_cached_;  // of each sentence that was sent or found
  size_t received_ = 0;
  bool has_sentence_ = false;     // receiving_ is at one that has no answer yet
  std::vector<bool> is_sent_to_;  // pages whose sentences were sent to the engine
  bool page_is_good_ = true;
  struct {
    size_t page = 0;
    int64_t index = 0;
  } awaited_;
  std::unique_ptr<Files> files_;
  std::string engine_;
};

// Runs the engine over all sentences and reports what goes wrong.
void translate_with_command(const StreamCommand &command, SentenceFeed &feed);
void translate_with_apertium(Apertium &engine, SentenceFeed &feed);
// Lines of a file, one for each sentence; another number of lines ends the job (fail()).
void translate_with_file(const char *name, SentenceFeed &feed);
// Every sentence is its own translation.
void translate_as_copy(SentenceFeed &feed);

// Splits an answer: the translation, and its pairs if `has_pairs`.
void split_answer(std::string_view answer, std::string_view &translation, std::string_view &pairs,
                  bool &has_pairs);

// The number of a sentence as messages of the programs count it.
int64_t sentence_number(int64_t index);

}  // namespace klib::programs
