# The width of the target and the sanitizers: they hold for everything, GoogleTest included.

include(CheckCXXSourceCompiles)

if(KEST_BITS EQUAL 32)
  # A program that includes a C++ header and links is what a missing 32-bit runtime breaks.
  set(CMAKE_REQUIRED_FLAGS -m32)
  set(CMAKE_REQUIRED_QUIET ON)
  check_cxx_source_compiles("#include <new>\n#include <stdio.h>
      static_assert(sizeof(void*) == 4);
      int main() { return ::operator new(1) == nullptr; }" KEST_HAS_32BIT_RUNTIME)
  unset(CMAKE_REQUIRED_FLAGS)
  unset(CMAKE_REQUIRED_QUIET)
  if(NOT KEST_HAS_32BIT_RUNTIME)
    unset(KEST_HAS_32BIT_RUNTIME CACHE)
    message(FATAL_ERROR "Kest is built for 32-bit x86, and ${CMAKE_CXX_COMPILER} has no 32-bit "
      "runtime here. Install it (Debian: apt-get install g++-multilib), or ask for the native "
      "64-bit build with -DKEST_BITS=64.")
  endif()
  add_compile_options(-m32)
  add_link_options(-m32)
  set(CMAKE_SIZEOF_VOID_P 4)
  # Not lib32: CMake would not find it for a project built with -m32. Another choice is left as it is.
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT DEFINED CMAKE_INSTALL_LIBDIR)
    set(CMAKE_INSTALL_LIBDIR lib/i386-linux-gnu)
  endif()
elseif(NOT KEST_BITS EQUAL 64)
  message(FATAL_ERROR "KEST_BITS is ${KEST_BITS}; it must be 32 or 64.")
endif()

if(KEST_SANITIZE)
  add_compile_options(-fsanitize=${KEST_SANITIZE} -fno-omit-frame-pointer -O1)
  add_link_options(-fsanitize=${KEST_SANITIZE})
  if(KEST_SANITIZE MATCHES fuzzer)
    add_compile_options(-O2)
  endif()
  if(KEST_SANITIZE MATCHES undefined)
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()
