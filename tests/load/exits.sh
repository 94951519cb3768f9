#!/bin/sh
# exits.sh [--self-test] FOUND PROGRAM MANY
# PROGRAM, an `exiting`, ends well in each way, and its user library finds on the
# way out what FOUND says: "a name" where it is destroyed before korvan, "no name"
# where it is destroyed after it. A campaign ends it MANY times beside lookups. It
# does nothing else where FOUND is "anything", and what is printed does not matter.
set -eu
if [ "$1" = --self-test ]; then
  found=$2 program=$3 many=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the program as it is" "$0" "$found" "$program" "$many"
  must_pass "exits beside lookups alone" "$0" anything "$program" "$many"
  must_fail "another order" 'prints otherwise' "$0" "neither" "$program" "$many"
  for way in return exit exit_beside_lookups quick_exit _exit; do
    # shellcheck disable=SC2016  # for the written script
    fake crashing 'if [ "$1" = '"$way"' ]; then kill -SEGV $$; fi
      exec '"'$program'"' "$@"'
    must_fail "a crash by $way" "^$way: status" "$0" "$found" \
      "$work/crashing" "$many"
  done
  fake crashing 'kill -SEGV $$'
  must_fail "a crash alone" '^exit_beside_lookups: status' "$0" anything \
    "$work/crashing" "$many"
  end_self_test
fi
found=$1 program=$2 rounds=3
[ -z "${KORVAN_CAMPAIGN:-}" ] || rounds=$3

# ends WAY LINE...: the program ends so, and prints these lines.
ends() {
  way=$1
  shift
  status=0
  output=$("$program" "$way") || status=$?
  if [ "$status" -ne 0 ]; then
    echo "$way: status $status"
    exit 1
  fi
  expected=$(printf '%s\n' "$@")
  if [ "$output" != "$expected" ]; then
    printf '%s prints otherwise:\n%s\n' "$way" "$output"
    exit 1
  fi
}
ends_with_cleanup() {
  if [ "$found" = anything ]; then
    "$program" "$1" > /dev/null || { echo "$1: status $?"; exit 1; }
    return
  fi
  ends "$1" "atexit of the program: a name" \
    "destructor of the user library: $found" \
    "atexit of the user library: $found"
}

ways=0
if [ "$found" != anything ]; then
  ends_with_cleanup return
  ends_with_cleanup exit
  ends quick_exit "at_quick_exit of the program: a name"
  ends _exit ""
  ways=4
fi
round=0
while [ "$round" -lt "$rounds" ]; do
  ends_with_cleanup exit_beside_lookups
  round=$((round + 1))
done
echo "figures: $ways ways out, and $rounds exits beside 16 threads that look up"
