#!/bin/sh
# behaviour_test.sh [--self-test] PYTHON TOP
# docs/behaviour.md has every exported function, and names no test that is not
# there. Whether they ran is seen by scripts/test, after it ran them.
# shellcheck disable=SC2016  # Markdown marks code as the shell does commands
set -eu
here=$(cd "$(dirname "$0")" && pwd)
if [ "$1" = --self-test ]; then
  python=$2 top=$3
  # shellcheck source=tests/support/self_test.sh
  . "$here/../support/self_test.sh"
  mkdir "$work/top" "$work/top/docs"
  ln -s "$top/tests" "$work/top/tests"
  page=$work/top/docs/behaviour.md
  cp "$top/docs/behaviour.md" "$page"
  must_pass "all as it is" "$0" "$python" "$work/top"
  # breaks WHAT MESSAGE SED: another page.
  breaks() {
    sed "$3" "$top/docs/behaviour.md" > "$page"
    must_fail "$1" "$2" "$0" "$python" "$work/top"
  }
  breaks "a function that is left out" \
    '^LoadString_korvan is not in docs/behaviour.md$' '/^### `LoadString/d'
  breaks "a function that is not exported" '^Gone in docs/behaviour.md is not' \
    's/^### `LoadString_korvan`/&, `Gone`/'
  breaks "a function that stands twice" 'CleanupOidInfo stands twice' \
    's/^### `LoadString_korvan`/&, `CleanupOidInfo`/'
  breaks "a promise that is left out" \
    '^CleanupOidInfo: no test of its threads is named$' '/^| Threads/d'
  breaks "a promise that nothing shows" \
    '^FindOIDInfo: no test of its ownership is named$' \
    's/^\(| Ownership |[^|]*|\).*/\1 |/'
  breaks "a test that is not there" 'there is no test OidLookup.Gone$' \
    's/OidLookup.ANullKeyMatchesNothing/OidLookup.Gone/'

  # ran LINE...: a log in which every test that is named passed, but for what
  # the lines of sed do to it.
  cp "$top/docs/behaviour.md" "$page"
  rule=$(printf '%58s' '' | tr ' ' -)
  # begins NUMBER NAME: a test, in the log as CTest writes it.
  begins() {
    printf '%s\n' "$rule" "" "$1/4 Testing: $2" "$1/4 Test: $2" "$rule"
  }
  cases=$(grep '^|' "$page" | grep -o '`[A-Z][A-Za-z0-9]*\.[A-Za-z0-9]*`' |
    sort -u | sed 's/`\(.*\)`/[       OK ] Some\/\1\/0 (0 ms)/')
  {
    echo "Start testing"
    for program in narrow_ini_file_test wide_ini_file_test; do
      begins 1 "$program"
      printf '%s\n' "$cases" | grep '/IniFile\.'
      echo "Test Passed."
    done
    begins 3 all
    printf '%s\n' "$cases" | grep -v '/IniFile\.'
    echo "Test Passed."
    begins 4 exit_beside_lookups
    echo "Test Passed."
  } > "$work/log"
  must_pass "all that ran" "$python" -B "$here/behaviour.py" "$work/top" \
    "$work/log"
  # ran_not WHAT MESSAGE SED: another log.
  ran_not() {
    sed "$3" "$work/log" > "$work/other"
    must_fail "$1" "$2" "$python" -B "$here/behaviour.py" "$work/top" \
      "$work/other"
  }
  ran_not "a case that did not run" \
    'LoadString.ANullBufferIsRefused did not run and pass$' \
    '/LoadString.ANullBufferIsRefused/d'
  ran_not "a case that failed" \
    'LoadString.ANullBufferIsRefused did not run and pass$' \
    '/LoadString.ANullBufferIsRefused/s/      OK/  FAILED/'
  ran_not "a program that failed" \
    'LoadString.ANullBufferIsRefused did not run and pass$' \
    '/Testing: all/,/^Test Passed/s/^Test Passed/Test Failed/'
  ran_not "one width of two" 'IniFile.FilesAreClosed did not run and pass$' \
    '/Testing: wide_ini_file_test/,/^Test Passed/d'
  ran_not "a test of CTest that failed" \
    'exit_beside_lookups did not run and pass$' \
    '/Testing: exit_beside/,$s/Passed/Failed/'
  end_self_test
fi
exec "$1" -B "$here/behaviour.py" "$2"
