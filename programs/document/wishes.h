// What users wish of extraction on a command line.
#pragma once

namespace klib::programs {

// Ends the job (fail()) when the value of --offer or --placeable has no meaning; null: not given.
void check_wishes(const char *program, const char *offer, const char *placeable);

}  // namespace klib::programs
