// Both ways to links that count tokens: from the aligner, whose tokens are known, and from an
// ALIGNMENT that counts the tokens of other files. Those are found in the line by their
// characters, and each link of two tokens becomes the links of the words that contain them.
#include "programs/kcarry_lines.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "programs/align/characters.h"
#include "programs/align/tokens.h"
#include "programs/common/line_reader.h"
#include "programs/common/program.h"
#include "programs/common/sentence.h"
#include "programs/common/sentence_file.h"
#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

using align::Token;

// The words of a line, one blank between them.
std::string with_single_blanks(std::string_view line) {
  std::string text;
  size_t position = 0;
  for (std::string_view word; !(word = next_word(line, position)).empty();) {
    if (!text.empty()) text += ' ';
    text += word;
  }
  return text;
}

// The text of a sentence as in JOB.txt. Every character is one here, too.
std::string text_of(const Sentence &sentence) {
  constexpr char32_t replacement = 0xFFFD;
  std::string text;
  for (const char32_t flagged : sentence.text) {
    const char32_t c = flagged & ~bare_flag;
    append_utf8(c >= 0xD800 && c <= 0xDFFF ? replacement : c, text);
  }
  return align::source_line(text);
}

// Bytes as characters. The tokens are in order.
std::vector<Range> in_characters(std::string_view text, const std::vector<Token> &tokens) {
  std::vector<Range> ranges;
  size_t position = 0;
  uint32_t character = 0;
  const auto character_at = [&](size_t byte) {
    for (; position < byte; character++) align::next_character(text, position);
    return character;
  };
  for (const Token &token : tokens) {
    const uint32_t begin = character_at(token.begin);
    ranges.push_back({begin, character_at(token.end)});
  }
  return ranges;
}

// One side of a line for which there are tokens.
struct TokenSide {
  std::string_view text;
  std::vector<Token> tokens;  // empty ones are parts of no word
  std::vector<Token> words;
};

bool has_letters(const TokenSide &side, const Token &token) {
  for (size_t i = token.begin; i < token.end;)
    if (align::is_letter_or_digit(align::next_character(side.text, i))) return true;
  return false;
}

bool is_divided(std::string_view word) {
  for (size_t i = 0; i < word.size();)
    if (align::is_without_blanks(align::next_character(word, i))) return true;
  return false;
}

// The words are those between blanks; in scripts without blanks the tokens divide them.
void find_words(TokenSide &side) {
  size_t position = 0, next = 0;
  for (std::string_view word; !(word = next_word(side.text, position)).empty();) {
    const size_t begin = position - word.size();
    side.words.push_back({begin, position});
    if (!is_divided(word)) continue;
    for (; next < side.tokens.size() && side.tokens[next].begin < position; next++) {
      const size_t edge = side.tokens[next].begin;
      if (edge <= side.words.back().begin) continue;
      side.words.back().end = edge;
      side.words.push_back({edge, position});
    }
  }
}

// Without a tokenised line the tokens are the words between blanks.
bool read_tokens(std::string_view text, const LineReader *tokenised, TokenSide &side) {
  side.text = text;
  if (tokenised && !align::find_tokens(text, tokenised->line(), side.tokens)) return false;
  if (!tokenised) align::find_tokens(text, text, side.tokens);
  find_words(side);
  return true;
}

// The words that a token has a part of, from the first to before the last.
struct WordsOf {
  size_t begin, end;
};
std::vector<WordsOf> words_of_tokens(const TokenSide &side) {
  std::vector<WordsOf> result;
  size_t word = 0;
  for (const Token &token : side.tokens) {
    while (word < side.words.size() && side.words[word].end <= token.begin) word++;
    size_t end = word;
    while (end < side.words.size() && side.words[end].begin < token.end) end++;
    result.push_back({word, end});
  }
  return result;
}

// Whether the token is less than its word, and has no letter or digit.
bool is_mark_at_word(const TokenSide &side, const Token &token, WordsOf words) {
  if (words.begin == words.end || has_letters(side, token)) return false;
  const Token &word = side.words[words.begin];
  return token.begin > word.begin || token.end < word.end;
}

// Links of words from links of tokens. Marks at the edges of words say nothing about the words.
std::vector<Link> link_words(const TokenSide &source, const TokenSide &target,
                             const std::vector<Link> &token_links) {
  const std::vector<WordsOf> sources = words_of_tokens(source), targets = words_of_tokens(target);
  std::vector<Link> links;
  for (const Link &link : token_links) {
    const auto s = static_cast<size_t>(link.source), t = static_cast<size_t>(link.target);
    if (is_mark_at_word(source, source.tokens[s], sources[s]) &&
        is_mark_at_word(target, target.tokens[t], targets[t]))
      continue;
    for (size_t i = sources[s].begin; i < sources[s].end; i++)
      for (size_t j = targets[t].begin; j < targets[t].end; j++)
        links.push_back({static_cast<int32_t>(j), static_cast<int32_t>(i)});
  }
  std::sort(links.begin(), links.end());
  links.erase(std::unique(links.begin(), links.end()), links.end());
  return links;
}

struct Preparation {
  const CarryFiles &files;
  SentenceFile sentences;
  LineReader translation;
  std::unique_ptr<LineReader> alignment, source_tokens, target_tokens;
  std::vector<std::string> sources;  // the texts of the sentences
  std::vector<CarryLine> lines;
  std::vector<bool> unaligned;
  bool any_unaligned = false;
  int64_t bad_pairs = 0;

  explicit Preparation(const CarryFiles &names)
      : files(names), sentences(names.sentences), translation(names.translation) {
    const auto open = [](const char *name) {
      return name ? std::make_unique<LineReader>(name) : nullptr;
    };
    alignment = open(names.alignment);
    source_tokens = open(names.source_tokens);
    target_tokens = open(names.target_tokens);
  }
  std::vector<LineReader *> readers() {
    std::vector<LineReader *> result = {&translation};
    for (LineReader *file : {alignment.get(), source_tokens.get(), target_tokens.get()})
      if (file) result.push_back(file);
    return result;
  }
};

// Finds words and links of the line that has been read by what its tokens say.
bool take_alignment(Preparation &job, const std::string &source, CarryLine &line) {
  if (!job.alignment) return false;
  TokenSide from, to;
  if (!read_tokens(source, job.source_tokens.get(), from) ||
      !read_tokens(line.translation, job.target_tokens.get(), to)) {
    note({job.sentences.name(), job.sentences.line(), job.sentences.number()}, "tokens-differ", {},
         "the tokens are not those of the %s; it is aligned again",
         from.words.empty() && !source.empty() ? "sentence" : "translation");
    return false;
  }
  std::vector<Link> links;
  job.bad_pairs += read_links(*job.alignment, static_cast<int32_t>(from.tokens.size()),
                              static_cast<int32_t>(to.tokens.size()), links);
  line.links = link_words(from, to, links);
  line.source_words = in_characters(source, from.words);
  line.target_words = in_characters(line.translation, to.words);
  return true;
}

// Fails with both numbers when a file does not have one line for each sentence.
void check_ends(Preparation &job, bool all_have_more) {
  auto sentences = static_cast<int64_t>(job.lines.size());
  const std::vector<LineReader *> readers = job.readers();
  bool wrong = all_have_more;
  if (wrong) {
    sentences++;
    while (job.sentences.next() == SentenceFile::frame) sentences++;
  }
  for (LineReader *file : readers) {
    while (file->next()) continue;
    if (file->number() == sentences) continue;
    wrong = true;
    report(file->name(), 0, "has %s, but %s has %s", counted(file->number(), "line").c_str(),
           job.sentences.name(), counted(sentences, "sentence").c_str());
  }
  if (wrong) throw Failed{};
}

void read_lines(Preparation &job, const CodePage &page) {
  Sentence sentence;
  const std::vector<LineReader *> readers = job.readers();
  for (SentenceFile::Kind kind; (kind = job.sentences.next()) != SentenceFile::end;) {
    if (kind != SentenceFile::frame) continue;
    if (!std::ranges::all_of(readers, [](LineReader *file) { return file->next(); })) {
      check_ends(job, true);
      return;
    }
    read_sentence(job.sentences, page, sentence);
    CarryLine line;
    line.translation = with_single_blanks(job.translation.line());
    std::string source = text_of(sentence);
    const bool aligned = take_alignment(job, source, line);
    job.any_unaligned |= !aligned;
    job.unaligned.push_back(!aligned);
    job.sources.push_back(std::move(source));
    job.lines.push_back(std::move(line));
  }
  check_ends(job, false);
}

std::vector<Range> add_tokens(const std::string &text, align::LanguageModel &language,
                              std::vector<align::Unit> &units) {
  std::vector<Token> tokens;
  align::read_units(text, language.vocabulary, units);
  align::divide_into_tokens(text, units, tokens);
  return in_characters(text, tokens);
}

// Aligns all lines, and uses the result for those without an alignment.
void align_lines(Preparation &job, const align::Material &material) {
  align::Alignment alignment;
  align::start_alignment(material, job.files.translation, alignment);
  std::vector<align::Unit> units, partners;
  for (size_t k = 0; k < job.lines.size(); k++) {
    CarryLine &line = job.lines[k];
    std::vector<Range> source = add_tokens(job.sources[k], alignment.model.source, units);
    std::vector<Range> target = add_tokens(line.translation, alignment.model.target, partners);
    align::add_units(units, partners, alignment.model, alignment.corpus);
    if (!job.unaligned[k]) continue;
    line.source_words = std::move(source);
    line.target_words = std::move(target);
  }
  const int64_t first = alignment.job.first_wanted;
  align::align_words(alignment.corpus, alignment.job, alignment.model,
                     [&](int64_t number, const std::vector<align::WordLink> &links) {
                       const auto k = static_cast<size_t>(number - first);
                       if (!job.unaligned[k]) return;
                       for (const align::WordLink &link : links)
                         job.lines[k].links.push_back({link.target, link.source});
                       std::sort(job.lines[k].links.begin(), job.lines[k].links.end());
                     });
}

}  // namespace

std::vector<CarryLine> prepare_lines(const CarryFiles &files, const align::Material &material,
                                     const CodePage &page, int64_t &bad_pairs) {
  Preparation job(files);
  read_lines(job, page);
  if (job.any_unaligned) align_lines(job, material);
  bad_pairs += job.bad_pairs;
  return std::move(job.lines);
}

}  // namespace klib::programs
