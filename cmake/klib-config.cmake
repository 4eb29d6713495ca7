# find_package(klib) defines the target klib::klib.
include("${CMAKE_CURRENT_LIST_DIR}/klib-targets.cmake")
