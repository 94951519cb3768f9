#!/bin/sh
# host_headers.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR
# What configuring for a host says of its headers where they lack something.
set -eu
if [ "$1" = --self-test ]; then
  shift
  cmake=$1 compiler=$2 source=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # breaks WHAT MESSAGE SED: another check of the headers.
  breaks() {
    rm -rf "$work/source"
    mkdir "$work/source"
    cp -r "$source/cmake" "$work/source/cmake"
    cp -r "$source/include" "$source/docs" "$work/source"
    sed -i "$3" "$work/source/cmake/HostHeaders.cmake"
    must_fail "$1" "$2" "$0" "$cmake" "$compiler" "$work/source" "$work/work"
  }
  # shellcheck disable=SC2016  # in CMake's file
  breaks "no word of what is missing" '^< CASNTBaseRecord()' 's/${missing}//'
  breaks "nothing that is missed" 'is configured' 's/FATAL_ERROR/STATUS/'
  breaks "a member less than the document has" '^<.*SetTag' \
    '/SetTag/,+1d'
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4
rm -rf "$work"
mkdir -p "$work/include/korvan/platform"
headers=$work/include/korvan/platform

# Configuring begins with this, and has nothing else to do with the headers.
cat > "$work/CMakeLists.txt" << END
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES CXX)
set(PROJECT_SOURCE_DIR "$source")
set(KORVAN_HOST_INCLUDE_DIR "$work/include")
include("$source/cmake/HostHeaders.cmake")
END
configures() {
  "$cmake" -S "$work" -B "$work/build" -G Ninja \
    -DCMAKE_CXX_COMPILER="$compiler" > "$work/log" 2>&1
}
# refuses WHAT TEXT...: CMake breaks lines where it likes.
refuses() {
  what=$1
  shift
  if configures; then
    echo "$what is configured"
    exit 1
  fi
  for text; do
    tr -s '\n ' ' ' < "$work/log" | grep -q -F -e "$text" || {
      cat "$work/log"
      echo "$what should say '$text'"
      exit 1
    }
  done
}
refuses "a folder without headers" "the host's own korvan/platform/last_error.h"
echo 'extern "C" void SetLastError(unsigned int);' > "$headers/last_error.h"
refuses "a folder with one header" "the host's own korvan/platform/asn1_record.h"
echo 'class IdentObj {' > "$headers/asn1_record.h"
refuses "half a class" 'asn1_record.h in KORVAN_HOST_INCLUDE_DIR' \
  'does not compile' 'error'

# All that is asked for, in CMake's words and in the document's.
echo 'class IdentObj {}; class CASNTBaseRecord { CASNTBaseRecord(int); };' \
  > "$headers/asn1_record.h"
echo > "$headers/last_error.h"
refuses "a host of nothing" "lack what docs/host.md asks of them"
# Every class can be assigned to.
sed -n 's/^    *korvan\/platform\/\(.*\)\.h: \(.*\)/\2/p' "$work/log" |
  sort > "$work/missing"
sed -n '/^|.*`.*|/s/^|[^|]*| \([^|]*\) |.*/\1/p' "$source/docs/host.md" |
  sed 's/`//g' | grep -v 'operator=' | sort > "$work/documented"
diff "$work/documented" "$work/missing"

# One member alone is missed, and a complete host is none of that.
cp "$source/include/korvan/platform/last_error.h" "$headers"
sed 's/int length;/int size;/' "$source/include/korvan/platform/asn1_record.h" \
  > "$headers/asn1_record.h"
refuses "a host that lacks one member" 'IdentObj::length, an unsigned int'
[ "$(grep -c 'platform/.*\.h: ' "$work/log")" = 1 ] ||
  { cat "$work/log"; echo "more than one member is missed"; exit 1; }
cp "$source/include/korvan/platform/asn1_record.h" "$headers"
configures || { cat "$work/log"; exit 1; }
