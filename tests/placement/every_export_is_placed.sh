#!/bin/sh
# every_export_is_placed.sh [--self-test] LIST PROGRAM...
# Fails unless the PROGRAMs import every function of LIST, the exported symbols,
# as they do to call it.
set -eu
export LC_ALL=C
here=$(cd "$(dirname "$0")" && pwd)
if [ "$1" = --self-test ]; then
  shift
  list=$1
  shift
  # shellcheck source=tests/support/self_test.sh
  . "$here/../support/self_test.sh"
  must_pass "the programs as they are" "$0" "$list" "$@"
  (cat "$list"; echo 'korvan::NoSuchFunction()') > "$work/one_more"
  must_fail "a function that nobody calls" '^korvan::NoSuchFunction()$' \
    "$0" "$work/one_more" "$@"
  must_fail "a program that calls none" '[(]' "$0" "$list" "$(command -v true)"
  must_fail "no list" '^no function is exported$' "$0" "$work/none" "$@"
  must_fail "no program" 'No such file' "$0" "$list" "$work/none"
  end_self_test
fi
list=$1
shift
called=$(mktemp)
functions=$(mktemp)
trap 'rm -f "$called" "$functions"' EXIT
for program in "$@"; do
  nm -D --undefined-only "$program"
done | awk '{sub("@.*", "", $2); print $2}' |
  "$here/../binary/short_names.sh" | uniq > "$called"
# Data and versions have no parentheses; those with C's names take no pointer.
sort -u "$list" | grep '[(]' > "$functions" ||
  { echo "no function is exported"; exit 1; }
left_out=$(comm -23 "$functions" "$called")
if [ -n "$left_out" ]; then
  printf 'not called:\n%s\n' "$left_out"
  exit 1
fi
echo "figures: all $(wc -l < "$functions") functions of $(basename "$list") are" \
  "called"
