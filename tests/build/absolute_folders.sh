#!/bin/sh
# absolute_folders.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR
# Installs the library to folders that are given as absolute paths, as some
# distributions do, and builds a program by what pkg-config says of them.
set -eu
if [ "$1" = --self-test ]; then
  shift
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # shellcheck source=tests/build/quick_compiler.sh
  . "$(dirname "$0")/quick_compiler.sh"
  quick_compiler "$2" "$3"
  # A pkg-config that joins the prefix and an absolute path.
  fake tools/pkg-config \
    "echo '-I/prefix$work/include -L/prefix$work/lib -lkorvan'"
  must_fail "wrong folders from pkg-config" 'korvan.h: No such file' \
    env PATH="$work/tools:$PATH" "$0" "$1" "$work/compiler" "$3" "$work/work"
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4
rm -rf "$work"
# Outside the source tree: CMake refuses to install headers into that.
folders=$(mktemp -d)
trap 'rm -rf "$folders"' EXIT
"$cmake" -S "$source" -B "$work/build" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_INSTALL_PREFIX="$folders/prefix" \
  -DCMAKE_INSTALL_LIBDIR="$folders/lib" \
  -DCMAKE_INSTALL_INCLUDEDIR="$folders/include" \
  -DKORVAN_BUILD_TESTS=OFF -DKORVAN_BUILD_EXAMPLES=OFF \
  -DKORVAN_BUILD_TOOLS=OFF > /dev/null
"$cmake" --build "$work/build" > /dev/null
"$cmake" --install "$work/build" > /dev/null

unset PKG_CONFIG_PATH
export PKG_CONFIG_LIBDIR="$folders/lib/pkgconfig"  # and no other place
flags=$(pkg-config --cflags --libs korvan)
echo "pkg-config: $flags"
# shellcheck disable=SC2086  # the flags are words
"$compiler" -std=c++11 "$source/tests/package/user.cc" -o "$work/by_pkg_config" \
  $flags -Wl,-rpath,"$folders/lib"
"$work/by_pkg_config"

"$cmake" -S "$source/tests/package/cmake_user" -B "$work/cmake_user" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" \
  -Dkorvan_DIR="$folders/lib/cmake/korvan" > /dev/null
"$cmake" --build "$work/cmake_user" > /dev/null
"$work/cmake_user/user"
