# How every target of the project is compiled, and what a library of the
# project promises about its binary.
include_guard()
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)

if(NOT CMAKE_CXX_STANDARD OR CMAKE_CXX_STANDARD EQUAL 98 OR
    CMAKE_CXX_STANDARD LESS 20)
  set(CMAKE_CXX_STANDARD 20)
endif()
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# What is built must not depend on where it is built: debug information names
# the sources from here, and libraries are found from where the program is.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND
    NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

option(KORVAN_WARNINGS_AS_ERRORS "Fail the build on a warning" OFF)
set(KORVAN_WARNINGS
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Wformat=2)
set(KORVAN_SANITIZE "" CACHE STRING
  "Sanitizers for every target, as -fsanitize= takes them")

# What holds for programs and libraries alike.
add_library(korvan_build_flags INTERFACE)
target_compile_options(korvan_build_flags INTERFACE ${KORVAN_WARNINGS}
  $<$<BOOL:${KORVAN_WARNINGS_AS_ERRORS}>:-Werror>
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=."
  "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")
if(KORVAN_SANITIZE)
  target_compile_options(korvan_build_flags INTERFACE
    -fsanitize=${KORVAN_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  target_compile_definitions(korvan_build_flags INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(korvan_build_flags INTERFACE
    -fsanitize=${KORVAN_SANITIZE})
endif()

# The same for tests and tools. To compile them takes most of a build's time:
# several times as much when they are optimised, and half as much again with
# more debug information than stack traces need. What is shipped is built as
# Release, and CMAKE_BUILD_TYPE=Debug has all debug information.
add_library(korvan_quick_build_flags INTERFACE)
target_compile_options(korvan_quick_build_flags INTERFACE
  $<$<CONFIG:RelWithDebInfo>:-O0;-g1>)
target_link_libraries(korvan_quick_build_flags INTERFACE korvan_build_flags)

# The first two keep a compiler from dropping a check because what it looks for
# is undefined. Zeroed local variables (-ftrivial-auto-var-init=zero) and the
# standard library's assertions are left out for their cost, which docs/testing.md
# has.
#
# Some are of one processor. On 64-bit POWER, GNU's linker lets the loader change
# what `__tls_get_addr` is given, and only its own stub, which -fno-plt does
# without, knows of that: the thread's last error would be anywhere.
set(hardening -fno-delete-null-pointer-checks -fno-strict-overflow
  -fstack-protector-strong -fstack-clash-protection
  -fcf-protection=full -mbranch-protection=standard
  -fno-gnu-unique -fno-semantic-interposition)
check_cxx_source_compiles(
  "#ifndef __powerpc64__\n#error another processor\n#endif\nint main() {}"
  KORVAN_IS_FOR_POWER)
if(NOT KORVAN_IS_FOR_POWER)
  list(APPEND hardening -fno-plt)
endif()
foreach(flag ${hardening})
  string(MAKE_C_IDENTIFIER "KORVAN_HAS${flag}" has_flag)
  check_cxx_compiler_flag("-Werror ${flag}" ${has_flag})
  if(${has_flag})
    list(APPEND korvan_hardening ${flag})
  endif()
endforeach()
# GCC 11 and older take no 3 with the C library's headers.
set(CMAKE_REQUIRED_FLAGS "-Werror -O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("#include <cstring>\nint main() {}"
  KORVAN_HAS_FORTIFY_SOURCE_3)
unset(CMAKE_REQUIRED_FLAGS)
set(korvan_fortify_source 2)
if(KORVAN_HAS_FORTIFY_SOURCE_3)
  set(korvan_fortify_source 3)
endif()
option(KORVAN_PACKED_RELOCATIONS
  "Pack relative relocations: smaller libraries, which need glibc 2.36" ON)
if(KORVAN_PACKED_RELOCATIONS)
  check_linker_flag(CXX "LINKER:--fatal-warnings,-z,pack-relative-relocs"
    KORVAN_HAS_PACKED_RELOCATIONS)
endif()

# korvan_add_library(<target>) adds a library of the project, shared unless
# BUILD_SHARED_LIBS is set and off, with its name, version, headers, hardening
# and visibility. What a shared one exports stands in packaging/<target>.map.
function(korvan_add_library target)
  if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
    add_library(${target} STATIC)
  else()
    add_library(${target} SHARED)
    set(map "${PROJECT_SOURCE_DIR}/packaging/${target}.map")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}")
    target_link_options(${target} PRIVATE
      LINKER:--version-script=${map}
      LINKER:-z,relro,-z,now,-z,noexecstack,--as-needed,-O1)
    if(KORVAN_PACKED_RELOCATIONS AND KORVAN_HAS_PACKED_RELOCATIONS)
      target_link_options(${target} PRIVATE LINKER:-z,pack-relative-relocs)
    endif()
    # A sanitizer's own symbols are found only when a program is linked.
    if(KORVAN_PLATFORM STREQUAL bundled AND NOT KORVAN_SANITIZE)
      target_link_options(${target} PRIVATE LINKER:-z,defs)
    endif()
  endif()
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_features(${target} PUBLIC cxx_std_11)
  target_include_directories(${target}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE
    $<BUILD_INTERFACE:korvan_build_flags>)
  target_compile_options(${target} PRIVATE ${korvan_hardening})
  # The fortified calls need an optimising compiler, and sanitizers bring
  # checks of their own.
  if(NOT KORVAN_SANITIZE)
    target_compile_options(${target} PRIVATE
      "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=${korvan_fortify_source}>")
  endif()
endfunction()
