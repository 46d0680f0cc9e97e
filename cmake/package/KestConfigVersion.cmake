# Fits when the width that is wanted is installed here, in a version that is wanted.

include("${CMAKE_CURRENT_LIST_DIR}/KestBits.cmake")
if(EXISTS "${CMAKE_CURRENT_LIST_DIR}/KestVersion${Kest_BITS}.cmake")
  include("${CMAKE_CURRENT_LIST_DIR}/KestVersion${Kest_BITS}.cmake")
else()
  # find_package shows the version of what it passes over.
  set(PACKAGE_VERSION "not here for ${Kest_BITS} bits")
  set(PACKAGE_VERSION_UNSUITABLE TRUE)
endif()
