#!/bin/sh
# manual_pages.sh [--self-test] FOLDER SYMBOLS
# The manual pages in FOLDER/man3: nine, and every exported function leads to
# its one, by its name and by a search; groff finds nothing odd. The folder
# SYMBOLS has the lists of the exported symbols.
set -eu
export LC_ALL=C.UTF-8
if [ "$1" = --self-test ]; then
  script=$0 pages=$2 symbols=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # with WHAT MESSAGE SCRIPT: other pages, changed where they are.
  with() {
    rm -rf "$work/man"
    cp -r "$pages" "$work/man"
    (cd "$work/man/man3" && eval "$3")
    must_fail "$1" "$2" "$script" "$work/man" "$symbols"
  }
  must_pass "the pages as they are" "$script" "$pages" "$symbols"
  with "a page less" '^8 pages' 'rm korvan_text.3'
  with "a function without a link" 'No manual entry for FindOIDInfo' \
    'rm FindOIDInfo.3'
  with "a method without a link" 'No manual entry for CIniFileW::RenameKey' \
    'rm CIniFileW::RenameKey.3'
  with "a function that is not explained" 'Trim is not explained' \
    'sed -i "s/^\.SS Trim/.SS Other/" korvan_text.3'
  with "an operator that is not explained" 'operator<< is not explained' \
    'sed -i "s/^\.SS operator<</.SS Other/" korvan_*.3'
  with "a link to another page" 'FindOIDInfo is not explained' \
    'echo .so man3/korvan_text.3 > FindOIDInfo.3'
  with "a name that no search finds" 'no page has FindOIDInfo in its index' \
    'sed -i "/^korvan/s/FindOIDInfo, //" korvan_oid_info.3'
  with "a destructor that no search finds" \
    'no page has IdentObj::~IdentObj in its index' \
    'sed -i "/^korvan/s/IdentObj::~IdentObj, //" korvan_asn1_record.3'
  mkdir "$work/symbols"
  must_fail "no symbols" 'no function is exported' \
    "$script" "$pages" "$work/symbols"
  with "an unknown macro" 'warning' 'echo .XY >> korvan_text.3'
  end_self_test
fi
pages=$1 symbols=$2

shown=$(mktemp -d)
trap 'rm -rf "$shown"' EXIT
count=0
for page in "$pages"/man3/korvan*.3; do
  count=$((count + 1))
  MANWIDTH=400 man --warnings -l -Tutf8 "$page" > "$shown/text" 2> "$shown/err"
  [ ! -s "$shown/err" ] || { echo "$page:"; cat "$shown/err"; exit 1; }
  # As plain text, the headings alone.
  sed 's/\x1b\[[0-9;]*m//g; s/.\x08//g' "$shown/text" | grep '^   [^ ]' \
    > "$shown/${page##*/}" || true
done
[ "$count" -eq 9 ] || { echo "$count pages, not 9"; exit 1; }

names=$(lexgrog "$pages"/man3/korvan*.3)
# Without their arguments, and C's, whose symbols have none.
functions=$(cat "$symbols"/exported_*symbols.txt | sed 's/^korvan:://' |
  sed -n 's/operator()(.*/operator()/p; t; s/(.*//p; /^[GS]etLastError$/p' |
  sort -u)
[ -n "$functions" ] || { echo "no function is exported"; exit 1; }
for function in $functions; do
  case $function in
    # Nobody asks for these by their names.
    *~* | *operator*) page='korvan*.3' ;;
    *) page=$(man -M "$pages" -w 3 "$function")
      page=${page##*/} ;;
  esac
  # shellcheck disable=SC2086  # a pattern
  grep -q -x -F -e "   $function" "$shown"/$page ||
    { echo "$function is not explained on its page"; exit 1; }
  printf '%s\n' "$names" | grep -q -F -e "\"$function - " ||
    { echo "no page has $function in its index"; exit 1; }
done
