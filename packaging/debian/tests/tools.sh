#!/bin/sh
# tools.sh
# Runs each of the installed programs once. For autopkgtest, which starts it in
# the source folder.
set -eu
work=${AUTOPKGTEST_TMP:?}
oidinfo 1.2.643.2.2.19 > "$work/out"
grep -q 'GOST R 34\.10-2001' "$work/out" || { cat "$work/out"; exit 1; }

keyblob examples/data/gost2001-A.der --check > "$work/out"
grep -q 'comes out byte for byte' "$work/out" || { cat "$work/out"; exit 1; }

initool set "$work/one.ini" Provider '[Type' 75
type=$(initool get "$work/one.ini" Provider '[Type')
[ "$type" = 75 ] || { echo "initool gets '$type'"; exit 1; }
echo "oidinfo, keyblob and initool do as they should"
