// The generators; see inputs.h.

#include "bench/inputs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

namespace klib::bench {

namespace {

std::mt19937 engine(20030509);

struct Directory {
  std::filesystem::path path;
  Directory() {
    std::string pattern = std::filesystem::temp_directory_path() / "klib-bench-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    path = pattern;
  }
  ~Directory() { std::filesystem::remove_all(path); }
};

std::string text_with(const char *code) {
  start_random(1);
  std::string text;
  text.reserve(text_size + 100);
  size_t next_code = 40, next_line = 100;
  while (text.size() < text_size) {
    text += random_word();
    text += ' ';
    if (text.size() >= next_code) {
      text += code;
      next_code = text.size() + 30 + next_random(20);
    }
    if (text.size() >= next_line) {
      text += '\n';
      next_line = text.size() + 100;
    }
  }
  return text;
}

std::string code(int32_t k) {
  static const char *const fonts[] = {"Bold", "Roman", "Mono", "Italic"};
  if (k % 2 == 1) return "\x94" + std::to_string(k) + "\x95";
  return std::string("\x98") + fonts[k / 2 % 4] + "\x99";
}

}  // namespace

void start_random(uint32_t seed) { engine.seed(seed); }

uint32_t next_random(uint32_t end) { return static_cast<uint32_t>(engine() % end); }

std::string random_word() {
  static constexpr char letters[] = "etaoinshrdlucmfwypvbgkjqxz";
  std::string word(2 + next_random(8), ' ');
  for (char &letter : word) letter = letters[std::min(next_random(26), next_random(26))];
  return word;
}

const std::string &coded_text() {
  static const std::string text = text_with(
      "\x98"
      "Bold"
      "\x99");
  return text;
}

const std::string &xml_text() {
  static const std::string text = "<r>" + text_with("<bol/>") + "</r>";
  return text;
}

Sentence make_sentence(int32_t words, int32_t codes, Alignment kind) {
  Sentence result;
  const int32_t distance = std::max(words / codes, 1);
  for (int32_t i = 0; i < words; i++) {
    if (i > 0) result.source += ' ';
    if (i % distance == distance / 2) result.source += code(i / distance);
    result.source += random_word();
    if (i > 0) result.target += ' ';
    result.target += random_word();
    const int32_t mirrored = words - 1 - i;
    switch (kind) {
      case Alignment::one_to_one:
        result.alignment.push_back({i, -1});
        break;
      case Alignment::reordered:
        result.alignment.push_back({mirrored, -1});
        break;
      case Alignment::many_to_many:
        result.alignment.push_back({i, std::min(i + 1, words - 1), std::max(i - 2, 0), -1});
        break;
    }
  }
  return result;
}

std::vector<std::string> plain_sentences(size_t count, int32_t words) {
  start_random(2);
  std::vector<std::string> sentences(count);
  for (std::string &sentence : sentences)
    for (int32_t i = 0; i < words; i++) sentence += (i > 0 ? " " : "") + random_word();
  return sentences;
}

std::string make_page(size_t paragraphs) {
  start_random(6);
  std::string page =
      "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>A page</title></head>\n<body>\n";
  for (size_t i = 0; i < paragraphs; i++) {
    page += "<p class=\"text\">";
    for (int word = 0; word < 40; word++) {
      const std::string text = random_word();
      page += word % 10 == 0 && word != 0 ? ". The " : word == 0 ? "" : " ";
      if (word % 10 == 4)
        page += "<b>" + text + "</b>";
      else if (word % 20 == 7)
        page += "<a href=\"https://example.org/" + text + "\">" + text + "</a>";
      else
        page += text;
    }
    page += ".</p>\n";
  }
  return page + "</body></html>\n";
}

std::string temporary_file(const std::string &name) {
  static const Directory directory;
  return directory.path / name;
}

std::string make_file(const std::string &name, const std::string &content) {
  const std::string path = temporary_file(name);
  std::ofstream(path, std::ios::binary)
      .write(content.data(), static_cast<std::streamsize>(content.size()));
  return path;
}

}  // namespace klib::bench
