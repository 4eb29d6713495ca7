#include "workplace.h"

#include <sys/wait.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace klib::test {

std::string coded(std::string_view notation) {
  std::string bytes;
  for (size_t i = 0; i < notation.size(); i++) {
    if (notation[i] == '{') {
      bytes += static_cast<char>(std::stoi(std::string(notation.substr(i + 1, 2)), nullptr, 16));
      i += 3;
    } else {
      bytes += notation[i];
    }
  }
  return bytes;
}

std::string shown(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    char pair[8];
    snprintf(pair, sizeof pair, "{%02X}", static_cast<unsigned char>(c));
    if (c == '\n')
      text += '/';
    else if (c < ' ' || c == '\x7F')  // a char above 0x7F is negative
      text += pair;
    else
      text += c;
  }
  return text;
}

void Workplace::SetUp() {
  std::string name = std::filesystem::temp_directory_path() / "programs_test.XXXXXX";
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  directory_ = name;
}

void Workplace::TearDown() { std::filesystem::remove_all(directory_); }

void Workplace::write(const std::string &name, std::string_view content) const {
  std::ofstream(directory_ + "/" + name, std::ios::binary) << content;
}

std::string Workplace::read(const std::string &name) const {
  std::ifstream file(directory_ + "/" + name, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return file ? content.str() : "(none)";
}

void Workplace::write_sentences(const std::string &name, std::string_view content,
                                const std::string &language) const {
  const std::string anchors = read("job.anc");  // "klib-page 2 MARK LANGUAGE ..."
  const std::string mark =
      anchors.starts_with("klib-page ") ? anchors.substr(12, 16) : std::string(16, '0');
  write(name, "klib-sentences 2 " + mark + " " + language + "\n" + std::string(content));
}

std::string Workplace::read_sentences(const std::string &name) const {
  const std::string content = read(name);
  return content.starts_with("klib-sentences 2 ") ? content.substr(content.find('\n') + 1)
                                                  : content;
}

Outcome Workplace::run(const std::string &program, const std::string &arguments,
                       const std::string &before) const {
  const std::string command = "cd " + directory_ + " && exec </dev/null; " + before + PROGRAMS "/" +
                              program + " " + arguments + " >.output 2>.errors";
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(".errors"), read(".output")};
}

std::string Workplace::offered(const std::string &page, const std::string &options) const {
  write("job.htm", page);
  EXPECT_EQ(run("kextract", "-LANGUAGE ENGLISH " + options + " job.kti job.htm").errors, "");
  EXPECT_EQ(run("kmerge", "-LANGUAGE ENGLISH job.kti job.anc same.htm").errors, "");
  EXPECT_EQ(read("same.htm"), page);
  std::string text = read("job.txt");
  std::replace(text.begin(), text.end(), '\n', '/');
  return text;
}

std::string Workplace::files() const {
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(directory_))
    if (entry.path().filename().string()[0] != '.') names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  std::string list;
  for (const std::string &name : names) list += (list.empty() ? "" : " ") + name;
  return list;
}

}  // namespace klib::test
