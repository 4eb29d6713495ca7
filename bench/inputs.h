// Inputs of the benchmarks, generated with a fixed seed: the same on every machine.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace klib::bench {

inline constexpr size_t text_size = 50'000'000;

// Every generator restarts the random numbers, since the benchmarks run in any order.
void start_random(uint32_t seed);

// A number from 0 up to, not including, `end`.
uint32_t next_random(uint32_t end);

std::string random_word();

// Running text with a font code (or, as XML, an empty element of the same length inside one root
// element) every 40 bytes or so, and a line feed every 100 bytes or so.
const std::string &coded_text();
const std::string &xml_text();

struct Sentence {
  std::string source, target;
  std::vector<std::vector<int32_t>> alignment;  // each list ended by -1
};
enum class Alignment { one_to_one, reordered, many_to_many };

// A sentence of `words` words with `codes` codes, fonts and anchors in turn.
Sentence make_sentence(int32_t words, int32_t codes, Alignment kind);

std::vector<std::string> plain_sentences(size_t count, int32_t words);

// A page with this many paragraphs of 40 words, with links and bold words.
std::string make_page(size_t paragraphs);

// A file below the system's temporary directory with this content, removed at the end of the run.
std::string make_file(const std::string &name, const std::string &content);
std::string temporary_file(const std::string &name);

}  // namespace klib::bench
