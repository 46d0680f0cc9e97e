# tools/gdb where gdb loads it by itself: beside the library in the build tree, and installed in the folder of
# gdb's own that repeats the library's path.

set(kest_printers libKest.so.${PROJECT_VERSION}-gdb.py)
configure_file(tools/gdb/libKest-gdb.py ${CMAKE_CURRENT_BINARY_DIR}/${kest_printers} COPYONLY)
if(NOT KEST_INSTALL)
  return()
endif()

# The prefix is known when it is installed. Of an archive's it is not: there the file lies beside the library.
install(CODE "set(printers \"${CMAKE_CURRENT_BINARY_DIR}/${kest_printers}\")
set(library_folder \"${CMAKE_INSTALL_LIBDIR}\")
set(data_folder \"${CMAKE_INSTALL_DATADIR}\")")
install(CODE [[
if(CMAKE_INSTALL_PREFIX MATCHES "/_CPack_Packages/")
  set(beside "${CMAKE_INSTALL_PREFIX}/${library_folder}")
else()
  set(beside "${CMAKE_INSTALL_PREFIX}/${data_folder}/gdb/auto-load${CMAKE_INSTALL_PREFIX}/${library_folder}")
endif()
file(INSTALL "${printers}" DESTINATION "${beside}")]])
