// What a process reports goes through a file, as a pipe could be full while this process waits for
// another one. A record is a row of fields, each its length, ':' and its bytes: severity, file,
// line, sentence, kind, text, and the number of figures with their names and values.
#include "programs/translate/work.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <list>
#include <map>
#include <new>
#include <sstream>

#include "programs/common/program.h"
#include "programs/system/exhaustion.h"
#include "programs/system/helper_processes.h"
#include "programs/translate/interruption.h"

namespace klib::programs {
namespace {

void append_field(std::string_view text, std::string &bytes) {
  bytes.append(std::to_string(text.size())).append(":").append(text);
}

std::string record_bytes(const Record &record) {
  std::string bytes;
  append_field(std::to_string(static_cast<int>(record.severity)), bytes);
  append_field(record.place.file, bytes);
  append_field(std::to_string(record.place.line), bytes);
  append_field(std::to_string(record.place.sentence), bytes);
  append_field(record.kind, bytes);
  append_field(record.text, bytes);
  append_field(std::to_string(record.figures.size()), bytes);
  for (const Figure &figure : record.figures) {
    append_field(figure.name, bytes);
    append_field(std::to_string(figure.value), bytes);
  }
  return bytes;
}

// Reads fields; what is cut off is empty.
struct Reader {
  std::string_view rest;

  std::string text() {
    const size_t colon = rest.find(':');
    size_t size = 0;
    if (colon == rest.npos) return rest = {}, "";
    std::from_chars(rest.data(), rest.data() + colon, size);
    std::string field(rest.substr(colon + 1, size));
    rest.remove_prefix(std::min(colon + 1 + size, rest.size()));
    return field;
  }
  int64_t number() {
    const std::string field = text();
    int64_t value = 0;
    std::from_chars(field.data(), field.data() + field.size(), value);
    return value;
  }
};

// Names of kinds and figures live as long as the program: a record may be kept.
const char *kept(const std::string &name) {
  static std::map<std::string, std::string> names;
  return names.emplace(name, name).first->second.c_str();
}

// Returns whether there was a problem among them.
bool tell_records(const std::string &name, const std::function<Place(const Place &)> &for_people) {
  std::ostringstream content;
  content << std::ifstream(name, std::ios::binary).rdbuf();
  const std::string bytes = content.str();
  Reader reader{bytes};
  bool has_problem = false;
  while (!reader.rest.empty()) {
    const auto severity = static_cast<Severity>(reader.number());
    const std::string file = reader.text();
    const int64_t line = reader.number();
    const Place place = for_people({file.c_str(), line, reader.number()});
    const char *kind = kept(reader.text());
    const std::string text = reader.text();
    std::vector<Figure> figures(static_cast<size_t>(std::clamp<int64_t>(reader.number(), 0, 100)));
    for (Figure &figure : figures) {
      figure.name = kept(reader.text());
      figure.value = reader.number();
    }
    tell({severity, place, kind, figures, text});
    has_problem |= severity == Severity::problem;
  }
  return has_problem;
}

// The life of a process: its status says whether the work was done.
[[noreturn]] void live(const Task &task) {
  int status = 1;
  {
    std::FILE *records = fopen(task.records.c_str(), "wbe");
    if (!records) {
      report(task.records.c_str(), 0, "cannot be written: %s", error_text(errno));
      _exit(1);
    }
    tell_only([records](const Record &record) {
      const std::string bytes = record_bytes(record);
      fwrite(bytes.data(), 1, bytes.size(), records);
    });
    try {
      task.work();
      status = 0;
    } catch (const Failed &) {
    } catch (const std::bad_alloc &) {
      report(task.file.c_str(), 0, "not enough memory");
    }
    if (fclose(records) != 0) status = 1;
  }
  _exit(status);
}

void finish(Task &task, int status, const std::function<Place(const Place &)> &for_people) {
  const bool has_problem = tell_records(task.records, for_people);
  unlink(task.records.c_str());
  task.is_done = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (WIFSIGNALED(status) && !is_interrupted())
    report(task.file.c_str(), 0, "the work on it was ended by a signal: %s",
           strsignal(WTERMSIG(status)));
  else if (!task.is_done && !has_problem)
    report(task.file.c_str(), 0, "the work on it was not finished");
}

void end(Task &task) {
  if (!task.is_done || !task.end) return;
  try {
    task.end();
  } catch (const Failed &) {
    task.is_done = false;
  }
}

// The processes at work; when the run is interrupted, they end.
struct Workers {
  std::list<std::pair<pid_t, Task *>> running;

  ~Workers() { end_helpers(); }
};

void start(Task &task, Workers &workers) {
  fflush(nullptr);                         // or what is in a stream would be written twice
  workers.running.emplace_back(0, &task);  // which fails, if at all, before there is a process
  const pid_t process = fork();
  if (process < 0) {
    workers.running.pop_back();
    fail(task.file.c_str(), 0, "cannot be worked on: %s", error_text(errno));
  }
  if (process == 0) {
    end_at_interruptions();
    live(task);
  }
  add_helper(process);
  workers.running.back().first = process;
}

}  // namespace

void run_tasks(std::vector<Task> &tasks, int64_t jobs,
               const std::function<Place(const Place &)> &for_people,
               const std::function<void(size_t)> &ended) {
  Workers workers;
  size_t next = 0, done = 0;
  while (done < tasks.size()) {
    while (next < tasks.size() && static_cast<int64_t>(workers.running.size()) < jobs) {
      start(tasks[next++], workers);
    }
    if (workers.running.empty()) continue;
    int status = 0;
    const pid_t process = waitpid(-1, &status, 0);
    end_if_interrupted();
    if (process < 0 && errno != EINTR)
      fail("ktranslate", 0, "the work on a page cannot be waited for: %s", error_text(errno));
    const auto worker = std::find_if(workers.running.begin(), workers.running.end(),
                                     [&](const auto &one) { return one.first == process; });
    if (worker == workers.running.end()) continue;
    Task &task = *worker->second;
    forget_helper(process);
    workers.running.erase(worker);
    finish(task, status, for_people);
    ended(++done);
    end(task);
  }
}

}  // namespace klib::programs
