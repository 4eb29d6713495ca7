// Putting the library back to the state in which it is loaded.
#pragma once

namespace klib::test {

// Resets every module and releases what it owns.
void release_modules();

}  // namespace klib::test
