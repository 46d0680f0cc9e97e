# Headers, both libraries, and what pkg-config and find_package need to link against them. Both widths may
# be installed in one prefix: the libraries differ in their folder, all else is the same file or has the
# width in its name.

include(CMakePackageConfigHelpers)
set(package lib/cmake/Kest)  # CMake looks there for either width, also where 64-bit libraries are in lib64

install(TARGETS kest kest_static EXPORT KestTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/kest DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT KestTargets NAMESPACE Kest:: FILE KestTargets${KEST_BITS}.cmake DESTINATION ${package})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/KestVersion${KEST_BITS}.cmake
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KestVersion${KEST_BITS}.cmake
  cmake/package/KestConfig.cmake cmake/package/KestConfigVersion.cmake cmake/package/KestBits.cmake
  DESTINATION ${package})

set(width_flag "")
if(KEST_BITS EQUAL 32)
  set(width_flag "-m32 ")
endif()
set(private_libraries -lstdc++ -pthread)
foreach(library ${CMAKE_DL_LIBS})
  list(APPEND private_libraries -l${library})
endforeach()
list(JOIN private_libraries " " private_libraries)
# Relative to the file, so that an installed tree can be moved.
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE libdir)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${libdir}/pkgconfig OUTPUT_VARIABLE prefix)
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/kest.pc @ONLY CONTENT [[
prefix=${pcfiledir}/@prefix@
includedir=${prefix}/@CMAKE_INSTALL_INCLUDEDIR@
libdir=${prefix}/@CMAKE_INSTALL_LIBDIR@

Name: Kest
Description: Portable runtime library: UTF-16 strings, containers, files, threads, messages
Version: @PROJECT_VERSION@
Cflags: @width_flag@-I${includedir}
Libs: @width_flag@-L${libdir} -lKest
Libs.private: @private_libraries@
]])
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kest.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# An archive to unpack anywhere: cpack --config build/CPackConfig.cmake.
if(PROJECT_IS_TOP_LEVEL)
  set(CPACK_GENERATOR TGZ)
  set(CPACK_PACKAGE_FILE_NAME kest-${PROJECT_VERSION}-linux-x86-${KEST_BITS})
  set(CPACK_PACKAGE_VENDOR "Kest developers")
  set(CPACK_STRIP_FILES ON)
  set(CPACK_VERBATIM_VARIABLES ON)
  include(CPack)
endif()
