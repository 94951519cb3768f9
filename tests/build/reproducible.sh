#!/bin/sh
# reproducible.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR FLAGS INSTALLED
# Builds a copy of the library with FLAGS in a folder with a long name, without
# a compiler cache, and fails unless what it installs is INSTALLED, the same
# built elsewhere, to the last byte. What WORK_DIR has of the same sources is not
# built again.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
if [ "$1" = --self-test ]; then
  shift
  cmake=$1 compiler=$2 source=$3 flags=$5
  # shellcheck source=tests/support/self_test.sh
  . "$here/../support/self_test.sh"
  # shellcheck source=tests/build/quick_compiler.sh
  . "$here/quick_compiler.sh"
  quick_compiler "$compiler" "$source"
  "$here/build_library.sh" "$cmake" "$work/compiler" "$source" "$work/first" \
    "$flags"
  # second SCRIPT: the second build, by a compiler that does SCRIPT.
  # shellcheck disable=SC2317  # called by must_pass and must_fail
  second() {
    rm -rf "$work/second"
    quick_compiler "$compiler" "$work/second" "$1"
    "$here/reproducible.sh" "$cmake" "$work/compiler" "$source" "$work/second" \
      "$flags" "$work/first/installed"
  }
  must_pass "two builds that are the same" second :
  must_fail "a library that knows where it was built" '^the builds differ' \
    second "echo \"__attribute__((used)) static const char* where = \\\"\$PWD\\\";\" \
      > '$work/empty.cc'"
  rm -rf "$work/first/installed/lib"
  must_fail "a first build without libraries" '^the builds differ' second :
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4 flags=$5 installed=$6
folder=$work/a_folder_with_a_name_that_is_longer/and/deeper
parts="CMakeLists.txt README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md cmake
  debugger docs examples include ini oid packaging platform pubkey resources"

# shellcheck disable=SC2086  # the parts are words
sum=$({ "$compiler" --version && echo "$flags"
  (cd "$source" && find $parts -type f -exec sha256sum {} + | sort)
} | sha256sum)
if [ "$sum" != "$(cat "$work/built" 2> /dev/null)" ]; then
  rm -rf "$work"
  mkdir -p "$folder/source"
  # shellcheck disable=SC2086
  (cd "$source" && cp -R $parts "$folder/source")
  unset CMAKE_CXX_COMPILER_LAUNCHER
  "$here/build_library.sh" "$cmake" "$compiler" "$folder/source" "$folder" \
    "$flags"
  echo "$sum" > "$work/built"
fi
[ -n "$(find "$folder/installed" -name 'libkorvan.so.*.*[0-9]')" ] ||
  { echo "no libraries are built"; exit 1; }
diff -r "$installed" "$folder/installed" || { echo "the builds differ"; exit 1; }
