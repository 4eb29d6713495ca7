// String routines on a sentence of 20 words.

#include <benchmark/benchmark.h>

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "bench/allocations.h"
#include "bench/inputs.h"
#include "klib.h"

namespace klib::bench {

namespace {

const std::vector<std::string> &sentences() {
  static const std::vector<std::string> made = plain_sentences(1000, 20);
  return made;
}

template <class Change>
void on_sentences(benchmark::State &state, Change change) {
  static char text[4096];
  size_t next = 0;
  for (auto _ : state) {
    const std::string &sentence = sentences()[next++ % sentences().size()];
    std::memcpy(text, sentence.c_str(), sentence.size() + 1);
    change(text);
    benchmark::DoNotOptimize(text);
    benchmark::ClobberMemory();
  }
}

unsigned char byte_of(char c) { return static_cast<unsigned char>(c); }

void klib_uppercase(benchmark::State &state) { on_sentences(state, uppercase_string); }
void toupper_loop(benchmark::State &state) {
  on_sentences(state, [](char *text) {
    for (; *text != '\0'; text++) *text = static_cast<char>(std::toupper(byte_of(*text)));
  });
}
void klib_remove(benchmark::State &state) {
  on_sentences(state, [](char *text) { remove_if(text, ct_props[6]); });
}
void isspace_loop(benchmark::State &state) {
  on_sentences(state, [](char *text) {
    char *to = text;
    for (; *text != '\0'; text++)
      if (!std::isspace(byte_of(*text))) *to++ = *text;
    *to = '\0';
  });
}
void branchless_loop(benchmark::State &state) {
  on_sentences(state, [](char *text) {
    const uint32_t *const types = c_t;
    const uint32_t mask = ct_props[6];
    char *to = text;
    for (; *text != '\0'; text++) {
      *to = *text;
      to += (types[byte_of(*text)] & mask) == 0;
    }
    *to = '\0';
  });
}
BENCHMARK(klib_uppercase)->Name("uppercase/klib");
BENCHMARK(toupper_loop)->Name("uppercase/toupper loop");
BENCHMARK(klib_remove)->Name("remove white space/klib");
BENCHMARK(isspace_loop)->Name("remove white space/isspace loop");
BENCHMARK(branchless_loop)->Name("remove white space/branchless loop");

// The last word of each sentence.
const std::vector<std::string> &last_words() {
  static const std::vector<std::string> made = [] {
    std::vector<std::string> words;
    for (const std::string &sentence : sentences())
      words.push_back(sentence.substr(sentence.rfind(' ') + 1));
    return words;
  }();
  return made;
}

template <class Search>
void search_sentences(benchmark::State &state, Search search_in) {
  const auto &words = last_words();
  size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(search_in(words[next].c_str(), sentences()[next].c_str()));
    next = next + 1 == words.size() ? 0 : next + 1;
  }
}
void klib_search(benchmark::State &state) { search_sentences(state, search); }
void strstr_search(benchmark::State &state) {
  search_sentences(state, [](const char *word, const char *text) {
    const char *found = std::strstr(text, word);
    return found == nullptr ? -1 : found - text;
  });
}
BENCHMARK(klib_search)->Name("search a text/klib");
BENCHMARK(strstr_search)->Name("search a text/strstr");

template <class Replace>
void replace_in_sentences(benchmark::State &state, Replace change) {
  const auto &words = last_words();
  size_t next = 0;
  const CountedCalls counted(state);
  for (auto _ : state) {
    const std::string &sentence = sentences()[next];
    char *text = static_cast<char *>(Kmalloc(static_cast<uint32_t>(sentence.size() + 1)));
    std::memcpy(text, sentence.c_str(), sentence.size() + 1);
    Kfree(change(text, words[next].c_str(), "replacement"));
    next = next + 1 == words.size() ? 0 : next + 1;
  }
}
void klib_replace(benchmark::State &state) { replace_in_sentences(state, replace); }
void plain_replace(benchmark::State &state) {
  replace_in_sentences(state, [](char *text, const char *old_text, const char *new_text) {
    char *found = std::strstr(text, old_text);
    if (found == nullptr) return text;
    const size_t before = static_cast<size_t>(found - text), added = std::strlen(new_text);
    const size_t removed = std::strlen(old_text), rest = std::strlen(found + removed) + 1;
    char *made = static_cast<char *>(Kmalloc(static_cast<uint32_t>(before + added + rest)));
    std::memcpy(made, text, before);
    std::memcpy(made + before, new_text, added);
    std::memcpy(made + before + added, found + removed, rest);
    Kfree(text);
    return made;
  });
}
BENCHMARK(klib_replace)->Name("replace in a text/klib");
BENCHMARK(plain_replace)->Name("replace in a text/strstr and copies");

}  // namespace

}  // namespace klib::bench
