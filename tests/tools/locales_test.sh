#!/bin/sh
# locales_test.sh [--self-test] OIDINFO LOCALES [KEYBLOB]
# What the programs print in locales other than that of C, which are in the
# folder LOCALES: in which encoding, and which names the locale's rules for upper
# and lower case hide.
set -eu
if [ "$1" = --self-test ]; then
  program=$2 locales=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the program as it is" "$0" "$program" "$locales"
  # shellcheck disable=SC2016  # what the changed program does
  {
    changed "$program" "no word of a hidden name" "hide the name 'INN'" \
      '"$real" "$@" 2> text; status=$?; sed "/hide/d" text >&2; exit "$status"' \
      "$locales"
    changed "$program" "names found by the rules of C" 'exit status 0, wanted 1' \
      'LC_ALL=C.UTF-8 exec "$real" "$@"' "$locales"
    changed "$program" "JSON in the encoding of the locale" 'no JSON in UTF-8' \
      '[ "$1" = --json ] || exec "$real" "$@"
       "$real" "$@" > text; status=$?; iconv -f UTF-8 -t KOI8-R text
       exit "$status"' "$locales"
    changed "$program" "messages in UTF-8" 'has the name' \
      '"$real" "$@" 2> text; status=$?; iconv -f KOI8-R -t UTF-8 text >&2
       exit "$status"' "$locales"
  }
  must_fail "no locales" 'a locale is missing' "$0" "$program" "$work"
  end_self_test
fi
program=$1 locales=$2 keyblob=${3:-} here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/support/program_test.sh
. "$here/../support/program_test.sh"
export LC_ALL=C.UTF-8
members='{"lookups": 0}'
# shellcheck source=tests/tools/json_output.sh
. "$here/json_output.sh"
for locale in tr_TR.UTF-8 ru_RU.KOI8-R; do
  [ -s "$locales/$locale/LC_CTYPE" ] || fail "a locale is missing: $locale"
done
export LOCPATH="$locales"
# The C library never frees what it makes of LOCPATH for a built-in locale.
echo leak:argz_add_sep > leaks
export LSAN_OPTIONS="suppressions=$folder/leaks:print_suppressions=0"

# In Turkish the small letter of I is one without a dot.
LC_ALL=tr_TR.UTF-8
expect 1 '' "hide the name 'INN'" inn
grep -q 'is it' err && fail "a hidden name is suggested: $(cat err)"
expect 0 'name  *INN' '' INN
expect 0 'name  *INN' '' ınn
json "['INN']" 'lookups[0]["hidden"]' inn
expect 1 '' "hide the name 'I'\$" --group 5 i
LC_ALL=C.UTF-8
expect 0 'name  *INN' '' inn

# KOI8-R: arguments and messages are in it, JSON is not.
LC_ALL=ru_RU.KOI8-R
name=$(printf '\351\315\321')  # Имя
expect 1 '' "has the name '$name'" "$name"
json 'Имя' 'lookups[0]["key"]' "$name"
grep -q "$(printf '\320\230\320\274\321\217')" out || fail "JSON is not UTF-8"

[ -n "$keyblob" ] || exit 0
# A subject in UTF-8 goes out in KOI8-R, and what that lacks is escaped.
LC_ALL=C.UTF-8
openssl req -x509 -newkey rsa:2048 -nodes -keyout /dev/null -utf8 \
  -subj "/CN=Имя €" -outform DER -out certificate.der 2> /dev/null
program=$keyblob
LC_ALL=ru_RU.KOI8-R
for option in '' --tsv; do
  expect 0 "CN = $name .u{20AC}" '' certificate.der $option
done
members='{"keys": 0}'
json 'CN = Имя €' 'keys[0]["subject"]' certificate.der
