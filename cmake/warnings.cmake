# The warnings that the project's own code is clean of, with g++ and clang++.

add_library(kest_warnings INTERFACE)
target_compile_options(kest_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow)
if(KEST_WERROR)
  target_compile_options(kest_warnings INTERFACE -Werror)
endif()
