#!/bin/sh
# example_test.sh [--self-test] SOURCE PROGRAM [ARGUMENT...]
# Fails unless SOURCE is short and ends with the lines that PROGRAM, built from
# it, prints, and PROGRAM sees that it can't write.
set -eu

if [ "$1" = --self-test ]; then
  source=$2
  shift 2
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$source" "$@"
  # The command as a shell types it.
  command=$(printf "'%s' " "$@")
  # of WHAT MESSAGE SCRIPT: another program.
  of() {
    fake program "$3"
    must_fail "$1" "$2" "$0" "$source" "$work/program"
  }
  of "a program that prints nothing" '^-' 'exit 0'
  of "a program that fails" 'exit status 3' "$command; exit 3"
  of "a program that prints more" '^+more' "$command; echo more"
  of "no word of a full disk" 'passes over a full disk' "$command; exit 0"
  of "a file left behind" 'left behind: file' "$command && : > file"
  must_fail "no program" 'exit status 127' "$0" "$source" "$work/none"
  sed '/^\(\/\/\|#\) It prints:$/d' "$source" > "$work/source.cc"
  must_fail "a source that does not say what it prints" 'does not end with' \
    "$0" "$work/source.cc" "$@"
  (seq 60 | sed 's/^/\/\/ /'; cat "$source") > "$work/source.cc"
  must_fail "a long source" 'lines are no small example' \
    "$0" "$work/source.cc" "$@"
  end_self_test
fi
source=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/folder"
cd "$work/folder"

sed -n '/^\(\/\/\|#\) It prints:$/,$s/^\(\/\/\|#\) //p' "$source" | sed 1d \
  > "$work/wanted"
[ -s "$work/wanted" ] ||
  { echo "$source does not end with what it prints"; exit 1; }
lines=$(wc -l < "$source")
[ "$lines" -lt 60 ] || { echo "$lines lines are no small example"; exit 1; }

status=0
LC_ALL=C "$@" > "$work/printed" || status=$?
[ "$status" -eq 0 ] || { echo "$1 ends with exit status $status"; exit 1; }
diff -u "$work/wanted" "$work/printed"
if LC_ALL=C "$@" > /dev/full 2> "$work/messages"; then
  echo "$1 passes over a full disk"
  exit 1
fi
[ -z "$(ls)" ] || { echo "left behind: $(ls)"; exit 1; }
