#!/bin/sh
# refused_platforms.sh [--self-test] CMAKE SOURCE_DIR CLANG
# Configuring refuses 32-bit pointers and big-endian numbers, by a sentence that
# is the first error. Clang compiles for any platform, and needs nothing else for
# what CMake asks of a compiler as long as nothing is linked.
set -eu
if [ "$1" = --self-test ]; then
  cmake=$2 source=$3 clang=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  mkdir "$work/source"
  cp -r "$source/CMakeLists.txt" "$source/cmake" "$source/include" "$work/source"
  # breaks WHAT MESSAGE SED
  breaks() {
    sed "$3" "$source/cmake/RefusedPlatforms.cmake" \
      > "$work/source/cmake/RefusedPlatforms.cmake"
    must_fail "$1" "$2" "$0" "$cmake" "$work/source" "$clang"
  }
  breaks "32 bits" "64-bit pointers' of i386" 's/EQUAL 8/EQUAL 4/'
  breaks "big-endian" "little-endian numbers' of s390x" 's/BIG_ENDIAN/BIG/'
  breaks "one that is never refused" "64-bit pointers' of i386" \
    's/FATAL_ERROR/STATUS/'
  must_fail "no compiler" "'korvan needs 64-bit pointers'" "$0" "$cmake" \
    "$source" "$work/no_clang"
  end_self_test
fi
cmake=$1 source=$2 clang=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# refuses SENTENCE TARGET: CMake breaks lines where it likes.
refuses() {
  rm -rf "$work/build"
  if "$cmake" -S "$source" -B "$work/build" -DCMAKE_CXX_COMPILER="$clang" \
    -DCMAKE_CXX_COMPILER_TARGET="$2" \
    -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY > "$work/log" 2>&1; then
    echo "$2 is configured"
  elif sed -n '/^CMake Error/,$p' "$work/log" | sed -n '2p;3p' | tr -s '\n ' ' ' |
    grep -q -e "^ $1: "; then
    return
  fi
  cat "$work/log"
  echo "the first error should be '$1' of $2"
  exit 1
}
refuses "korvan needs 64-bit pointers" i386-linux-gnu
refuses "korvan needs 64-bit pointers" x86_64-linux-gnux32
refuses "korvan needs little-endian numbers" s390x-linux-gnu
refuses "korvan needs little-endian numbers" powerpc64-linux-gnu
