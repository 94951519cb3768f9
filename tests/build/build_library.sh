#!/bin/sh
# build_library.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR FLAGS
# Builds the library alone with FLAGS, every warning an error, and installs it
# to WORK_DIR/installed.
set -eu

if [ "$1" = --self-test ]; then
  cmake=$2 compiler=$3 source=$4 flags=$6
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # by WHAT MESSAGE SCRIPT [FLAG...]: a compiler that takes any source of the
  # library for an empty one, and does SCRIPT before.
  : > "$work/empty.cc"
  by() {
    fake compiler "for argument in \"\$@\"; do
      shift
      case \$argument in
        '$source'/*.cc) argument='$work/empty.cc' ;;
      esac
      set -- \"\$@\" \"\$argument\"
    done
    $3
    exec '$compiler' \"\$@\""
    set -- "$1" "$2" "$0" "$cmake" "$work/compiler" "$source" "$work/build" \
      "$flags${4:+ $4}"
    if [ -z "$2" ]; then
      shift 2
      must_pass "an empty library" "$@"
    else
      must_fail "$@"
    fi
  }
  by "" "" ""
  by "a warning by the linker" '^the build warns' \
    'case "$*" in *-shared*) echo "ld: warning: it is made up" >&2 ;; esac'
  echo 'inline int Cast(long number) { return (int)number; }' > "$work/cast.h"
  by "a warning by the compiler" 'error: use of old-style cast' "" \
    "-include $work/cast.h"
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4 flags=$5

rm -rf "$work"
mkdir -p "$work"
"$cmake" -S "$source" -B "$work/build" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_FLAGS_RELEASE="$flags" -DKORVAN_WARNINGS_AS_ERRORS=ON \
  -DKORVAN_BUILD_TESTS=OFF -DKORVAN_BUILD_EXAMPLES=OFF \
  > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
"$cmake" --build "$work/build" >> "$work/log" 2>&1 ||
  { cat "$work/log"; exit 1; }
# CMake's warnings and the linker's are no errors.
if grep -i warning "$work/log"; then
  echo "the build warns, as above"
  exit 1
fi
"$cmake" --install "$work/build" --prefix "$work/installed" > /dev/null
