// The byte stacks' part that only the library and its tests use.
#pragma once

namespace klib::byte_stacks {

// Forgets all stacks; their buffers belong to whoever made them.
void reset();

}  // namespace klib::byte_stacks
