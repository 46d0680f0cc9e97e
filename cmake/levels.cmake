# For the tests and benchmarks: libKest once more for each level of the processor below the best, each in a folder of
# its own, made of the same objects but for the one that says what the processor has.

set(kest_levels plain sse2 ssse3 avx2)
set(number 0)
foreach(level ${kest_levels})
  add_library(kest_${level}_level OBJECT ${PROJECT_SOURCE_DIR}/src/cpu/level.cpp)
  target_include_directories(kest_${level}_level PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(kest_${level}_level PRIVATE kest_warnings)
  target_compile_options(kest_${level}_level PRIVATE -fvisibility=hidden)
  target_compile_definitions(kest_${level}_level PRIVATE KEST_CPU_LEVEL_LIMIT=${number})
  add_library(kest_${level} SHARED
    $<FILTER:$<TARGET_OBJECTS:kest_objects>,EXCLUDE,/cpu/level\\.cpp> $<TARGET_OBJECTS:kest_${level}_level>)
  target_link_options(kest_${level} PRIVATE LINKER:--version-script=${kest_version_script})
  set_target_properties(kest_${level} PROPERTIES OUTPUT_NAME Kest SOVERSION ${PROJECT_VERSION_MAJOR}
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/levels/${level})
  math(EXPR number "${number} + 1")
endforeach()
add_custom_target(levels DEPENDS kest_plain kest_sse2 kest_ssse3 kest_avx2)
