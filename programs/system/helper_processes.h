// Processes that work for this one and must not outlive it: they would write into its temporary
// folder while that is removed.
#pragma once

#include <sys/types.h>

namespace klib::programs {

constexpr int most_helpers = 1024;

// Remembers a process, and forgets one that has ended. There are never more than most_helpers.
void add_helper(pid_t process);
void forget_helper(pid_t process);

// Ends all helpers of this process; may be called from a signal's handler and without memory.
void end_helpers();

}  // namespace klib::programs
