// What was told in a run, and the report that is made of it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "programs/report/report.h"
#include "programs/translate/sentences.h"

namespace klib::programs {

// What was told of each page, by its name.
using RunNotes = std::map<std::string, std::vector<ReportNote>>;

// While it lives, what is told is noted, unless there is no place for it.
class Listening {
 public:
  explicit Listening(RunNotes *notes);
  ~Listening();
  Listening(const Listening &) = delete;
  Listening &operator=(const Listening &) = delete;
};

// Reads the text of a document for the view of both sides; fail() when it cannot.
using DocumentReader = std::function<std::string(const std::string &name)>;

// Writes the report of a run, while the files between its steps are there.
void write_report(const char *name, const std::vector<PageFiles> &pages, const RunNotes &notes,
                  const DocumentReader &read);

}  // namespace klib::programs
