#!/bin/sh
# leaves_platform_to_host.sh [--self-test] LIBRARY BUNDLED_LIBRARY PLATFORM
# Fails unless LIBRARY imports the same symbols of a platform as
# BUNDLED_LIBRARY does of PLATFORM, and needs no library that has them.
set -eu
export LC_ALL=C

if [ "$1" = --self-test ]; then
  library=$2 bundled=$3 platform=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the library as it is" "$0" "$library" "$bundled" "$platform"
  must_fail "the bundled library" 'needs libkorvan_platform' \
    "$0" "$bundled" "$bundled" "$platform"
  must_fail "a library that brings a platform along" 'does not import' \
    "$0" "$platform" "$bundled" "$platform"
  must_fail "no library" 'No such file' \
    "$0" "$work/none" "$bundled" "$platform"
  must_fail "no bundled library" 'No such file' \
    "$0" "$library" "$work/none" "$platform"
  must_fail "a platform that supplies nothing" 'imports nothing of' \
    "$0" "$library" "$bundled" "$bundled"
  for tool in nm readelf; do
    fake "without_$tool/$tool" 'exit 0'
    must_fail "a silent $tool" 'imports nothing of\|needs no library' \
      env "PATH=$work/without_$tool:$PATH" \
      "$0" "$library" "$bundled" "$platform"
  done
  end_self_test
fi
library=$1 bundled=$2 platform=$3

supplied=$(nm -D --defined-only "$platform" | awk '{print $3}')
wanted=$(nm -D --undefined-only "$bundled" | awk '{print $2}' |
  grep -F -x -e "$supplied") || {
  echo "$bundled imports nothing of $platform"
  exit 1
}
imported=$(nm -D --undefined-only "$library" | awk '{print $2}')
for symbol in $wanted; do
  printf '%s\n' "$imported" | grep -q -F -x -e "$symbol" ||
    { echo "$library does not import $symbol"; exit 1; }
done

dynamic=$(readelf -Wd "$library")
needed=$(printf '%s\n' "$dynamic" | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p')
[ -n "$needed" ] || { echo "$library needs no library"; exit 1; }
for one in $needed; do
  case $one in
    libkorvan_*) echo "$library needs $one"; exit 1 ;;
  esac
done
