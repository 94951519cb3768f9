# Refuses to configure where the library can't work. <korvan/export.h> refuses to
# be compiled there; this says so before anything is built.

if(CMAKE_SIZEOF_VOID_P AND NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
  math(EXPR bits "8 * ${CMAKE_SIZEOF_VOID_P}")
  message(FATAL_ERROR "korvan needs 64-bit pointers: "
    "${CMAKE_CXX_COMPILER} compiles for a platform with ${bits}-bit ones.")
endif()
if(CMAKE_CXX_BYTE_ORDER STREQUAL "BIG_ENDIAN")
  message(FATAL_ERROR "korvan needs little-endian numbers: "
    "${CMAKE_CXX_COMPILER} compiles for a big-endian platform.")
endif()
