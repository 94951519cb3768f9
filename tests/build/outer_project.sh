#!/bin/sh
# outer_project.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR [FETCHES]
# Builds a project that has korvan within it, and fails unless korvan leaves
# that project's settings, targets and installation alone. FETCHES is how the
# project gets it: ON by FetchContent, OFF as a folder; both if left out.
set -eu
script=$0
if [ "$1" = --self-test ]; then
  shift
  cmake=$1 compiler=$2 source=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # breaks WHAT LINE MESSAGE: korvan's own CMakeLists.txt ends with LINE, which
  # the test complains of by MESSAGE.
  breaks() {
    rm -rf "$work/source"
    mkdir -p "$work/source"
    (cd "$source" && cp -r CMakeLists.txt bench cmake docs examples include \
      ini oid packaging platform pubkey resources tests tools \
      "$work/source")
    echo "$2" >> "$work/source/CMakeLists.txt"
    must_fail "$1" "$3" "$script" "$cmake" "$compiler" "$work/source" \
      "$work/work" OFF
  }
  own='settings are not its own'
  breaks "a forced build type" \
    'set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)' "$own"
  breaks "flags of its own" \
    'set(CMAKE_CXX_FLAGS_RELEASE "-O2" CACHE STRING "" FORCE)' "$own"
  breaks "BUILD_TESTING" 'option(BUILD_TESTING "")' "$own"
  breaks "a setting that is made when configured again" \
    'if(DEFINED CACHE{seen})
      set(again x CACHE STRING "")
    endif()
    set(seen x CACHE STRING "")' \
    'configured a second time'
  breaks "a target that the outer project has" 'add_custom_target(platform)' \
    'does not configure'
  breaks "the dashboard" 'add_custom_target(Nightly)' 'brings the targets'
  breaks "a program" 'add_custom_target(oidinfo)' 'brings the targets'
  breaks "a target that nobody foresaw" 'add_custom_target(more)' \
    'brings the targets'
  breaks "a library" 'add_library(korvan_more STATIC platform/last_error.cc)' \
    'brings the targets'
  breaks "tests" 'add_custom_target(threaded_tests)' 'brings the targets'
  breaks "an installed file" 'install(FILES README.md DESTINATION doc)' \
    'installed with the outer project'
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4 ways=${5:-ON OFF}
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"

fail() {
  echo "$*"
  exit 1
}

configure() {  # configure CMAKE_ARGUMENT...
  "$cmake" "$@" > "$work/configure.log" 2>&1 ||
    { cat "$work/configure.log"; fail "the outer project does not configure"; }
}

# A project of this compiler's without korvan tells what is the outer one's.
mkdir "$work/alone"
printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' \
  'project(alone LANGUAGES CXX)' > "$work/alone/CMakeLists.txt"
"$cmake" -S "$work/alone" -B "$work/alone/build" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" > /dev/null
settings() {  # settings BUILD_DIR
  grep -E '^(CMAKE_BUILD_TYPE|CMAKE_CXX_FLAGS.*|BUILD_TESTING|BUILD_SHARED_LIBS):' \
    "$1/CMakeCache.txt" | sort
}
settings "$work/alone/build" > "$work/alone.settings"
[ "$(wc -l < "$work/alone.settings")" -ge 6 ] || fail "no settings are seen"
targets() {  # targets BUILD_DIR: their names, without the folders of CMake's own
  "$cmake" --build "$1" --target help > "$work/help"
  sed -n 's/^\([^ ]*\): .*/\1/p' "$work/help" | sed 's,.*/,,' | sort -u
}
targets "$work/alone/build" > "$work/intended"
grep -q -x all "$work/intended" || fail "no targets are seen"
# The outer project's own, the two libraries by all their names, and CMake's
# for an installation, of which there is more below.
cat >> "$work/intended" << 'END'
outer
platform
korvan
libkorvan.so
libkorvan.so.1
korvan_platform
libkorvan_platform.so
libkorvan_platform.so.1
install
local
strip
list_install_components
END

for fetches in $ways; do
  build=$work/build_$fetches
  configure -S "$here/outer_project" -B "$build" -G Ninja \
    -DCMAKE_CXX_COMPILER="$compiler" -DKORVAN_SOURCE_DIR="$source" \
    -DOUTER_FETCHES="$fetches"
  cp "$build/CMakeCache.txt" "$work/first.cache"
  configure "$build"
  diff "$work/first.cache" "$build/CMakeCache.txt" ||
    fail "configured a second time, the cache is another"
  settings "$build" | diff "$work/alone.settings" - ||
    fail "the outer project's settings are not its own"
  targets "$build" > "$work/targets"
  grep -q -x korvan "$work/targets" || fail "no targets are seen"
  if grep -v -x -F -f "$work/intended" "$work/targets"; then
    fail "korvan brings the targets above along"
  fi
done

build=$work/build_OFF
[ -f "$build/korvan/cmake_install.cmake" ] || fail "no install script is seen"
if grep -q 'elseif\|file(INSTALL' "$build/korvan/cmake_install.cmake"; then
  fail "installed with the outer project: see $build/korvan/cmake_install.cmake"
fi
"$cmake" --build "$build"
"$build/outer"
"$cmake" --install "$build" --prefix "$work/installed" > /dev/null
[ ! -e "$work/installed" ] ||
  fail "installed with the outer project: $(find "$work/installed" -type f)"
