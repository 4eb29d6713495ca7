// Work on several cores whose result does not depend on their number.
#pragma once

#include <cstddef>
#include <functional>

namespace klib::programs::align {

// Calls work(part, worker) once for each part from 0, on up to `jobs` threads with the numbers
// 0 to jobs - 1. Any thread may take any part, so parts must not share what they write.
// Throws what the work threw; when threads cannot be started, fewer do the work.
void in_parallel(int jobs, size_t parts, const std::function<void(size_t part, int worker)> &work);

}  // namespace klib::programs::align
