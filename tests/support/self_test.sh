# What the shell tests' --self-test modes share. Each of these breaks what its
# test looks at and must see the test fail; a test that still passes looks at
# nothing. To be read by `.`, in a script that was started as itself.
# shellcheck shell=sh

self_test_failures=0

# must_fail WHAT COMMAND...
must_fail() {
  what=$1
  shift
  if output=$("$@" 2>&1); then
    echo "passes all the same: $what"
    printf '%s\n' "$output" | sed 's/^/  /'
    self_test_failures=$((self_test_failures + 1))
  else
    echo "fails, as it should: $what"
  fi
}

# must_fail_saying PATTERN WHAT COMMAND...
# For a test that many things can make fail: PATTERN tells that it was this one.
must_fail_saying() {
  pattern=$1
  shift
  must_fail "$@"
  if ! printf '%s\n' "$output" | grep -qe "$pattern"; then
    echo "fails for another reason than '$pattern':"
    printf '%s\n' "$output" | sed 's/^/  /'
    self_test_failures=$((self_test_failures + 1))
  fi
}

# must_pass WHAT COMMAND...
# Without this, a test that always fails would pass its self-test.
must_pass() {
  what=$1
  shift
  if ! output=$("$@" 2>&1); then
    echo "fails, though nothing is broken: $what"
    printf '%s\n' "$output" | sed 's/^/  /'
    self_test_failures=$((self_test_failures + 1))
  fi
}

# Ends the self-test by its result.
end_self_test() {
  exit "$((self_test_failures != 0))"
}
