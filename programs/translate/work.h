// Work on pages in processes of their own.
//
// A program's job uses the library, whose state belongs to the process: parameters, fonts, parser
// levels, indexes of anchors. A process for each piece of work has the parameters that the first
// page has found, runs beside others, and takes only its own page along when it fails. It is a copy
// of this process, so nothing is read or looked for again. It writes into the temporary folder
// alone: what leaves that is moved by this process, when everything that can fail is done.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "programs/common/tell.h"

namespace klib::programs {

struct Task {
  std::string file;                // what messages call the work
  std::string records;             // a file for what it reports
  std::function<void()> work;      // in the process of its own; Failed ends it
  std::function<void()> end = {};  // here, after it, its last step; Failed makes it not done
  bool is_done = false;            // it has ended, without a problem that ends a job
};

// Runs the tasks, `jobs` at a time. What a task reports is passed on when it ends, with the place
// that `for_people` makes of its own; names that this returns must last. `ended` is called with how
// many have ended, before the `end` of each.
void run_tasks(std::vector<Task> &tasks, int64_t jobs,
               const std::function<Place(const Place &)> &for_people,
               const std::function<void(size_t)> &ended);

}  // namespace klib::programs
