// The files of a job, looked at before any is written: nothing that a user has may be lost.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace klib::programs {

// Ends the job (fail()) when an output is one of the inputs or another output: the same path, or
// the same regular file. The log, the file of --report and the parameter files count, too. "-" and
// what is no regular file do not.
void check_job_files(std::span<const std::string> inputs, std::span<const std::string> outputs);

// Ends the job when the log or the file of --report, null if there is none, is one of the files
// that the command line names, or that of --report exists and is something else. Every job begins
// with this.
void check_own_outputs(std::span<const std::string> names, const char *report);

// Ends the job when a regular file of this name exists, holds something, and is not of the
// programs' own making, as far as its first bytes show: `why` it is not replaced, such as "is no
// report". Whether there is one.
bool check_replaced(const std::string &name, bool (*is_ours)(std::string_view first_bytes),
                    const char *why);

// Ends the job when a file of this name exists, holds something, and does not begin like a sentence
// file, or is not called *.kti. Whether there is one.
bool check_sentence_file(const std::string &name);

// The same for JOB.txt, JOB.anc and JOB.anx beside JOB.kti: they are replaced when JOB.kti or
// JOB.anc are of the programs' own making.
void check_family(const std::string &sentence_file);

}  // namespace klib::programs
