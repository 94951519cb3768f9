#!/bin/sh
# printers_test.sh [--self-test] GDB PROGRAM PRINTERS TRANSCRIPT
# Types the commands that TRANSCRIPT shows after "(gdb)" into GDB, where PROGRAM
# has stopped, and compares what GDB prints with what the transcript shows. Of a
# document, the transcript is the lines between ```gdb and ```. There are no
# printers but those of the file PRINTERS, and no function may be called.
set -eu
export LC_ALL=C.UTF-8
if [ "$1" = --self-test ]; then
  gdb=$2 program=$3 printers=$4 transcript=$5
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$gdb" "$program" "$printers" "$transcript"
  # with WHAT MESSAGE SED_SCRIPT: other printers
  with() {
    sed "$3" "$printers" > "$work/printers.py"
    ! cmp -s "$printers" "$work/printers.py" || { echo "not broken: $1"; exit 1; }
    must_fail "$1" "$2" "$0" "$gdb" "$program" "$work/printers.py" "$transcript"
  }
  with "no printers" '^+.*_M_t' '/^register(/d'
  with "printers that can't be loaded" '^+.*SyntaxError' '1s/^/(/'
  with "printers that raise" '^+.*Python Exception' \
    's/^    shown = min(length, limit())/    raise KeyError("none")/'
  with "another word" '^-.*section ' 's/f"section {/f"part {/'
  with "a call of the program" '^+.*<unreadable>' \
    's/^    return value.format_string/    gdb.parse_and_eval("Stop()")\n&/'
  grep -v '^(gdb)' "$transcript" > "$work/transcript"
  must_fail "no commands" 'shows no command' \
    "$0" "$gdb" "$program" "$printers" "$work/transcript"
  must_fail "a program that does not stop" 'does not stop' \
    "$0" "$gdb" /bin/true "$printers" "$transcript"
  fake gdb 'sleep 2'
  must_fail "a GDB that does not end" 'takes more than 1 s' \
    env SECONDS_OF_GDB=1 "$0" "$work/gdb" "$program" "$printers" "$transcript"
  end_self_test
fi
gdb=$1 program=$2 printers=$3 transcript=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A line with "#" tells what comes.
case $transcript in
  *.md) awk '/^```gdb$/ {on = 1; next} /^```$/ {on = 0} on' "$transcript" ;;
  *) grep -v '^#' "$transcript" ;;
esac > "$work/wanted"
sed -n 's/^(gdb) //p' "$work/wanted" > "$work/typed"
[ -s "$work/typed" ] || { echo "$transcript shows no command"; exit 1; }

# With trace-commands GDB prints what it does, after a "+".
seconds=${SECONDS_OF_GDB:-60}
status=0
timeout "$seconds" "$gdb" -nx -batch \
  -iex 'set auto-load python-scripts off' -iex 'set debuginfod enabled off' \
  -ex 'set width 0' -ex 'break Stop' -ex run -ex 'set may-call-functions off' \
  -ex 'echo ---\n' -ex "source $printers" -ex 'set trace-commands on' \
  -x "$work/typed" "$program" > "$work/all" 2>&1 < /dev/null || status=$?
if [ "$status" -eq 124 ]; then
  echo "GDB takes more than $seconds s"
  exit 1
fi
sed '1,/^---$/d; s/^+/(gdb) /' "$work/all" > "$work/printed"
if ! grep -q '^Breakpoint 1, ' "$work/all"; then
  cat "$work/all"
  echo "$program does not stop"
  exit 1
fi
diff -u "$work/wanted" "$work/printed"
