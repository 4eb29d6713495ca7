// Messages of the programs as notes of a report.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "programs/report/report.h"

namespace klib::programs {

// The note of a record.
ReportNote make_note(const std::string &kind, int64_t sentence, std::string text);

// The notes in a file that --report has written. Those of a run over several files are of those
// `names`; where it is empty, all are taken. A line that is not a record ends the job (fail()).
std::vector<ReportNote> read_notes(const char *name, std::span<const std::string> names);

}  // namespace klib::programs
