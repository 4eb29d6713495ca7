// The messages of a run, and the report that is made from them.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "programs/report/report.h"
#include "programs/translate/sentences.h"

namespace klib::programs {

// The messages about each page, by its name.
using RunNotes = std::map<std::string, std::vector<ReportNote>>;

// While it lives, messages are collected in `notes`, unless that is null.
class Listening {
 public:
  explicit Listening(RunNotes *notes);
  ~Listening();
  Listening(const Listening &) = delete;
  Listening &operator=(const Listening &) = delete;
};

// Reads a document for the view side by side: its HTML, or nothing when it is of another kind;
// fail() when that cannot be read.
using DocumentReader = std::function<std::string(const std::string &name)>;

// Writes the report of a run, while the files between its steps are there.
void write_report(const char *name, const std::vector<PageFiles> &pages, const RunNotes &notes,
                  const DocumentReader &read);

}  // namespace klib::programs
