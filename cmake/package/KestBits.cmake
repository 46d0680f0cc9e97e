# Kest_BITS: the width of the library that a project wants.

if(DEFINED KEST_BITS)
  set(Kest_BITS ${KEST_BITS})
else()
  math(EXPR Kest_BITS "8 * ${CMAKE_SIZEOF_VOID_P}")
endif()
