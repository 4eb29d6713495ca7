// Files that must not outlive the process: a signal or lack of memory that ends it removes them.
#pragma once

#include <string>

namespace klib::programs {

// Lets SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGPIPE remove the temporary files before they end the
// process as they would have; a signal that the process ignores stays ignored.
void remove_temporary_files_on_signals();

// Ends the process by a signal, as its default action does, without temporary files and helpers.
// May be called from the signal's handler, after whose return the process ends.
void end_by_signal(int signal);

// Makes a file beside `target` under a temporary name, which `name` gets, and returns its
// descriptor; -1 with errno when that is not possible.
int make_temporary_file(const std::string &target, std::string &name);

// Renames a temporary file to its final name; false with errno when that is not possible.
bool keep_temporary_file(const std::string &name, const std::string &target);

// Removes all temporary files of this process, and its folder, after the end of its helpers; may be
// called from a signal's handler and without memory.
void remove_all_temporary_files();

// Removes a temporary file.
void remove_temporary_file(const std::string &name);

// Makes the one temporary folder that a process can have, in `place`; `name` gets its name. What it
// holds, which are files alone, counts as temporary. False with errno when that is not possible.
bool make_temporary_folder(const std::string &place, std::string &name);

// Removes the temporary folder and its files, if this process has made it. False with errno when
// that is not possible.
bool remove_temporary_folder();

}  // namespace klib::programs
