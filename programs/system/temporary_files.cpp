// The names are kept in a fixed table, since a signal's handler may neither allocate nor wait.
// Signals wait while a file and its name in the table do not agree.
#include "programs/system/temporary_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "programs/system/helper_processes.h"

namespace klib::programs {
namespace {

constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE};
constexpr size_t most_files = 16, longest_base_name = 255;

// A process that forks leaves the files to the one that made them.
struct Entry {
  pid_t owner;
  char name[PATH_MAX];  // empty: free
};
constinit Entry entries[most_files] = {}, folder = {};

// Lets signals wait while it lives.
class Waiting {
 public:
  Waiting() {
    sigset_t all;
    sigemptyset(&all);
    for (const int signal : ending_signals) sigaddset(&all, signal);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  ~Waiting() {
    const int error = errno;
    sigprocmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
  }
  Waiting(const Waiting &) = delete;
  Waiting &operator=(const Waiting &) = delete;

 private:
  sigset_t before_;
};

Entry *entry_of(const char *name) {
  for (Entry &entry : entries)
    if (strcmp(entry.name, name) == 0) return &entry;
  return nullptr;
}

void forget(const std::string &name) {
  if (Entry *entry = entry_of(name.c_str())) entry->name[0] = '\0';
}

// Removes the files of a folder as far as one block of its list goes; whether there were any. The
// list is read without readdir(), which allocates.
bool remove_listed_files(int descriptor) {
  alignas(dirent64) static char block[8192];
  bool has_removed = false;
  const ssize_t size = getdents64(descriptor, block, sizeof block);
  for (ssize_t at = 0; at < size;) {
    const auto *entry = reinterpret_cast<const dirent64 *>(block + at);
    has_removed |= unlinkat(descriptor, entry->d_name, 0) == 0;
    at += entry->d_reclen;
  }
  return has_removed;
}

// Nothing tries later what could not be removed, so it is tried again at once.
constexpr int attempts = 3;

bool remove_file(const char *name) {
  for (int i = 0; i < attempts; i++)
    if (unlink(name) == 0 || errno == ENOENT) return true;
  return false;
}

bool remove_folder(const char *name) {
  for (int i = 0; i < attempts; i++) {
    const int descriptor = open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    while (descriptor >= 0 && remove_listed_files(descriptor)) lseek(descriptor, 0, SEEK_SET);
    if (descriptor >= 0) close(descriptor);
    if (rmdir(name) == 0) return true;
  }
  return false;
}

// The name with room for what makes it a temporary one, cut between two characters.
std::string beside(const std::string &target) {
  constexpr const char *pattern = ".XXXXXX";
  const size_t begin = target.rfind('/') + 1;  // npos + 1 is 0
  std::string name = target;
  if (name.size() - begin > longest_base_name - strlen(pattern)) {
    size_t end = begin + longest_base_name - strlen(pattern);
    while (end > begin && (name[end] & '\xC0') == '\x80') end--;
    name.resize(end);
  }
  return name += pattern;
}

}  // namespace

void remove_temporary_files_on_signals() {
  for (const int signal : ending_signals) {
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
    action.sa_handler = end_by_signal;
    sigfillset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
  }
}

void end_by_signal(int signal) {
  remove_all_temporary_files();
  std::signal(signal, SIG_DFL);
  raise(signal);
}

int make_temporary_file(const std::string &target, std::string &name) {
  name = beside(target);
  Entry *entry = entry_of("");
  if (!entry || name.size() >= PATH_MAX) {
    errno = entry ? ENAMETOOLONG : EMFILE;
    return -1;
  }
  const Waiting waiting;
  const int descriptor = mkostemp(name.data(), O_CLOEXEC);
  if (descriptor >= 0) {
    entry->owner = getpid();
    memcpy(entry->name, name.c_str(), name.size() + 1);
  }
  return descriptor;
}

bool keep_temporary_file(const std::string &name, const std::string &target) {
  const Waiting waiting;
  if (rename(name.c_str(), target.c_str()) != 0) return false;
  forget(name);
  return true;
}

void remove_all_temporary_files() {
  end_helpers();
  for (const Entry &entry : entries)
    if (entry.name[0] != '\0' && entry.owner == getpid()) remove_file(entry.name);
  remove_temporary_folder();
}

void remove_temporary_file(const std::string &name) {
  const Waiting waiting;
  remove_file(name.c_str());
  forget(name);
}

bool make_temporary_folder(const std::string &place, std::string &name) {
  name = place + "/ktranslate.XXXXXX";
  if (name.size() >= PATH_MAX) {
    errno = ENAMETOOLONG;
    return false;
  }
  const Waiting waiting;
  if (!mkdtemp(name.data())) return false;
  folder.owner = getpid();
  memcpy(folder.name, name.c_str(), name.size() + 1);
  return true;
}

bool remove_temporary_folder() {
  if (folder.name[0] == '\0' || folder.owner != getpid()) return true;
  const Waiting waiting;
  const bool is_removed = remove_folder(folder.name);
  folder.name[0] = '\0';
  return is_removed;
}

}  // namespace klib::programs
