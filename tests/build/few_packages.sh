#!/bin/sh
# few_packages.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR
# Configures as a newcomer does who has a compiler and CMake and no package of
# the tests, the examples or the documentation: what they need is left out, with
# one line each, and the rest is configured.
set -eu
if [ "$1" = --self-test ]; then
  shift
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # A cmake that finds every package, and one that requires them.
  # shellcheck disable=SC2016  # for the written scripts
  {
    fake finds 'for arg; do shift; case $arg in
        -DCMAKE_DISABLE_*) ;; *) set -- "$@" "$arg" ;; esac; done
      exec '"'$1'"' "$@"'
    fake requires 'case $1 in -S) set -- "$@" -DKORVAN_REQUIRE_PACKAGES=ON ;; esac
      exec '"'$1'"' "$@"'
  }
  must_fail "packages that are there" "not said once: libgtest" \
    "$0" "$work/finds" "$2" "$3" "$work/work"
  must_fail "packages that are required" "needs Debian.s package" \
    "$0" "$work/requires" "$2" "$3" "$work/work"
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4
rm -rf "$work"
mkdir -p "$work"
without=
for package in GTest rapidcheck OpenSSL Doxygen; do
  without="$without -DCMAKE_DISABLE_FIND_PACKAGE_$package=ON"
done
# shellcheck disable=SC2086  # the options are words
"$cmake" -S "$source" -B "$work/build" -DCMAKE_CXX_COMPILER="$compiler" \
  $without -DKORVAN_VALGRIND=OFF \
  -DKORVAN_PKG_CONFIG=OFF \
  -DKORVAN_HAS_CALLGRIND_H=OFF \
  > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
grep 'left out' "$work/log" > "$work/left_out" || true
cat "$work/left_out"
for what in 'libgtest-dev is missing: the test programs' \
  'librapidcheck-dev is missing: the tests of properties' \
  'libssl-dev is missing: the example keyblob' \
  'libssl-dev is missing: the round trip of keys' \
  'valgrind is missing: the runs under valgrind' \
  'pkg-config is missing: the tests of the package' \
  'valgrind is missing: the counting of instructions' \
  'doxygen is missing: the target docs'; do
  [ "$(grep -c "$what" "$work/left_out")" -eq 1 ] ||
    { echo "not said once: $what"; exit 1; }
done
"$cmake" --build "$work/build" --target help > "$work/targets"
for target in korvan korvan_platform oidinfo initool; do
  grep -qE "(^|[ .])$target\$" "$work/targets" ||
    { echo "no target $target"; exit 1; }
done
if grep -qE '(^|[ .])(docs|keyblob|text_test)$' "$work/targets"; then
  echo "a target needs what is not there"
  exit 1
fi
