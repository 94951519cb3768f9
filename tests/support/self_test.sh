# What the shell tests' --self-test modes share. Each of these breaks what its
# test looks at and must see the test fail, for that reason; a test that still
# passes looks at nothing. To be read by `.`, in a script that was started as
# itself. Sets `work`, a new folder that goes away in the end.
# shellcheck shell=sh

work=$(mktemp -d)
self_test_folder=$work
trap 'rm -rf "$self_test_folder"' EXIT
self_test_breaks=0
self_test_failures=0

# complain WHAT: counts a failure and shows what the command printed.
complain() {
  echo "$1"
  printf '%s\n' "$output" | sed 's/^/  /'
  self_test_failures=$((self_test_failures + 1))
}

# must_fail WHAT MESSAGE COMMAND...
# The command fails and prints a line that matches MESSAGE. Without that, a
# mistake in the self-test would pass for the failure that it is to cause.
must_fail() {
  what=$1 message=${2:?}
  shift 2
  self_test_breaks=$((self_test_breaks + 1))
  if output=$("$@" 2>&1); then
    complain "passes all the same: $what"
  elif ! printf '%s\n' "$output" | grep -q -e "$message"; then
    complain "fails without a word of \"$message\": $what"
  else
    echo "fails, as it should: $what"
  fi
}

# must_pass WHAT COMMAND...
# Without this, a test that always fails would pass its self-test.
must_pass() {
  what=$1
  shift
  if ! output=$("$@" 2>&1); then
    complain "fails, though nothing is broken: $what"
  fi
}

# fake NAME SCRIPT: makes $work/NAME a program that does SCRIPT.
fake() {
  mkdir -p "$(dirname "$work/$1")"
  printf '#!/bin/sh\n%s\n' "$2" > "$work/$1"
  chmod +x "$work/$1"
}

# changed PROGRAM WHAT MESSAGE SCRIPT [ARGUMENT...]
# The test of a program must fail when it is given, before the arguments, one
# that does SCRIPT, in which $real is the program.
changed() {
  fake changed "real='$1'
$4"
  what=$2 message=$3
  shift 4
  must_fail "$what" "$message" "$0" "$work/changed" "$@"
}

# Ends the self-test by its result.
end_self_test() {
  if [ "$self_test_breaks" -eq 0 ]; then
    echo "nothing was broken"
    exit 1
  fi
  exit "$((self_test_failures != 0))"
}
