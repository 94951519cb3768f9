#!/bin/sh
# run_tests_test.sh [--self-test] RUN_TESTS BUILD
# Fails unless the script RUN_TESTS passes where every test of a project passes,
# and nowhere else: a project whose tests do not run must not look tested. BUILD
# is the script that it builds by.
set -eu
if [ "$1" = --self-test ]; then
  run_tests=$2 build=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "nothing broken" "$0" "$run_tests" "$build"
  changed() {  # changed WHAT SED MESSAGE
    sed "$2" "$run_tests" > "$work/changed"
    chmod +x "$work/changed"
    must_fail "$1" "$3" "$0" "$work/changed" "$build"
  }
  changed "skipped tests that pass" 's/Skipped/Left out/g' \
    'skipped test passes'
  changed "disabled tests that pass" 's/Disabled\|Not Run/Left out/g' \
    'disabled test passes'
  changed "failures that pass" '0,/exit 1/s//exit 0/' 'failed test passes'
  changed "no test that passes" 's/exit 1; }/}/' 'no test at all'
  end_self_test
fi
run_tests=$1 build=$2
project=$(mktemp -d)
trap 'rm -rf "$project"' EXIT
mkdir "$project/scripts"
cp "$run_tests" "$project/scripts/run-tests"
cp "$build" "$project/scripts/build"
cat > "$project/CMakePresets.json" << 'END'
{
  "version": 6,
  "configurePresets": [
    {"name": "p", "generator": "Ninja", "binaryDir": "${sourceDir}/build/p"}
  ],
  "buildPresets": [{"name": "p", "configurePreset": "p"}],
  "testPresets": [{"name": "p", "configurePreset": "p"}]
}
END

# with TEXT: runs the tests of a project with TEXT after the one that passes.
with() {
  {
    echo 'cmake_minimum_required(VERSION 3.25)'
    echo 'project(tested LANGUAGES NONE)'
    echo 'enable_testing()'
    echo 'add_test(NAME good COMMAND true)'
    echo "$1"
  } > "$project/CMakeLists.txt"
  shift
  output=$("$project/scripts/run-tests" p "$@" 2>&1)
}
# refuses WHAT REASON TEXT [CTEST_OPTION...]
refuses() {
  what=$1 reason=$2
  shift 2
  if with "$@"; then
    echo "$what passes: $output"
    exit 1
  fi
  case $output in
    *"$reason"*) ;;
    *) echo "$what fails, but without '$reason': $output"; exit 1 ;;
  esac
}

with '' || { echo "a good test fails: $output"; exit 1; }
case $output in
  "1 tests passed; built in 0 min 0"?" s, tested in 0 min 0"?" s") ;;
  *) echo "the figures are: $output"; exit 1 ;;
esac
refuses "a failed test" 'bad (Failed)' 'add_test(NAME bad COMMAND false)'
refuses "a skipped test" 'did not run' 'add_test(NAME skipped COMMAND false)
set_tests_properties(skipped PROPERTIES SKIP_RETURN_CODE 1)'
refuses "a disabled test" 'did not run' 'add_test(NAME disabled COMMAND true)
set_tests_properties(disabled PROPERTIES DISABLED ON)'
refuses "a test without a program" 'Unable to find executable' \
  'add_test(NAME none COMMAND /none)'
refuses "no test at all" 'no test ran' '' --label-regex more
refuses "a project that can't be built" "building 'p' failed" \
  'add_custom_target(broken ALL COMMAND false)'
