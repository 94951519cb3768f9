#!/bin/sh
# exports_only.sh LIBRARY LIST [VERSION]
# Fails unless LIBRARY exports exactly the symbols of LIST, demangled, and all
# of them under VERSION (under no version when it is left out).
set -eu
export LC_ALL=C
library=$1 list=$2 version=${3:-}

exported=$(nm -D --defined-only "$library")
if [ -n "$version" ]; then
  strangers=$(printf '%s\n' "$exported" | awk '{print $3}' |
    grep -v -e "@@$version\$" -e "^$version\$" || true)
else
  strangers=$(printf '%s\n' "$exported" | grep '@' || true)
fi
if [ -n "$strangers" ]; then
  printf 'not under version "%s":\n%s\n' "$version" "$strangers"
  exit 1
fi
# Constructors and destructors have two symbols of one name.
printf '%s\n' "$exported" | awk '{print $3}' | sed 's/@@.*//' | c++filt |
  sort -u | diff -u "$list" - || {
  echo "the exported symbols are not those of $list"
  exit 1
}
