# find_package(Kest): the targets Kest::Kest (shared) and Kest::Kest_static. Both widths may be installed;
# KEST_BITS, 32 or 64, chooses one, and without it the size of the project's pointers does.

include("${CMAKE_CURRENT_LIST_DIR}/KestBits.cmake")
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include("${CMAKE_CURRENT_LIST_DIR}/KestTargets${Kest_BITS}.cmake")
