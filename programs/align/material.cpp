// Reads memories, lexicons and models for the aligner.
#include "programs/align/material.h"

#include <algorithm>
#include <string>
#include <thread>

#include "programs/align/model_file.h"
#include "programs/common/input_file.h"
#include "programs/common/line_reader.h"
#include "programs/common/program.h"

namespace klib::programs::align {
namespace {

// A line of a lexicon counts as much as this many lines of text: it is known to be right.
constexpr int lexicon_weight = 5;

void load_model(const char *name, Model &model) {
  const InputFile file = open_input(name);
  std::string bytes;
  char block[65536];
  for (size_t count; (count = fread(block, 1, sizeof block, file.get())) > 0;)
    if (!is_model(bytes.append(block, count))) break;  // which may have no end
  if (ferror(file.get())) fail_reading(name);
  const std::string fault = read_model(bytes, model);
  if (!fault.empty()) fail(name, 0, "%s", fault.c_str());
}

// The columns of a line: at the tab, or two words.
bool find_columns(std::string_view line, std::string_view &source, std::string_view &target) {
  const size_t tab = line.find('\t');
  if (tab != line.npos) {
    source = line.substr(0, tab);
    target = line.substr(tab + 1);
  } else {
    size_t position = 0;
    source = next_word(line, position);
    target = next_word(line, position);
    if (!next_word(line, position).empty()) return false;
  }
  return count_words(source) > 0 && count_words(target) > 0 && target.find('\t') == target.npos;
}

void read_lexicon(const char *name, Alignment &alignment) {
  LineReader file(name);
  while (file.next()) {
    std::string_view source, target;
    if (count_words(file.line()) == 0) continue;
    if (!find_columns(file.line(), source, target)) {
      report(file.name(), file.number(), "does not have two columns, and is left out");
      continue;
    }
    for (int i = 0; i < lexicon_weight; i++)
      add_line(source, target, alignment.model, alignment.corpus);
  }
}

void read_memory(const char *source_name, const char *target_name, Alignment &alignment) {
  LineReader source(source_name), target(target_name);
  for (;;) {
    const bool has_source = source.next(), has_target = target.next();
    if (has_source != has_target) {
      LineReader &longer = has_source ? source : target;
      while (longer.next()) continue;
      fail(source.name(), 0, "has %s, but %s has %lld", counted(source.number(), "line").c_str(),
           target.name(), static_cast<long long>(target.number()));
    }
    if (!has_source) return;
    add_line(source.line(), target.line(), alignment.model, alignment.corpus);
  }
}

}  // namespace

std::vector<std::string> files_of(const Material &material) {
  std::vector<std::string> names(material.memories.begin(), material.memories.end());
  names.insert(names.end(), material.lexicons.begin(), material.lexicons.end());
  if (material.model) names.emplace_back(material.model);
  return names;
}

void start_alignment(const Material &material, const char *source_name, Alignment &alignment) {
  if (material.model) load_model(material.model, alignment.model);
  for (const char *name : material.lexicons) read_lexicon(name, alignment);
  for (size_t i = 0; i + 1 < material.memories.size(); i += 2)
    read_memory(material.memories[i], material.memories[i + 1], alignment);
  const auto known = static_cast<int64_t>(alignment.corpus.source.ends.size());
  const int64_t processors = std::max(std::thread::hardware_concurrency(), 1U);
  const int64_t jobs = material.jobs > 0 ? material.jobs : processors;
  alignment.job.jobs = static_cast<int>(std::min(jobs, most_jobs));
  alignment.job.first_wanted = known;
  alignment.job.cut = [source_name, known](int64_t line) {
    if (line >= known)
      note(source_name, line - known + 1,
           "is very long: it is aligned in pieces, each with the part of the translation that is "
           "as far from its beginning");
  };
}

}  // namespace klib::programs::align
