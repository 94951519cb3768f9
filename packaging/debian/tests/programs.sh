#!/bin/sh
# programs.sh
# Builds a program against the installed package, by pkg-config and by CMake, and
# runs it. For autopkgtest, which starts it in the source folder.
set -eu
work=${AUTOPKGTEST_TMP:?}
expected='1.2.643.2.2.19 is GOST R 34.10-2001'

says() {  # says PROGRAM
  said=$("$1")
  [ "$said" = "$expected" ] || { echo "$1 says '$said'"; exit 1; }
}
flags=$(pkg-config --cflags --libs 'korvan >= 1.0')
# shellcheck disable=SC2086  # the flags are words
g++ -std=c++11 tests/package/user.cc -o "$work/by_pkg_config" $flags
says "$work/by_pkg_config"

cmake -S tests/package/cmake_user -B "$work/by_cmake" -G Ninja
cmake --build "$work/by_cmake"
says "$work/by_cmake/user"
echo "both programs say '$expected'"
