// The byte stacks' part that only the library and its tests use.
#pragma once

#include <cstdint>
#include <string_view>

namespace klib::byte_stacks {

// Pushes a run of bytes, which may lie in the stack itself. The recorded size grows by as many
// steps as single pushes would take, with one reallocation. False, and nothing pushed, when the
// memory is exhausted (reported) or there is no such stack.
bool append(int32_t n, std::string_view bytes);

// Forgets all stacks; their buffers belong to whoever made them.
void reset();

}  // namespace klib::byte_stacks
