#!/bin/sh
# is_small.sh [--self-test] STRIP LIBRARY MOST
# Fails unless LIBRARY without its symbols, as packages hold it, is smaller than
# MOST KiB.
set -eu

if [ "$1" = --self-test ]; then
  script=$0 strip=$2 library=$3 most=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the library as it is" "$script" "$strip" "$library" "$most"
  must_fail "a smaller limit" '^it should be smaller than 10 KiB$' \
    "$script" "$strip" "$library" 10
  head -c 100000 /dev/zero > "$work/zeros"
  objcopy --add-section .more="$work/zeros" \
    --set-section-flags .more=alloc,readonly "$library" "$work/larger.so" \
    2> "$work/log"
  must_fail "100,000 bytes more" '^it should be smaller than ' \
    "$script" "$strip" "$work/larger.so" "$most"
  must_fail "no library" 'No such file' "$script" "$strip" "$work/none.so" 1
  end_self_test
fi
strip=$1 library=$2 most=$3

stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
"$strip" -o "$stripped" "$library"
size=$(wc -c < "$stripped")
echo "$(basename "$library") has $size bytes"
if [ "$size" -ge $((most * 1024)) ]; then
  echo "it should be smaller than $most KiB"
  exit 1
fi
