#!/bin/sh
# exports_only.sh [--self-test] LIBRARY LIST [VERSION]
# Fails unless LIBRARY exports exactly the symbols of LIST, demangled, and all
# of them under VERSION (under no version when it is left out).
set -eu
export LC_ALL=C

if [ "$1" = --self-test ]; then
  shift
  library=$1 list=$2 version=${3:-}
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the list as it is" "$0" "$library" "$list" "$version"
  sed '$d' "$list" > "$work/one_less"
  must_fail "a symbol that the list does not have" '^+[^+]' \
    "$0" "$library" "$work/one_less" "$version"
  (cat "$list"; echo 'korvan::NoSuchFunction()') > "$work/one_more"
  must_fail "a symbol that the library does not have" '^-korvan::NoSuch' \
    "$0" "$library" "$work/one_more" "$version"
  must_fail "another version" 'not under version "OTHER_1.0"' \
    "$0" "$library" "$list" OTHER_1.0
  if [ -n "$version" ]; then
    must_fail "a version where none is due" 'not under version ""' \
      "$0" "$library" "$list"
  fi
  must_fail "no library" 'No such file' "$0" "$work/none" "$list" "$version"
  fake tools/nm 'exit 0'
  must_fail "a silent nm" 'symbols are not those' \
    env "PATH=$work/tools:$PATH" "$0" "$library" "$list" "$version"
  end_self_test
fi
library=$1 list=$2 version=${3:-}

exported=$(nm -D --defined-only "$library" | awk '{print $3}')
# The version has a symbol of its own, which bears none.
strangers=$(printf '%s\n' "$exported" | awk -v version="$version" '
  {at = index($0, "@")}
  version == "" ? at : $0 != version && substr($0, at) != "@@" version')
if [ -n "$strangers" ]; then
  printf 'not under version "%s":\n%s\n' "$version" "$strangers"
  exit 1
fi
printf '%s\n' "$exported" | sed 's/@@.*//' | "$(dirname "$0")/short_names.sh" |
  diff -u "$list" - || {
  echo "the exported symbols are not those of $list"
  exit 1
}
