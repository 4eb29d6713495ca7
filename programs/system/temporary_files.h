// Files that must not outlive the process: a signal that ends it removes them.
#pragma once

#include <string>

namespace klib::programs {

// Lets SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGPIPE remove the temporary files before they end the
// process as they would have; a signal that the process ignores stays ignored.
void remove_temporary_files_on_signals();

// Makes a file beside `target` under a temporary name, which `name` gets, and returns its
// descriptor; -1 with errno when that is not possible.
int make_temporary_file(const std::string &target, std::string &name);

// Gives a temporary file its name for good; false with errno when that is not possible.
bool keep_temporary_file(const std::string &name, const std::string &target);

// Removes all temporary files of this process; may be called from a signal's handler.
void remove_all_temporary_files();

// Removes a temporary file.
void remove_temporary_file(const std::string &name);

}  // namespace klib::programs
