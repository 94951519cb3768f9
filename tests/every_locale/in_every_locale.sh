#!/bin/sh
# in_every_locale.sh [--self-test] OF PROGRAM... -- ISOLATED...
# Runs test programs again under other locales, of the C library, of the C++
# library, and of both, set in both orders; the ISOLATED ones case by case. Of the
# 44 settings for each program a campaign takes one in OF, else it is one in 44.
set -eu
if [ "$1" = --self-test ]; then
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  fake passing 'case $* in *list*) printf "S.\n  A\n" ;; esac'
  # shellcheck disable=SC2016  # for the written script
  fake failing 'case "$*:$KORVAN_TEST_LOCALE" in
    *list*) printf "S.\n  A\n" ;;
    *:cxx=tr_TR.UTF-8) echo "this fails"; exit 1 ;; esac'
  KORVAN_CAMPAIGN=1
  export KORVAN_CAMPAIGN
  must_pass "programs that pass" "$0" 1 "$work/passing" -- "$work/passing"
  must_fail "a program that fails under one" 'this fails' \
    "$0" 1 "$work/failing" -- "$work/passing"
  must_fail "a case that fails under one" 'this fails' \
    "$0" 1 "$work/passing" -- "$work/failing"
  fake empty 'echo "[==========] Running 0 tests from 0 test suites."'
  must_fail "a program that runs nothing" 'no case was run' \
    "$0" 1 "$work/empty" --
  fake none ''
  must_fail "a program without cases" 'no cases' \
    "$0" 1 "$work/passing" -- "$work/none"
  must_fail "no program" 'not found' "$0" 1 "$work/gone" --
  end_self_test
fi
of=44
[ -z "${KORVAN_CAMPAIGN:-}" ] || of=$1
shift
# Random tests are many here already.
export RC_PARAMS="${RC_PARAMS:-max_success=5}"

settings() {
  for locale in C C.UTF-8 ru_RU.UTF-8 ru_RU.KOI8-R ru_RU.CP1251 tr_TR.UTF-8 \
    tr_TR.ISO-8859-9 de_DE.ISO-8859-1 ja_JP.SHIFT_JIS ja_JP.EUC-JP \
    zh_CN.GB18030; do
    echo "c=$locale"
    echo "cxx=$locale"
    echo "cxx=$locale c=C"
    echo "c=$locale cxx=ru_RU.KOI8-R c=$locale"
  done
}
settings=$(settings)
output=$(mktemp)
trap 'rm -f "$output"' EXIT
runs=0

# run SETTING PROGRAM [OPTION...]
run() {
  if ! KORVAN_TEST_LOCALE=$1 "$2" ${3:+"$3"} > "$output" 2>&1; then
    grep -v '^\[ RUN\|^\[ *OK' "$output"
    echo "under $*"
    exit 1
  fi
  if grep -q 'Running 0 tests' "$output"; then
    echo "no case was run: $*"
    exit 1
  fi
  runs=$((runs + 1))
}
# The next program begins with another setting.
number=0
isolated=false
for program in "$@"; do
  if [ "$program" = -- ]; then
    isolated=true
    continue
  fi
  number=$((number + 7))
  at=$number
  while read -r setting; do
    at=$((at + 1))
    [ $((at % of)) -eq 0 ] || continue
    if $isolated; then
      KORVAN_TEST_LOCALE=$setting "$program" --gtest_list_tests > "$output.list"
      [ -s "$output.list" ] || { echo "no cases: $program"; exit 1; }
      while read -r name; do
        run "$setting" "$program" "--gtest_filter=$name"
      done << END
$(awk '/^[^ ]*\.$/ {suite = $1} /^  / {print suite $1}' "$output.list")
END
      rm -f "$output.list"
    else
      run "$setting" "$program"
    fi
  done << END
$settings
END
done
[ "$runs" -gt 0 ] || { echo "nothing was run"; exit 1; }
echo "figures: $runs runs of $(($# - 1)) programs under" \
  "$(echo "$settings" | wc -l) settings of locales, one in $of"
