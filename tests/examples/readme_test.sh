#!/bin/sh
# readme_test.sh [--self-test] README SOURCE PROGRAM
# Fails unless README shows SOURCE, and the one line that PROGRAM, built from
# it, prints: as a line of its own or between backquotes.
set -eu

if [ "$1" = --self-test ]; then
  readme=$2 source=$3 program=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$readme" "$source" "$program"
  # of WHAT MESSAGE SCRIPT: another program.
  of() {
    fake program "$3"
    must_fail "$1" "$2" "$0" "$readme" "$source" "$work/program"
  }
  of "a program that prints nothing" 'prints 0 lines' 'exit 0'
  of "a program that fails" 'exit status 3' "'$program'; exit 3"
  of "a program that prints something else" 'does not show' 'echo else'
  of "a program that prints a part" 'does not show' "'$program' | cut -c 2-"
  of "a program that prints more" 'prints 2 lines' "'$program'; echo more"
  of "no word of a full disk" 'passes over a full disk' "'$program'; exit 0"
  must_fail "no program" 'exit status 127' \
    "$0" "$readme" "$source" "$work/none"
  sed '$d' "$source" > "$work/source.cc"
  must_fail "another source" '^+}$' "$0" "$readme" "$work/source.cc" "$program"
  must_fail "no source" 'No such file' "$0" "$readme" "$work/none" "$program"
  # shellcheck disable=SC2016  # backquotes, as they stand
  sed 's/^```cpp$/```c/' "$readme" > "$work/readme.md"
  must_fail "no source in the text" '^-#include' \
    "$0" "$work/readme.md" "$source" "$program"
  must_fail "no text" 'No such file' "$0" "$work/none" "$source" "$program"
  end_self_test
fi
readme=$1 source=$2 program=$3

# shellcheck disable=SC2016  # backquotes, as they stand
shown=$(sed -n '/^```cpp$/,/^```$/p' "$readme" | sed '1d;$d')
printf '%s\n' "$shown" | diff -u "$source" -

status=0
output=$("$program") || status=$?
if [ "$status" -ne 0 ]; then
  echo "$program ends with exit status $status"
  exit 1
fi
lines=$(printf '%s' "$output" | awk 'END {print NR}')
if [ "$lines" -ne 1 ]; then
  echo "$program prints $lines lines, not one:"
  printf '%s\n' "$output"
  exit 1
fi
grep -F -x -q -e "$output" "$readme" ||
  grep -F -q -e "\`$output\`" "$readme" || {
  echo "$readme does not show what the program prints:"
  printf '%s\n' "$output"
  exit 1
}
if "$program" > /dev/full; then
  echo "$program passes over a full disk"
  exit 1
fi
