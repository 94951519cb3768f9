#!/bin/sh
# build_and_run.sh [--self-test] CMAKE COMPILER WORK_DIR
# Builds the user's program by find_package against WORK_DIR/moved, and runs it.
set -eu
here=$(dirname "$0")

if [ "$1" = --self-test ]; then
  cmake=$2 compiler=$3 moved=$4/moved
  # shellcheck source=tests/support/self_test.sh
  . "$here/../../support/self_test.sh"
  cp -R "$moved" "$work/moved"
  config=$(find "$work/moved" -name korvan-config.cmake)
  # elsewhere WHAT MESSAGE: with the package of $moved within reach.
  elsewhere() {
    must_fail "$1" "$2" env "CMAKE_PREFIX_PATH=$moved" \
      "$0" "$cmake" "$compiler" "$work"
  }
  echo "include(\"$moved/${config#"$work/moved"}\")" > "$config"
  elsewhere "a package that leads elsewhere" 'libkorvan.* is not taken from'
  rm "$config"
  elsewhere "a package that is found elsewhere" 'korvan was found in'
  must_fail "no package" 'package configuration file' \
    "$0" "$cmake" "$compiler" "$work"
  end_self_test
fi
cmake=$1 compiler=$2 work=$3

rm -rf "$work/cmake_user"
"$cmake" -S "$here" -B "$work/cmake_user" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/moved"
found=$(sed -n 's/^korvan_DIR:PATH=//p' "$work/cmake_user/CMakeCache.txt")
case $found in
  "$work/moved"/*) ;;
  *) echo "korvan was found in $found"; exit 1 ;;
esac
"$cmake" --build "$work/cmake_user"
"$work/cmake_user/user"
loaded=$(ldd "$work/cmake_user/user")
for library in libkorvan.so.1 libkorvan_platform.so.1; do
  printf '%s\n' "$loaded" | grep -q -F -e "$library => $work/moved/" || {
    printf '%s is not taken from %s:\n%s\n' "$library" "$work/moved" "$loaded"
    exit 1
  }
done
