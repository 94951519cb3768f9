#!/bin/sh
# fuzz_test.sh [--self-test] FUZZ
# Fails unless the script FUZZ runs every target, keeps what was found and never
# makes a corpus poorer: in a project whose target and AFL++ are scripts.
set -eu
if [ "$1" = --self-test ]; then
  fuzz=$2
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "nothing broken" "$0" "$fuzz"
  changed() {  # changed WHAT SED MESSAGE
    sed "$2" "$fuzz" > "$work/changed"
    chmod +x "$work/changed"
    must_fail "$1" "$3" "$0" "$work/changed"
  }
  changed "seconds that are no number" 's/ | \*\[!0-9\]\*)/)/' 'no number'
  changed "a run without an end" 's/ | 0\* | / | /' '0 seconds'
  changed "a target that is left out" 's/exit 1; }$/continue; }/' \
    'without a corpus'
  changed "a name of nothing" "s/echo \"there is no target.*exit 2/:/" \
    'without a target'
  # shellcheck disable=SC2016  # the script's words
  changed "findings of libFuzzer that are not seen" \
    's/ || \[ "$(tail -n 1 "$found.*ENDED \]; then/; then/' \
    'what libFuzzer finds'
  # shellcheck disable=SC2016  # the script's words
  changed "a run that is not counted" \
    's/\[ -z "$runs" \] || //' 'a run of nothing'
  # shellcheck disable=SC2016  # the script's words
  changed "findings that are removed" \
    '0,/find_afl_findings "$output")/s//true)/' 'to remove an earlier finding'
  changed "findings that are not seen" "s/-path '\*\/crashes\/id\*' -o//" \
    'what AFL++ finds'
  changed "a merge that crashed" 's/in 1 attempt/in/' 'merge that crashed'
  # shellcheck disable=SC2016  # the script's words
  changed "a corpus that is emptied" 's/-z "$(ls "$least")"/-z least/' \
    'empty merge'
  end_self_test
fi
project=$(mktemp -d)
trap 'rm -rf "$project"' EXIT
mkdir "$project/scripts" "$project/bin"
cp "$1" "$project/scripts/fuzz"
cd "$project"
PATH=$project/bin:$PATH

program() {  # program NAME < TEXT
  mkdir -p "$(dirname "$1")"
  { echo '#!/bin/sh'; cat; } > "$1"
  chmod +x "$1"
}
program scripts/setup < /dev/null
program scripts/build < /dev/null
# Runs, or makes of a corpus, as RESULT says.
program build/fuzz/fuzz/area/one << 'END'
case $1:$RESULT in
  -merge=1:*) ;;
  *:killed) printf 'in the middle of a li'; exit 1 ;;
  *:silent) exit ;;
  *)
    echo 'stat::number_of_executed_units: 7'
    [ "$RESULT" = good ]
    exit
    ;;
esac
for folder in "$@"; do
  case $folder in
    -*) ;;
    *) break ;;
  esac
done
case $RESULT in
  good) echo kept > "$folder/kept"; attempts=1 ;;
  crash) echo kept > "$folder/kept"; attempts=2 ;;
  empty) attempts=1 ;;
esac
echo "MERGE-OUTER: successful in $attempts attempt(s)"
END
for preset in afl fuzz_coverage; do
  mkdir -p build/$preset
  cp -r build/fuzz/fuzz build/$preset
done
echo '  Test #1: one_corpus' > tests
program bin/ctest << 'END'
cat tests
END
program bin/afl-fuzz << 'END'
while [ "$1" != -o ]; do
  shift
done
mkdir -p "$2/default/queue" "$2/default/crashes"
echo input > "$2/default/queue/id:1"
echo 'execs_done : 5' > "$2/default/fuzzer_stats"
[ "$RESULT" = good ] || echo input > "$2/default/crashes/id:2"
END
corpus=fuzz/area/corpus/one
mkdir -p "$corpus"
echo input > "$corpus/first"

runs() {  # runs FIGURES RESULT ARGUMENT...
  figures=$1 result=$2
  shift 2
  if ! output=$(RESULT=$result scripts/fuzz "$@" 2>&1) ||
    ! printf '%s\n' "$output" | grep -q "$figures"; then
    printf '%s\n' "$output" "scripts/fuzz $* fails"
    exit 1
  fi
}
refuses() {  # refuses WHAT REASON RESULT ARGUMENT...
  what=$1 reason=$2 result=$3
  shift 3
  if output=$(RESULT=$result scripts/fuzz "$@" 2>&1) ||
    ! printf '%s\n' "$output" | grep -q "$reason"; then
    printf '%s\n' "$output" "not refused: $what"
    exit 1
  fi
}

runs '^figures: one: 7 runs' good 1
runs '^figures: one: 7 runs' good 1 one
refuses "seconds that are no number" '^usage:' good one
refuses "0 seconds" '^usage:' good 0
refuses "a name without a target" "no target 'two'" good 1 two

refuses "what libFuzzer finds" '^one: FOUND' crash 1
refuses "what ends in the middle of a line" 'one: FOUND' killed 1
refuses "a run of nothing" '^one: FOUND' silent 1

runs '^figures: one: 5 runs' good --afl 1
refuses "what AFL++ finds" 'crashes/id:2' crash --afl 1
refuses "to remove an earlier finding" 'an earlier run found' good --afl 1
[ -e build/afl/campaign/one/found/default/crashes/id:2 ] ||
  { echo "an earlier finding is gone"; exit 1; }

refuses "a merge that crashed" 'FOUND, while merging' crash --minimise
refuses "an empty merge" 'nothing would be left' empty --minimise
[ "$(ls "$corpus")" = first ] || { echo "a corpus was changed"; exit 1; }
runs '^one: 1 inputs' good --minimise
[ "$(ls "$corpus")" = kept ] || { echo "a corpus was not changed"; exit 1; }

# What is left of a target that is gone is none.
cp build/fuzz/fuzz/area/one build/fuzz/fuzz/area/two
runs '^figures: one: 7 runs' good 1
echo '  Test #2: two_corpus' >> tests
refuses "a target without a corpus" 'put an input into fuzz/area/corpus/two' \
  good 1
