// A mode is a pipeline of commands, with its first one the analyser. Sentences go through it as
// blocks that end with a NUL, at which the commands flush ("-z"). The analyses of a batch go
// through the rest of the pipeline twice: as they are, which yields the translation, and with bound
// blanks, which shows where each word has gone. So blanks that change a translation do no harm.
//
// A command that dies at a sentence takes the blocks in the pipes with it, and those after it leave
// stray NULs. A block counts if its end is there; where it is missing, everything is started again
// from there, and what fails as the first block of a fresh pipeline is lost.
#include "programs/engine/apertium.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "programs/engine/apertium_text.h"

namespace klib::programs {
namespace {

constexpr size_t tried_first = 50;    // sentences, to find out what a mode does with blanks
constexpr size_t hopeless = 20;       // sentences lost one after the other, and none translated
constexpr int64_t most_changed = 20;  // blanks may change one in this many

constexpr struct {
  const char *three, *two;
} language_codes[] = {
    {"afr", "af"}, {"arg", "an"}, {"bel", "be"}, {"bre", "br"}, {"bul", "bg"}, {"cat", "ca"},
    {"cym", "cy"}, {"dan", "da"}, {"deu", "de"}, {"eng", "en"}, {"epo", "eo"}, {"eus", "eu"},
    {"fra", "fr"}, {"glg", "gl"}, {"hbs", "sh"}, {"hin", "hi"}, {"ind", "id"}, {"isl", "is"},
    {"ita", "it"}, {"mkd", "mk"}, {"mlt", "mt"}, {"nld", "nl"}, {"nno", "nn"}, {"nob", "nb"},
    {"nor", "no"}, {"oci", "oc"}, {"pol", "pl"}, {"por", "pt"}, {"ron", "ro"}, {"rus", "ru"},
    {"slv", "sl"}, {"spa", "es"}, {"srd", "sc"}, {"swe", "sv"}, {"ukr", "uk"}, {"urd", "ur"},
    {"zlm", "ms"},
};

std::string language_code(const std::string &name) {
  std::string code = name.substr(0, name.find('_'));
  for (const auto &[three, two] : language_codes)
    if (code == three) return two;
  return code;
}

bool is_mode_name(const std::string &mode) {
  return !mode.empty() && mode[0] != '-' &&
         mode.find_first_not_of(
             "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
             "0123456789_-") == mode.npos;
}

// What a command writes; empty when it fails.
std::string output_of(const std::string &command) {
  const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "re"), pclose);
  std::string text;
  char block[4096];
  if (pipe)
    for (size_t count; (count = fread(block, 1, sizeof block, pipe.get())) > 0;)
      text.append(block, count);
  return text;
}

std::string quoted(const std::string &text) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\'')
      result += "'\\''";
    else
      result += c;
  }
  return result + "'";
}

// Where the first command ends: at a bar outside of quotes.
size_t end_of_first(const std::string &pipeline) {
  bool is_quoted = false;
  for (size_t i = 0; i < pipeline.size(); i++) {
    if (pipeline[i] == '\'') is_quoted = !is_quoted;
    if (pipeline[i] == '|' && !is_quoted) return i;
  }
  return pipeline.npos;
}

// Blocks through commands, with a fresh start after each block at which they fail.
struct Run {
  const Apertium &engine;
  const std::string &commands;
  std::vector<std::string> answers;  // empty: lost
  size_t lost = 0;

  // The answers are unescaped text as it comes; `is_whole` says whether a block is.
  StreamEnd pass(const std::vector<std::string> &blocks);
};

bool is_whole(std::string_view block) {
  return block.find("[][\n]") != block.npos || block.find("[]\n") != block.npos;
}

StreamEnd Run::pass(const std::vector<std::string> &blocks) {
  answers.clear();
  lost = 0;
  size_t done = 0;
  StreamEnd end;
  while (done < blocks.size()) {
    const size_t begin = done;
    size_t sent = begin;
    end = run_stream(
        {commands, engine.timeout, '\0'},
        [&](std::string &block) {
          if (sent == blocks.size()) return false;
          block = blocks[sent++];
          return true;
        },
        [&](std::string_view block) {
          if (!is_whole(block)) return false;
          answers.emplace_back(block);
          done++;
          return true;
        });
    if (end.kind == StreamEnd::not_started || end.kind == StreamEnd::timed_out) return end;
    if (done > begin) continue;
    answers.emplace_back();
    done++;
    if (++lost == hopeless && lost == done) {
      end.kind = StreamEnd::bad_status;
      if (end.reason.empty()) end.reason = "translates nothing";
      return end;
    }
  }
  return {};
}

std::string line_of(const std::vector<std::pair<int32_t, int32_t>> &pairs) {
  std::string line;
  for (const auto &[i, j] : pairs) {
    if (!line.empty()) line += ' ';
    line.append(std::to_string(i)).append("-").append(std::to_string(j));
  }
  return line;
}

// A batch with its analyses.
struct Batch {
  const std::vector<std::string> &sentences;
  std::vector<std::string> analyses, marked;  // marked as analysed where units are unknown
  std::vector<UnitWords> units;
};

void mark_batch(Batch &batch, size_t first, size_t last) {
  for (size_t i = first; i < last; i++) {
    std::string marked;
    if (!mark_units(batch.analyses[i], batch.sentences[i], marked, batch.units[i])) {
      batch.units[i].clear();
      marked = batch.analyses[i];
    }
    batch.marked.push_back(std::move(marked));
  }
}

// Translates sentences [first, last) with bound blanks and aligns those that were translated.
// Returns how many sentences came out changed or without any blank.
StreamEnd align(Apertium &engine, Batch &batch, size_t first, size_t last,
                std::vector<ApertiumTranslation> &translations, int64_t &changed) {
  batch.marked.clear();
  mark_batch(batch, first, last);
  Run run{engine, engine.rest, {}};
  StreamEnd end = run.pass(batch.marked);
  ApertiumAnswer answer;
  for (size_t i = first; i < first + run.answers.size(); i++) {
    ApertiumTranslation &translation = translations[i];
    if (batch.units[i].empty() || translation.is_lost) continue;
    const bool is_whole_answer = read_answer(run.answers[i - first], answer);
    if (!is_whole_answer || answer.text != translation.text) changed++;
    if (!is_whole_answer) continue;
    const auto pairs = apertium_pairs(batch.sentences[i], batch.units[i], answer, translation.text);
    if (pairs.empty()) changed++;
    translation.pairs = line_of(pairs);
    translation.is_aligned = !pairs.empty();
  }
  return end;
}

void drop_alignments(std::vector<ApertiumTranslation> &translations) {
  for (ApertiumTranslation &translation : translations) {
    translation.pairs.clear();
    translation.is_aligned = false;
  }
}

// The first sentences show whether the mode keeps blanks and sentences; the rest follows.
StreamEnd align_batch(Apertium &engine, Batch &batch, size_t lost,
                      std::vector<ApertiumTranslation> &translations) {
  int64_t changed = 0;
  size_t first = 0;
  if (!engine.is_tried) {
    engine.is_tried = true;
    engine.aligns = lost == 0;
    first = std::min(tried_first, translations.size());
    if (!engine.aligns) return {};
    StreamEnd end = align(engine, batch, 0, first, translations, changed);
    if (end.kind != StreamEnd::good) return end;
    engine.aligns = changed * most_changed <= static_cast<int64_t>(first) + most_changed;
    if (!engine.aligns) drop_alignments(translations);
  }
  if (!engine.aligns || first == translations.size()) return {};
  return align(engine, batch, first, translations.size(), translations, changed);
}

}  // namespace

bool open_apertium(const std::string &mode, bool marks_unknown, Apertium &engine,
                   std::string &problem) {
  const char *directory = getenv("APERTIUM_DATADIR");
  const std::string file =
      std::string(directory ? directory : "/usr/share/apertium") + "/modes/" + mode + ".mode";
  std::string pipeline;
  if (is_mode_name(mode)) pipeline = output_of("apertium-wblank-mode -z " + quoted(file) + " 2>&-");
  const size_t bar = end_of_first(pipeline);
  if (bar == pipeline.npos) {
    problem =
        "Apertium has no mode of this name: install apertium and the language pair, such as "
        "apertium-eng-spa, and see 'apertium -l'";
    return false;
  }
  const std::string settings =
      std::string("LC_ALL=C.UTF-8; export LC_ALL; set -- ") + (marks_unknown ? "-g" : "-n") + "; ";
  engine.mode = mode;
  engine.first = settings + pipeline.substr(0, bar);
  engine.rest = settings + pipeline.substr(bar + 1);
  return true;
}

void apertium_languages(const std::string &mode, std::string &source, std::string &target) {
  const size_t dash = std::min(mode.find('-'), mode.size());
  source = language_code(mode.substr(0, dash));
  target = language_code(mode.substr(std::min(dash + 1, mode.size())));
}

StreamEnd translate_batch(Apertium &engine, const std::vector<std::string> &sentences,
                          std::vector<ApertiumTranslation> &translations) {
  translations.clear();
  std::vector<std::string> blocks;
  blocks.reserve(sentences.size());
  for (const std::string &sentence : sentences) blocks.push_back(apertium_block(sentence));
  Run analysis{engine, engine.first, {}}, plain{engine, engine.rest, {}};
  StreamEnd end = analysis.pass(blocks);
  if (end.kind != StreamEnd::good) return end;
  Batch batch{sentences, std::move(analysis.answers), {}, {}};
  batch.units.resize(sentences.size());
  end = plain.pass(batch.analyses);
  ApertiumAnswer answer;
  for (size_t i = 0; i < plain.answers.size(); i++) {
    ApertiumTranslation &translation = translations.emplace_back();
    translation.is_lost = !read_answer(plain.answers[i], answer);
    translation.text = translation.is_lost ? sentences[i] : answer.text;
  }
  if (end.kind != StreamEnd::good) return end;
  return align_batch(engine, batch, analysis.lost + plain.lost, translations);
}

}  // namespace klib::programs
