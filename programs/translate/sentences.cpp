// Two cursors go over the sentences: one sends them, the other, after it, writes their answers. The
// cache is asked when a sentence would be sent; a bit says what was found, so that both agree.
#include "programs/translate/sentences.h"

#include <algorithm>

#include "programs/common/program.h"
#include "programs/common/utf8.h"
#include "programs/translate/interruption.h"

namespace klib::programs {
namespace {

constexpr size_t batch_bytes = size_t{4} << 20;

std::string identity_pairs(std::string_view line) {
  std::string pairs;
  const int32_t words = count_words(line);
  for (int32_t i = 0; i < words; i++) {
    const std::string number = std::to_string(i);
    pairs.append(i > 0 ? " " : "").append(number).append("-").append(number);
  }
  return pairs;
}

void tell_end(const StreamEnd &end, SentenceFeed &feed) {
  end_if_interrupted();
  const PageFiles &page = feed.awaited_page();
  report({page.page.c_str(), 0, feed.awaited_sentence()}, "engine", {{"answered", end.answered}},
         "the engine '%s' %s", feed.engine().c_str(), end.reason.c_str());
}

}  // namespace

int64_t sentence_number(int64_t index) {
  return std::min<int64_t>(
      parameter(NumberParameter::kti_start) + index * parameter(NumberParameter::kti_step),
      INT32_MAX);
}

void split_answer(std::string_view answer, std::string_view &translation, std::string_view &pairs,
                  bool &has_pairs) {
  constexpr std::string_view mark = "|||";
  if (answer.ends_with('\r')) answer.remove_suffix(1);
  const size_t at = answer.rfind(mark);
  const auto is_edge = [&](size_t i) { return i >= answer.size() || is_white(answer[i]); };
  has_pairs = at != answer.npos && (at == 0 || is_edge(at - 1)) && is_edge(at + mark.size()) &&
              answer.find_first_not_of("0123456789- \t", at + mark.size()) == answer.npos;
  translation = has_pairs ? answer.substr(0, at) : answer;
  pairs = has_pairs ? answer.substr(at + mark.size()) : std::string_view();
  while (!translation.empty() && is_white(translation.back())) translation.remove_suffix(1);
  while (!pairs.empty() && is_white(pairs.front())) pairs.remove_prefix(1);
}

bool SentenceCursor::next() {
  for (; page_ < pages_.size(); page_++, index_ = -1) {
    if (!pages_[page_].is_extracted) continue;
    if (!reader_) reader_ = std::make_unique<LineReader>(pages_[page_].text().c_str());
    if (reader_->next()) return index_++, true;
    reader_.reset();
  }
  return false;
}

SentenceFeed::SentenceFeed(std::vector<PageFiles> &pages, Cache *cache,
                           std::function<void()> answered)
    : pages_(pages),
      cache_(cache),
      answered_(std::move(answered)),
      sending_(pages),
      receiving_(pages),
      is_sent_to_(pages.size()) {
  for (PageFiles &page : pages) {
    if (!page.is_extracted || page.sentences > 0) continue;
    Files empty(page);
    complete(empty, page);
  }
  has_sentence_ = step();
}

void SentenceFeed::complete(Files &files, PageFiles &page) {
  files.translation.finish(), files.alignment.finish();
  files.translation.publish(), files.alignment.publish();
  page.is_translated = true;
}

// Goes to the next sentence to be answered; pages that end before it are complete.
bool SentenceFeed::step() {
  const size_t before = receiving_.page();
  const bool was_begun = files_ != nullptr;
  const bool found = receiving_.next();
  if (was_begun && (!found || receiving_.page() != before)) {
    if (page_is_good_) complete(*files_, pages_[before]);
    files_.reset();
    page_is_good_ = true;
  }
  if (found) awaited_ = {receiving_.page(), receiving_.index()};
  return found;
}

bool SentenceFeed::next(std::string &sentence) {
  end_if_interrupted();
  std::string answer;
  while (sending_.next()) {
    const bool found = cache_ && cache_->find(sending_.text(), answer);
    is_cached_.push_back(found);
    if (found) continue;
    is_sent_to_[sending_.page()] = true;
    sentence = sending_.text();
    return true;
  }
  return false;
}

void SentenceFeed::write(std::string_view answer) {
  PageFiles &page = pages_[receiving_.page()];
  if (!files_) files_ = std::make_unique<Files>(page);
  std::string_view translation, pairs;
  bool has_pairs;
  split_answer(answer, translation, pairs, has_pairs);
  const bool has_nul = answer.find('\0') != answer.npos || answer.find('\n') != answer.npos;
  if (has_nul || find_invalid_utf8(answer) != answer.npos) {
    page_is_good_ = false;
    report({page.page.c_str(), 0, sentence_number(receiving_.index())}, "engine", {},
           "the engine '%s' has answered with a line that %s", engine_.c_str(),
           has_nul ? "holds a NUL byte" : "is not UTF-8");
  }
  if (has_pairs) page.aligned++;
  files_->translation.write(std::string(translation) + "\n");
  files_->alignment.write(std::string(has_pairs ? pairs : unaligned) + "\n");
  received_++;
  has_sentence_ = step();
  answered_();
}

void SentenceFeed::write_cached() {
  std::string answer;
  while (has_sentence_ && received_ < is_cached_.size() && is_cached_[received_]) {
    if (!cache_->find(receiving_.text(), answer)) return;
    write(answer);
  }
}

void SentenceFeed::take(std::string_view answer, bool is_kept) {
  end_if_interrupted();
  write_cached();
  if (!has_sentence_) return;
  const bool is_good = answer.find('\0') == answer.npos && find_invalid_utf8(answer) == answer.npos;
  if (cache_ && is_kept && is_good) cache_->put(receiving_.text(), answer);
  write(answer);
}

bool SentenceFeed::finish() {
  write_cached();
  if (cache_) cache_->save();
  return !has_sentence_;
}

const PageFiles &SentenceFeed::awaited_page() const { return pages_[awaited_.page]; }

int64_t SentenceFeed::awaited_sentence() const { return sentence_number(awaited_.index); }

void SentenceFeed::reject_all() {
  for (size_t i = 0; i < pages_.size(); i++)
    if (is_sent_to_[i]) pages_[i].is_translated = false;
  if (cache_) cache_->forget_run();
}

void SentenceFeed::reject_last() {
  for (size_t i = pages_.size(); i-- > 0;)
    if (is_sent_to_[i]) return void(pages_[i].is_translated = false);
}

void translate_with_command(const StreamCommand &command, SentenceFeed &feed) {
  std::string first;
  bool is_first = feed.next(first);
  if (is_first) {
    const StreamEnd end = run_stream(
        command,
        [&](std::string &sentence) {
          if (!is_first) return feed.next(sentence);
          is_first = false;
          sentence = first;
          return true;
        },
        [&](std::string_view answer) {
          feed.take(answer);
          return true;
        });
    if (end.kind != StreamEnd::good) {
      tell_end(end, feed);
      if (!end.answers_are_in_order()) return feed.reject_all();
      if (end.answered == end.sent) feed.reject_last();
    }
  }
  feed.finish();
}

void translate_with_apertium(Apertium &engine, SentenceFeed &feed) {
  std::vector<std::string> batch;
  std::vector<ApertiumTranslation> translations;
  int64_t lost = 0;
  for (bool is_more = true; is_more;) {
    batch.clear();
    size_t bytes = 0;
    std::string sentence;
    while (batch.size() < apertium_batch && bytes < batch_bytes &&
           (is_more = feed.next(sentence))) {
      bytes += sentence.size();
      batch.push_back(sentence);
    }
    if (batch.empty()) break;
    const bool was_tried = engine.is_tried;
    const StreamEnd end = translate_batch(engine, batch, translations);
    end_if_interrupted();
    for (const ApertiumTranslation &translation : translations) {
      if (translation.is_lost) {
        lost++;
        note({feed.awaited_page().page.c_str(), 0, feed.awaited_sentence()}, "untranslated", {},
             "the engine '%s' fails at it: it stays in its language", feed.engine().c_str());
      }
      feed.take(translation.is_aligned ? translation.text + " ||| " + translation.pairs
                                       : translation.text,
                !translation.is_lost);
    }
    if (end.kind != StreamEnd::good) {
      tell_end(end, feed);
      break;
    }
    if (!was_tried && !engine.aligns)
      note(feed.awaited_page().page.c_str(), 0,
           "the engine '%s' loses %s: its translations are aligned by the built-in aligner",
           feed.engine().c_str(), lost > 0 ? "sentences" : "word-bound blanks");
  }
  feed.finish();
}

void translate_with_file(const char *name, SentenceFeed &feed) {
  LineReader lines(name);
  int64_t sentences = 0;
  std::string sentence;
  bool is_short = false;
  while (feed.next(sentence)) {
    sentences++;
    is_short = is_short || !lines.next();
    if (!is_short) feed.take(lines.line());
  }
  while (lines.next()) continue;
  if (lines.number() != sentences)
    fail(lines.name(), 0, "has %s, but the pages have %s", counted(lines.number(), "line").c_str(),
         counted(sentences, "sentence").c_str());
  feed.finish();
}

void translate_as_copy(SentenceFeed &feed) {
  for (std::string sentence; feed.next(sentence);)
    feed.take(sentence + " ||| " + identity_pairs(sentence));
  feed.finish();
}

}  // namespace klib::programs
