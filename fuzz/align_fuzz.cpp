// Any texts, memories, lexicons and models for the aligner: its pairs name words that are there,
// whatever the number of jobs, and a model that it has written can be read.

#include <string>
#include <vector>

#include "fuzz/frame.h"
#include "programs/align/align.h"
#include "programs/align/model_file.h"
#include "programs/align/tokens.h"
#include "programs/common/line_reader.h"

using namespace klib::fuzz;
using namespace klib::programs::align;
using klib::programs::count_words;

namespace {

// The pairs of all lines. They must be in order and in range.
std::string align_all(const std::vector<std::string> &sources,
                      const std::vector<std::string> &targets, int jobs, Model &model) {
  Corpus corpus;
  for (size_t i = 0; i < sources.size(); i++) add_line(sources[i], targets[i], model, corpus);
  AlignmentJob job;
  job.jobs = jobs;
  std::string text;
  int64_t next = 0;
  align_words(corpus, job, model, [&](int64_t line, const std::vector<WordLink> &links) {
    require(line == next++, "every line has its links, in order");
    const auto k = static_cast<size_t>(line);
    for (const WordLink &link : links) {
      require(link.source >= 0 && link.source < count_words(source_line(sources[k])),
              "a source word is there");
      require(link.target >= 0 && link.target < count_words(targets[k]), "a target word is there");
      require(&link == links.data() || *(&link - 1) < link, "links are sorted, each once");
      text += std::to_string(link.source) + '-' + std::to_string(link.target) + ' ';
    }
    text += '\n';
  });
  require(next == static_cast<int64_t>(sources.size()), "every line has its links");
  return text;
}

void check_tokens(const std::string &line, const std::string &tokenised) {
  Vocabulary vocabulary;
  std::vector<Unit> units;
  std::vector<Token> tokens, found;
  read_units(line, vocabulary, units);
  divide_into_tokens(line, units, tokens);
  const std::string own = token_line(line, tokens);
  require(static_cast<size_t>(count_words(own)) == tokens.size(), "a token has no blanks");
  find_tokens(line, tokenised, found);
  for (const Token &token : found)
    require(token.begin <= token.end && token.end <= line.size(), "a token is in its line");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  const bool from_file = (input.byte() & 1) != 0;
  Model model;
  if (from_file && !read_model(input.rest(), model).empty()) return 0;
  std::vector<std::string> sources, targets;
  for (const bool known = from_file; sources.size() < 40;) {
    std::string source = known ? "a word" : input.text(), target = known ? "b" : input.text();
    if (source.empty() && target.empty()) break;
    check_tokens(source, target);
    sources.push_back(std::move(source));
    targets.push_back(std::move(target));
    if (known) break;
  }
  Model same = model, again;
  const std::string links = align_all(sources, targets, 1, model);
  require(align_all(sources, targets, 3, same) == links, "the number of jobs changes nothing");
  const std::string bytes = write_model(model);
  require(bytes == write_model(same), "... nor in the model");
  require(read_model(bytes, again).empty(), "a model that was written can be read");
  require(write_model(again) == bytes, "... and is the same");
  return 0;
}
