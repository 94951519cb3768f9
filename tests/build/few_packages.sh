#!/bin/sh
# few_packages.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR
# Configures as a newcomer does who has a compiler and CMake and no package of
# the tests, the tools or the documentation: what they need is left out, with one
# line each, and the rest is configured. Then with all packages but one.
set -eu
if [ "$1" = --self-test ]; then
  shift
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # A cmake that finds every package, one that requires them, one that finds
  # those that are missing alone, one that makes all targets up, and one that
  # knows no test program.
  # shellcheck disable=SC2016  # for the written scripts
  {
    fake finds 'for arg; do shift; case $arg in
        -DCMAKE_DISABLE_*) ;; *) set -- "$@" "$arg" ;; esac; done
      exec '"'$1'"' "$@"'
    fake requires 'case $1 in -S) set -- "$@" -DKORVAN_REQUIRE_PACKAGES=ON ;; esac
      exec '"'$1'"' "$@"'
    fake finds_last 'case "$*" in *GTest*) ;; *) for arg; do shift; case $arg in
        -DCMAKE_DISABLE_*) ;; *) set -- "$@" "$arg" ;; esac; done ;; esac
      exec '"'$1'"' "$@"'
    fake builds_all "'$1'"' "$@" || exit
      [ "$1" != --build ] || echo "... oid_lookup_test"'
    fake builds_few "'$1'"' "$@" > "$0.said"; status=$?
      sed /oid_lookup_test/d "$0.said"; exit "$status"'
  }
  must_fail "packages that are there" "not said once: libgtest" \
    "$0" "$work/finds" "$2" "$3" "$work/work"
  must_fail "packages that are required" "needs Debian.s package" \
    "$0" "$work/requires" "$2" "$3" "$work/work"
  must_fail "a package that is there" "not said once: nlohmann" \
    "$0" "$work/finds_last" "$2" "$3" "$work/work"
  must_fail "a test program that needs a package" \
    "the target oid_lookup_test needs" \
    "$0" "$work/builds_all" "$2" "$3" "$work/work"
  must_fail "no test programs" "no target oid_lookup_test" \
    "$0" "$work/builds_few" "$2" "$3" "$work/work"
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4
rm -rf "$work"
mkdir -p "$work"

# configure BUILD OPTION... : leaves what is said and the targets in files.
configure() {
  build=$1
  shift
  "$cmake" -S "$source" -B "$work/$build" -DCMAKE_CXX_COMPILER="$compiler" \
    "$@" > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
  grep 'left out' "$work/log" > "$work/left_out" || true
  cat "$work/left_out"
  "$cmake" --build "$work/$build" --target help > "$work/targets"
}
# without PACKAGE...: as options of CMake.
without() {
  for package; do
    printf '%s ' "-DCMAKE_DISABLE_FIND_PACKAGE_$package=ON"
  done
}
says_once() {
  for what; do
    [ "$(grep -c "$what" "$work/left_out")" -eq 1 ] ||
      { echo "not said once: $what"; exit 1; }
  done
}
has() {
  for target; do
    grep -qE "(^|[ .])$target\$" "$work/targets" ||
      { echo "no target $target"; exit 1; }
  done
}
has_not() {
  for target; do
    if grep -qE "(^|[ .])$target\$" "$work/targets"; then
      echo "the target $target needs what is not there"
      exit 1
    fi
  done
}

# shellcheck disable=SC2046  # the options are words
configure nothing \
  $(without GTest rapidcheck OpenSSL CLI11 nlohmann_json Doxygen) \
  -DKORVAN_VALGRIND=OFF -DKORVAN_STRACE=OFF -DKORVAN_CLANG=OFF \
  -DKORVAN_GDB=OFF -DKORVAN_PKG_CONFIG=OFF -DKORVAN_HAS_CALLGRIND_H=OFF
says_once 'libgtest-dev is missing: the test programs' \
  'librapidcheck-dev is missing: the tests of properties' \
  'libcli11-dev is missing: the command-line programs' \
  'libssl-dev is missing: the round trip of keys' \
  'valgrind is missing: the runs under valgrind' \
  'strace is missing: the test of the system calls' \
  'clang is missing: the tests of refused platforms' \
  'pkg-config is missing: the tests of the package' \
  "gdb is missing: the tests of GDB's printers" \
  'valgrind is missing: the counting of instructions' \
  'doxygen is missing: the target docs'
has korvan korvan_platform first_call key_to_blob text_by_number narrow_ini \
  wide_ini
has_not docs oidinfo initool keyblob oid_lookup_test

# shellcheck disable=SC2046
configure no_json $(without nlohmann_json)
says_once 'nlohmann-json3-dev is missing: the command-line programs'
has korvan first_call oid_lookup_test
has_not oidinfo initool keyblob

# shellcheck disable=SC2046
configure no_openssl $(without OpenSSL)
says_once 'libssl-dev is missing: the program keyblob'
has korvan first_call oidinfo initool
has_not keyblob
