#!/bin/sh
# document_test.sh [--self-test] DOCUMENT DATA PROGRAM...
# Runs the commands that DOCUMENT shows, in a folder with the files of DATA, and
# compares what the programs print with what it shows.
set -eu
export LC_ALL=C.UTF-8

if [ "$1" = --self-test ]; then
  shift
  document=$1 data=$2 program=$3
  shift 2
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$document" "$data" "$@"
  # with WHAT MESSAGE SED_SCRIPT
  with() {
    sed "$3" "$document" > "$work/document"
    must_fail "$1" "$2" "$0" "$work/document" "$data" "$@"
  }
  with "a line that nobody prints" '^-  name        XX$' 's/name        CN$/name        XX/' "$@"
  with "another status" '^-7$' 's/^1$/7/' "$@"
  # shellcheck disable=SC2016  # backquotes, as they stand
  with "no commands" 'shows no command' 's/^```console/```/' "$@"
  fake "$(basename "$program")" 'echo else'
  must_fail "a program that prints something else" '^+else$' \
    "$0" "$document" "$data" "$@" "$work/$(basename "$program")"
  end_self_test
fi
document=$1 data=$2
shift 2
for program; do
  PATH=$(dirname "$program"):$PATH
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/folder"
cp "$data"/*.der "$work/folder"

# The lines between ```console and ```. Those that begin with "$ " are typed,
# and a shell with -v prints them as it goes.
awk '/^```console$/ {on = 1; next} /^```$/ {on = 0} on' "$document" \
  > "$work/shown"
[ -s "$work/shown" ] || { echo "$document shows no command"; exit 1; }
sed -n 's/^\$ //p' "$work/shown" > "$work/typed"
sed 's/^\$ //' "$work/shown" > "$work/wanted"
cd "$work/folder"
sh -v "$work/typed" > "$work/printed" 2>&1 < /dev/null || :
diff -u "$work/wanted" "$work/printed"
