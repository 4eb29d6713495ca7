// Apertium as an engine: plain translations, aligned by Apertium itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "programs/engine/stream.h"

namespace klib::programs {

struct Apertium {
  std::string mode;         // "eng-spa"
  std::string first, rest;  // the mode's commands: the analyser, and what follows it
  int timeout = 0;          // as for StreamCommand
  // Whether sentences get bound blanks. They do not, from the first batch on, where a mode loses
  // blanks or sentences.
  bool aligns = true;
  bool is_tried = false;  // the first batch is done
};

// Finds the commands of a mode among Apertium's installed ones ($APERTIUM_DATADIR or
// /usr/share/apertium). Unknown words carry a '*' if `marks_unknown`. When there is none, the
// result is false and `problem` says what to do.
bool open_apertium(const std::string &mode, bool marks_unknown, Apertium &engine,
                   std::string &problem);

// The standard codes of a mode's languages, two letters where there are such ("en", "es").
void apertium_languages(const std::string &mode, std::string &source, std::string &target);

struct ApertiumTranslation {
  std::string text;
  std::string pairs;        // "0-0 1-2"
  bool is_aligned = false;  // `pairs` is known; otherwise another aligner is asked
  bool is_lost = false;     // Apertium fails at this sentence: `text` is the source
};

// A good size of a batch, in sentences: the commands are started again for each batch.
constexpr size_t apertium_batch = 1000;

// Translates sentences, each as Apertium translates it without blanks. The result says how the
// commands ended; when one failed, `translations` has only what was done before.
StreamEnd translate_batch(Apertium &engine, const std::vector<std::string> &sentences,
                          std::vector<ApertiumTranslation> &translations);

}  // namespace klib::programs
