#!/bin/sh
# language_version.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR
# The library is compiled as C++20, or as the newer version that is asked for;
# what is asked of an outer project's own sources may be older.
set -eu
if [ "$1" = --self-test ]; then
  cmake=$2 compiler=$3 source=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # shellcheck source=tests/build/changed_flags.sh
  . "$(dirname "$0")/changed_flags.sh"
  breaks "a version that is not looked at" "^23: .*=c++20" \
    's,^if(NOT CMAKE_CXX_STANDARD.*,if(TRUE OR,'
  breaks "an older version that is taken" "^17: .*=c++17" 's/LESS 20/LESS 10/'
  breaks "C++98" "^98: .*=c++11" 's/ OR CMAKE_CXX_STANDARD EQUAL 98//'
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4
rm -rf "$work"
mkdir -p "$work"

# compiled_as ASKED STANDARD
compiled_as() {
  "$cmake" -S "$source" -B "$work/build" -G Ninja \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_STANDARD="$1" \
    -DKORVAN_BUILD_TESTS=OFF -DKORVAN_BUILD_EXAMPLES=OFF \
    -DKORVAN_BUILD_TOOLS=OFF > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
  standards=$(grep -oE ' -std=[^ ]*' "$work/build/compile_commands.json" |
    sort -u)
  [ "$standards" = " -std=$2" ] ||
    { echo "$1: the library is compiled with$standards"; exit 1; }
}
compiled_as "" c++20
compiled_as 98 c++20
compiled_as 17 c++20
compiled_as 20 c++20
compiled_as 23 c++23
