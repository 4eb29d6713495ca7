// What is the same in every report.
#pragma once

namespace klib::programs {

extern const char *const style, *const script;

// The SHA-256 of the script in base64; a test compares it.
extern const char *const script_hash;

}  // namespace klib::programs
