#!/bin/sh
# readme_test.sh README SOURCE PROGRAM
# Fails unless README shows SOURCE, and what PROGRAM, built from it, prints.
set -eu
readme=$1 source=$2 program=$3
sed -n '/^```cpp$/,/^```$/p' "$readme" | sed '1d;$d' | diff -u "$source" -
grep -F -- "$("$program")" "$readme" > /dev/null || {
  echo "$readme does not show what the program prints:"
  "$program"
  exit 1
}
