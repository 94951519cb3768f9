#!/bin/sh
# build_library.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR FLAGS
#   [OPTION...]
# Builds the library alone with FLAGS and with options of CMake, every warning an
# error, and installs it to WORK_DIR/installed. What WORK_DIR has of an earlier
# build, which passed, is not built again.
set -eu

if [ "$1" = --self-test ]; then
  script=$0 cmake=$2 compiler=$3 source=$4 flags=$6
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # shellcheck source=tests/build/quick_compiler.sh
  . "$(dirname "$0")/quick_compiler.sh"
  # built SCRIPT [FLAG...]: by a compiler that does SCRIPT.
  # shellcheck disable=SC2317  # called by must_pass and must_fail
  built() {
    quick_compiler "$compiler" "$source" "$1"
    shift
    rm -rf "$work/build"
    "$script" "$cmake" "$work/compiler" "$source" "$work/build" "$flags $*"
  }
  must_pass "an empty library" built :
  must_fail "a warning by the linker" '^the build warns' built \
    'case "$*" in *-shared*) echo "ld: warning: it is made up" >&2 ;; esac'
  echo 'inline int Cast(long number) { return (int)number; }' > "$work/cast.h"
  must_fail "a warning by the compiler" 'error: use of old-style cast' \
    built : -include "$work/cast.h"
  must_fail "no compiler" 'is not able to compile' built 'exit 1'
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4 flags=$5
shift 5

mkdir -p "$work"
rm -rf "$work/installed"
# Whoever warns once must not be passed over because nothing is left to do.
trap '[ $? -eq 0 ] || rm -rf "$work/build"' EXIT
"$cmake" -S "$source" -B "$work/build" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_FLAGS_RELEASE="$flags" -DKORVAN_WARNINGS_AS_ERRORS=ON \
  -DKORVAN_BUILD_TESTS=OFF -DKORVAN_BUILD_EXAMPLES=OFF \
  -DKORVAN_BUILD_TOOLS=OFF "$@" \
  > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
"$cmake" --build "$work/build" >> "$work/log" 2>&1 ||
  { cat "$work/log"; exit 1; }
# CMake's warnings and the linker's are no errors.
if grep -i warning "$work/log"; then
  echo "the build warns, as above"
  exit 1
fi
# Below a DESTDIR the prefix is always the same, and so are the folders that are
# named for it.
DESTDIR=$work/installed "$cmake" --install "$work/build" --prefix / > /dev/null
