# Headers, both libraries, and what pkg-config and find_package need to link against them.

include(CMakePackageConfigHelpers)

install(TARGETS kest kest_static EXPORT KestTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/kest DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Kest)
install(EXPORT KestTargets NAMESPACE Kest:: FILE KestConfig.cmake DESTINATION ${package})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/KestConfigVersion.cmake
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KestConfigVersion.cmake DESTINATION ${package})

set(width_flag "")
if(KEST_BITS EQUAL 32)
  set(width_flag "-m32 ")
endif()
# Relative to the file, so that an installed tree can be moved.
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/kest.pc @ONLY CONTENT [[
prefix=${pcfiledir}/../..
includedir=${prefix}/@CMAKE_INSTALL_INCLUDEDIR@
libdir=${prefix}/@CMAKE_INSTALL_LIBDIR@

Name: Kest
Description: Portable runtime library: UTF-16 strings, containers, files, threads, messages
Version: @PROJECT_VERSION@
Cflags: @width_flag@-I${includedir}
Libs: @width_flag@-L${libdir} -lKest
]])
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kest.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
