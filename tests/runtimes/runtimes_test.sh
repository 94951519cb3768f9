#!/bin/sh
# runtimes_test.sh [--self-test] PYTHON CMAKE BUILD_DIR WORK_DIR
# Fails where a test program neither runs under each tool that left_out.txt names
# nor is listed there with the reason, and where one is listed that runs.
set -eu
list=$(cd "$(dirname "$0")" && pwd)/left_out.txt
if [ "$1" = --self-test ]; then
  python=$2 cmake=$3 build=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$list")/../support/self_test.sh"
  # breaks WHAT MESSAGE SED: another list.
  breaks() {
    sed "$3" "$list" > "$work/list"
    must_fail "$1" "$2" "$python" -B "$(dirname "$list")/runtimes.py" \
      "$cmake" "$build" "$work/list" "$work"
  }
  breaks "a program that valgrind does not run" \
    'nor listed in list: valgrind  unload_test' '/valgrind  unload_test/d'
  breaks "a program that AddressSanitizer does not run" \
    'nor listed in list: address  oid_fork_test' '/address  oid_fork_test/d'
  breaks "a program with threads without ThreadSanitizer" \
    'nor listed in list: thread  every_algid_pair' \
    '/thread  every_algid_pair/d'
  breaks "a listed program that runs" \
    'but run or gone: coverage  load_string_test' \
    "\$a\\  coverage  load_string_test"
  breaks "no reason" 'a row without a reason' '/^[^ #]/d'
  end_self_test
fi
exec "$1" -B "$(dirname "$list")/runtimes.py" "$2" "$3" "$list" "$4"
