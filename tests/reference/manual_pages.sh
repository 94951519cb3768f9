#!/bin/sh
# manual_pages.sh [--self-test] FOLDER
# The manual pages in FOLDER/man3: nine, and every function leads to its one, by
# its name and by a search; groff finds nothing odd.
set -eu
export LC_ALL=C.UTF-8
if [ "$1" = --self-test ]; then
  script=$0 pages=$2
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # with WHAT MESSAGE SCRIPT: other pages, changed where they are.
  with() {
    rm -rf "$work/man"
    cp -r "$pages" "$work/man"
    (cd "$work/man/man3" && eval "$3")
    must_fail "$1" "$2" "$script" "$work/man"
  }
  must_pass "the pages as they are" "$script" "$pages"
  with "a page less" '^8 pages' 'rm korvan_text.3'
  with "a function without a link" 'No manual entry for FindOIDInfo' \
    'rm FindOIDInfo.3'
  with "a link to another page" 'FindOIDInfo is not explained' \
    'echo .so man3/korvan_text.3 > FindOIDInfo.3'
  with "a name that no search finds" 'no page has FindOIDInfo in its index' \
    'sed -i "/^korvan/s/FindOIDInfo, //" korvan_oid_info.3'
  with "an unknown macro" 'warning' 'echo .XY >> korvan_text.3'
  end_self_test
fi
pages=$1

count=0
for page in "$pages"/man3/korvan*.3; do
  count=$((count + 1))
  warnings=$(man --warnings -l -Tutf8 "$page" 2>&1 > /dev/null)
  [ -z "$warnings" ] || { printf '%s: %s\n' "$page" "$warnings"; exit 1; }
done
[ "$count" -eq 9 ] || { echo "$count pages, not 9"; exit 1; }

shown=$(mktemp)
trap 'rm -f "$shown"' EXIT
names=$(lexgrog "$pages"/man3/korvan*.3)
for function in FindOIDInfo KRVConvertPublicKeyInfo LoadString_korvan Trim \
  CIniFileA::CIniSectionA::AddKey GetLastError CASNTBaseRecord::GetTag; do
  MANWIDTH=400 man -M "$pages" 3 "$function" > "$shown"
  grep -q "^   $function" "$shown" ||
    { echo "$function is not explained on its page"; exit 1; }
  printf '%s\n' "$names" | grep -q -F -e "\"$function - " ||
    { echo "no page has $function in its index"; exit 1; }
done
