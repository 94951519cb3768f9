#!/bin/sh
# debian_symbols.sh [--self-test] SYMBOLS LIST [VERSION]
# Fails unless SYMBOLS, a file that Debian's package of a library has, tells of
# exactly the symbols of LIST, demangled, and of all of them under VERSION (under
# no version, which is Base there, when it is left out).
set -eu
export LC_ALL=C

if [ "$1" = --self-test ]; then
  symbols=$2 list=$3 version=${4:-}
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the file as it is" "$0" "$symbols" "$list" "$version"
  breaks() {  # breaks WHAT MESSAGE SED_SCRIPT
    sed "$3" "$symbols" > "$work/symbols"
    must_fail "$1" "$2" "$0" "$work/symbols" "$list" "$version"
  }
  # shellcheck disable=SC2016  # for sed
  {
    # The two symbols of a constructor have one name when they are demangled.
    breaks "one symbol instead of another" '^stands twice: ' 's/C2E/C1E/'
    breaks "a symbol too few" '^-' '$d'
    breaks "a symbol too many" '^+NoSuchFunction()' \
      '$s/.*\(@.*\)/&\n _Z14NoSuchFunctionv\1/'
    breaks "another version of a symbol" 'not understood:' \
      '$s/@[^ ]*/@OTHER_1.0/'
    breaks "a symbol of a revision" 'not understood:' '$s/$/-1/'
    breaks "a symbol that may be missing" 'not understood:' \
      '$s/^ / (optional)/'
    breaks "a symbol that is gone" 'not understood:' '$s/^/#MISSING: 1.0.0#/'
  }
  must_fail "no file" 'No such file' "$0" "$work/none" "$list" "$version"
  must_fail "an empty file" '^-' "$0" /dev/null "$list" "$version"
  end_self_test
fi
symbols=$1 list=$2 version=${3:-Base}

# Each line is the head of the file, or ` SYMBOL@VERSION SINCE`.
others=$(awk -v version="$version" '
  NR == 1 && / #MINVER#$/ {next}
  NR == 2 && /^\* Build-Depends-Package: / {next}
  /^ / && NF == 2 && split($1, part, "@") == 2 && part[2] == version &&
    part[1] ~ /^[A-Za-z0-9_.]+$/ && $2 ~ /^[0-9.]+$/ {next}
  {print}' "$symbols")
if [ -n "$others" ]; then
  printf '%s, version "%s": not understood:\n%s\n' "$symbols" "$version" "$others"
  exit 1
fi
names=$(sed -n 's/^ \(.*\)@.*/\1/p' "$symbols")
twice=$(printf '%s\n' "$names" | sort | uniq -d)
if [ -n "$twice" ]; then
  printf 'stands twice: %s\n' "$twice"
  exit 1
fi
printf '%s\n' "$names" | "$(dirname "$0")/../binary/short_names.sh" |
  diff -u "$list" - || {
  echo "the symbols of $symbols are not those of $list"
  exit 1
}
