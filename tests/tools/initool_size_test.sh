#!/bin/sh
# initool_size_test.sh [--self-test] INITOOL
# Files that are too large are refused, and not read whole.
set -eu
export LC_ALL=C.UTF-8

if [ "$1" = --self-test ]; then
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # shellcheck disable=SC2016  # what the changed program does
  changed "$2" "files of any size" 'larger than' \
      '"$real" "$@" 2> text; status=$?; grep -v larger text >&2; exit "$status"'
  must_fail "no program" 'exit status 127' "$0" "$work/none"
  end_self_test
fi
program=$1
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

makes made.ini '[S]\n[k=v\n'
# A terabyte would take hours.
truncate -s $((64 << 20)) largest.ini
expect 0 '' '1 line of largest.ini' list largest.ini
truncate -s $(((64 << 20) + 1)) large.ini
truncate -s 1T huge.ini
expect 3 '' "^initool: large.ini: is larger than 64 MiB" lint large.ini
expect 3 '' "^initool: large.ini: is larger than 64 MiB" set  large.ini S '[k' v
expect 3 '' "^initool: huge.ini: is larger than 64 MiB" merge made.ini huge.ini
{ printf '[S]\n[l='; head -c $((40 << 20)) /dev/zero | tr '\0' v; } > half.ini
{ printf '[S]\n[m='; head -c $((40 << 20)) /dev/zero | tr '\0' v; } > half2.ini
expect 3 '' 'half.ini: would be larger than 64 MiB' --lossy merge half.ini half2.ini
expect 3 '' "^initool: standard input: is larger than" list - < /dev/zero
