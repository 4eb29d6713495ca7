// How every module gets back to the state in which it is loaded: for tests and fuzz targets, which
// call all of them (tests/reset.cpp). What a module owns is released.
#pragma once

namespace klib {

// clang-format off
namespace abort_hook      { void reset(); }  // no hook
namespace anchors         { void reset(); }
namespace byte_stacks     { void reset(); }  // the buffers belong to whoever made them
namespace case_mapping    { void reset(); }
namespace character_types { void reset(); }
namespace counters        { void reset(); }
namespace double_stack    { void reset(); }
namespace fonts           { void reset(); }
namespace logging         { void reset(); }
namespace parameters      { void reset(); }
namespace parser          { void reset(); }
namespace program         { void reset(); }
namespace sentence_output { void reset(); }
namespace string_arrays   { void reset(); }  // not what the elements point to
namespace word_lists      { void reset(); }
// clang-format on

}  // namespace klib
