#!/bin/sh
# static_libraries.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR
# Builds static libraries, and programs with them: by the CMake package, and by
# pkg-config with the compiler driver of C, which adds no C++ library itself.
set -eu
if [ "$1" = --self-test ]; then
  shift
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # shellcheck source=tests/build/quick_compiler.sh
  . "$(dirname "$0")/quick_compiler.sh"
  quick_compiler "$2" "$3"
  # A cmake that ignores the wish for static libraries.
  # shellcheck disable=SC2016  # for the written script
  fake cmake 'for arg; do shift; case $arg in
      -DBUILD_SHARED_LIBS=OFF) ;; *) set -- "$@" "$arg" ;; esac; done
    exec '"'$1'"' "$@"'
  must_fail "shared libraries" 'no libkorvan\.a' \
    "$0" "$work/cmake" "$work/compiler" "$3" "$work/work"
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4
rm -rf "$work"
"$cmake" -S "$source" -B "$work/build" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Release \
  -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_LIBDIR=lib \
  -DKORVAN_BUILD_TESTS=OFF -DKORVAN_BUILD_EXAMPLES=OFF \
  -DKORVAN_BUILD_TOOLS=OFF > /dev/null
"$cmake" --build "$work/build" > /dev/null
"$cmake" --install "$work/build" --prefix "$work/installed" > /dev/null
lib=$work/installed/lib
for library in libkorvan libkorvan_platform; do
  [ -f "$lib/$library.a" ] || { echo "no $library.a"; exit 1; }
done
[ -z "$(find "$lib" -name '*.so*')" ] || { echo "a shared library"; exit 1; }

unset PKG_CONFIG_PATH
export PKG_CONFIG_LIBDIR="$lib/pkgconfig"  # and no other place
flags=$(pkg-config --static --cflags --libs korvan)
echo "pkg-config: $flags"
"$compiler" -std=c++11 -c -I"$work/installed/include" \
  "$source/tests/package/user.cc" -o "$work/user.o"
# shellcheck disable=SC2086  # the flags are words
cc "$work/user.o" $flags -o "$work/by_pkg_config"
"$work/by_pkg_config"

"$cmake" -S "$source/tests/package/cmake_user" -B "$work/cmake_user" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/installed" \
  > /dev/null
"$cmake" --build "$work/cmake_user" > /dev/null
"$work/cmake_user/user"
