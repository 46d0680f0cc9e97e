# libKest: one set of objects, a shared and a static library made of them.

file(GLOB_RECURSE kest_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/src/*.cpp)
if(NOT KEST_EXPORT_NEW)
  list(FILTER kest_sources EXCLUDE REGEX "/operator_new\\.cpp$")
endif()

add_library(kest_objects OBJECT ${kest_sources})
target_include_directories(kest_objects
  PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/include ${CMAKE_CURRENT_SOURCE_DIR}/src)
target_link_libraries(kest_objects PRIVATE kest_warnings)
set_target_properties(kest_objects PROPERTIES
  CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON UNITY_BUILD OFF)
# Failures are results, so nothing throws; unwind tables stay, because a cancelled thread unwinds
# through the library. -fcheck-new and -fno-delete-null-pointer-checks: our operator new may
# return null, and null arguments are legal in most calls.
foreach(flag -fno-exceptions -fasynchronous-unwind-tables -fcheck-new
    -fno-delete-null-pointer-checks -fstack-protector-strong)
  string(MAKE_C_IDENTIFIER KEST_CXX_HAS${flag} has)
  include(CheckCXXCompilerFlag)
  check_cxx_compiler_flag(${flag} ${has})
  if(${has})
    target_compile_options(kest_objects PRIVATE ${flag})
  endif()
endforeach()

# What does little but call the system. The dynamic linker resolves everything at the start, so these
# can call, or jump to, a function directly instead of through a table of jumps.
set(thin_sources ${kest_sources})
list(FILTER thin_sources INCLUDE REGEX "/src/(file|platform/posix|thread)/")
set_source_files_properties(${thin_sources} PROPERTIES COMPILE_OPTIONS -fno-plt)

# The containers are small functions that call one another: exported ones too may be inlined where
# their own file calls them.
set(container_sources ${kest_sources})
list(FILTER container_sources INCLUDE REGEX "/src/collections/")
set_source_files_properties(${container_sources} PROPERTIES COMPILE_OPTIONS -fno-semantic-interposition)

# glibc's checked variants; they take an optimised build, and sanitizers check more.
if(NOT KEST_SANITIZE)
  target_compile_options(kest_objects PRIVATE
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
endif()

# The same bytes whatever the folders are called.
target_compile_options(kest_objects PRIVATE
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build)

# The classes with a vtable are no standard-layout types, but this ABI gives their fields fixed
# offsets too, and the layout checks rely on it.
target_compile_options(kest_objects PRIVATE -Wno-invalid-offsetof)

# The exported symbols, one a line; every other symbol is local to the library.
set(kest_symbols ${CMAKE_CURRENT_SOURCE_DIR}/abi/libKest.m${KEST_BITS}.symbols)
set(kest_version_script ${CMAKE_CURRENT_BINARY_DIR}/libKest.map)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${kest_symbols})
file(STRINGS ${kest_symbols} names REGEX "^[^#]")
list(JOIN names "[semicolon]\n    " names)
string(REPLACE "[semicolon]" ";" names "${names};")
file(CONFIGURE OUTPUT ${kest_version_script} @ONLY CONTENT
  "KEST_1 {\n  global:\n    @names@\n  local:\n    *;\n};\n")

add_library(kest SHARED $<TARGET_OBJECTS:kest_objects>)
target_link_options(kest PRIVATE
  LINKER:--version-script=${kest_version_script} LINKER:-z,relro,-z,now,-z,noexecstack)
if(NOT KEST_SANITIZE)
  target_link_options(kest PRIVATE LINKER:--no-undefined)
endif()
set_target_properties(kest PROPERTIES
  OUTPUT_NAME Kest EXPORT_NAME Kest VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS "${kest_version_script};${kest_symbols}")
add_library(Kest::Kest ALIAS kest)

add_library(kest_static STATIC $<TARGET_OBJECTS:kest_objects>)
set_target_properties(kest_static PROPERTIES OUTPUT_NAME Kest EXPORT_NAME Kest_static)
add_library(Kest::Kest_static ALIAS kest_static)
# What the shared library brings along itself; a project in C alone links no C++ runtime.
find_package(Threads REQUIRED)
target_link_libraries(kest_static INTERFACE
  $<$<LINK_LANGUAGE:C>:stdc++> Threads::Threads ${CMAKE_DL_LIBS})

foreach(library kest kest_static)
  target_include_directories(${library} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${library} PUBLIC cxx_std_17)
  if(KEST_BITS EQUAL 32)
    # Whoever links the 32-bit library builds for it.
    target_compile_options(${library} INTERFACE -m32)
    target_link_options(${library} INTERFACE -m32)
  endif()
endforeach()
