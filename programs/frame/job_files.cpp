// Files are compared by device and inode where they exist, else by the path of their directory and
// their name.
#include "programs/frame/job_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <string_view>
#include <tuple>
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
  std::string path = {};  // if it does not exist

  auto key() const { return std::tie(exists, device, inode, path); }
  bool operator<(const FileIdentity &other) const { return key() < other.key(); }
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
  char bytes[256];
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
  std::set<FileIdentity> used;
  for (const FileIdentity &file : read)
    if (file.counts) used.insert(file);
  for (const FileIdentity &file : written) {
    if (!file.counts) continue;
    const auto [same, is_new] = used.insert(file);
    if (is_new) continue;
    withhold_report(file.name);
    withhold_report(same->name);
    fail({file.name.c_str()}, "same-file", {},
         "is the same file as %s, which this job uses, too: nothing is written",
         same->name.c_str());
  }
}

[[noreturn]] void refuse(const std::string &name, const char *why) {
  fail({name.c_str()}, "not-replaced", {}, "exists and %s: it is not replaced", why);
}

// Two readers of a stream would each get a part of it, and two writers mix what they write.
void check_standard_stream(std::span<const std::string> names, const char *stream,
                           const char *what) {
  if (std::ranges::count(names, "-") > 1)
    fail({stream}, "same-file", {}, "cannot be %s twice", what);
}

}  // namespace

void check_job_files(std::span<const std::string> inputs, std::span<const std::string> outputs) {
  std::vector<std::string> read = parameter_files(), written(outputs.begin(), outputs.end());
  const std::vector<std::string> own = own_outputs();
  read.insert(read.begin(), inputs.begin(), inputs.end());
  written.insert(written.end(), own.begin(), own.end());
  check_standard_stream(read, "standard input", "read");
  check_standard_stream(written, "standard output", "written");
  check(identify_all(read), identify_all(written));
}

void check_own_outputs(std::span<const std::string> names, const char *report) {
  check(identify_all(names), identify_all(own_outputs()));
  if (!report) return;
  const auto is_ours = [](std::string_view bytes) { return bytes.starts_with("{\"program\":\""); };
  try {
    check_replaced(report, is_ours, "is no report for scripts");
  } catch (const Failed &) {
    withhold_report(report);
    throw;
  }
}

bool check_replaced(const std::string &name, bool (*is_ours)(std::string_view), const char *why) {
  if (name == "-") return false;
  const std::string bytes = beginning_of(name);
  if (!bytes.empty() && !is_ours(bytes)) refuse(name, why);
  return !bytes.empty();
}

bool check_sentence_file(const std::string &name) {
  struct stat status;
  const bool exists = stat(name.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) return false;
  if (!name.ends_with(".kti"))
    fail({name.c_str()}, "wrong-type", {}, "the name of a sentence file must end in .kti");
  return check_replaced(name, begins_like_sentences, "is no sentence file");
}

void check_family(const std::string &sentence_file) {
  const bool has_sentences = check_sentence_file(sentence_file);
  const std::string anchors = with_type(sentence_file.c_str(), "anc");
  const bool has_anchors = check_replaced(anchors, begins_like_anchors, "is no anchor file");
  if (has_sentences || has_anchors) return;
  for (const char *type : {"txt", "anx"})
    check_replaced(
        with_type(sentence_file.c_str(), type), [](std::string_view) { return false; },
        "belongs to no sentence file of that name");
}

}  // namespace klib::programs
