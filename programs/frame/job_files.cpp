// Files are compared by device and inode where they exist, else by the path of their directory and
// their name.
#include "programs/frame/job_files.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "programs/common/codes.h"
#include "programs/common/program.h"

namespace klib::programs {
namespace {

struct FileIdentity {
  std::string name;
  bool counts = false, exists = false;
  dev_t device = 0;
  ino_t inode = 0;
  std::string path = {};

  bool operator==(const FileIdentity &other) const {
    if (!counts || !other.counts) return false;
    if (exists && other.exists) return device == other.device && inode == other.inode;
    return !exists && !other.exists && path == other.path;
  }
};

// The path with its directory resolved.
std::string resolved(const std::string &name) {
  const size_t slash = name.rfind('/');
  const std::string directory = slash == name.npos ? "." : name.substr(0, slash + 1);
  const std::unique_ptr<char, void (*)(void *)> path(realpath(directory.c_str(), nullptr), free);
  if (!path) return name;
  return std::string(path.get()).append("/").append(name, slash == name.npos ? 0 : slash + 1);
}

FileIdentity identify(const std::string &name) {
  FileIdentity file{name};
  if (name.empty() || name == "-") return file;
  struct stat status;
  file.exists = stat(name.c_str(), &status) == 0;
  file.counts = !file.exists || S_ISREG(status.st_mode);
  if (!file.counts) return file;
  if (file.exists)
    file.device = status.st_dev, file.inode = status.st_ino;
  else
    file.path = resolved(name);
  return file;
}

// What a file begins with; empty when it is not there or is no regular file.
std::string beginning_of(const std::string &name) {
  struct stat status;
  if (stat(name.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return "";
  const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(name.c_str(), "rbe"), fclose);
  char bytes[16];
  const size_t size = file ? fread(bytes, 1, sizeof bytes, file.get()) : 0;
  // What cannot be read is not known to be ours.
  return size == 0 && status.st_size > 0 ? "?" : std::string(bytes, size);
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Earlier versions began with the first frame or anchor.
bool begins_like_sentences(std::string_view bytes) {
  return bytes.starts_with("klib-sentences ") ||
         (bytes.size() > 1 && (bytes[0] == frame_begin || bytes[0] == anchor_begin) &&
          is_digit(bytes[1]));
}

bool begins_like_anchors(std::string_view bytes) { return bytes.starts_with("klib-page "); }

std::vector<FileIdentity> identify_all(std::span<const std::string> names) {
  std::vector<FileIdentity> files;
  for (const std::string &name : names) files.push_back(identify(name));
  return files;
}

void check(const std::vector<FileIdentity> &read, const std::vector<FileIdentity> &written) {
  for (size_t i = 0; i < written.size(); i++) {
    const FileIdentity *same = nullptr;
    for (const FileIdentity &input : read)
      if (written[i] == input) same = &input;
    for (size_t k = 0; k < i && !same; k++)
      if (written[i] == written[k]) same = &written[k];
    if (!same) continue;
    withhold_report(written[i].name);
    withhold_report(same->name);
    fail({written[i].name.c_str()}, "same-file", {},
         "is the same file as %s, which this job uses, too: nothing is written",
         same->name.c_str());
  }
}

[[noreturn]] void refuse(const std::string &name, const char *why) {
  fail({name.c_str()}, "not-replaced", {}, "exists and %s: it is not replaced", why);
}

}  // namespace

void check_job_files(std::span<const std::string> inputs, std::span<const std::string> outputs) {
  std::vector<FileIdentity> written = identify_all(outputs), read = identify_all(inputs);
  const std::vector<FileIdentity> own = identify_all(own_outputs());
  written.insert(written.end(), own.begin(), own.end());
  const std::vector<FileIdentity> parameters = identify_all(parameter_files());
  read.insert(read.end(), parameters.begin(), parameters.end());
  check(read, written);
}

void check_own_outputs(std::span<const std::string> names) {
  check(identify_all(names), identify_all(own_outputs()));
}

void check_sentence_file(const std::string &name) {
  struct stat status;
  const bool exists = stat(name.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) return;
  if (!name.ends_with(".kti"))
    fail({name.c_str()}, "wrong-type", {}, "the name of a sentence file must end in .kti");
  const std::string bytes = beginning_of(name);
  if (!bytes.empty() && !begins_like_sentences(bytes)) refuse(name, "is no sentence file");
}

void check_family(const std::string &sentence_file) {
  check_sentence_file(sentence_file);
  const std::string anchors = with_type(sentence_file.c_str(), "anc");
  const std::string bytes = beginning_of(anchors);
  if (!bytes.empty() && !begins_like_anchors(bytes)) refuse(anchors, "is no anchor file");
  if (!bytes.empty() || !beginning_of(sentence_file).empty()) return;
  for (const char *type : {"txt", "anx"})
    if (const std::string name = with_type(sentence_file.c_str(), type);
        !beginning_of(name).empty())
      refuse(name, "belongs to no sentence file of that name");
}

}  // namespace klib::programs
