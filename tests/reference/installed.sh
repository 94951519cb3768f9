#!/bin/sh
# installed.sh [--self-test] PYTHON CMAKE BUILD_DIR HEADERS WORK_DIR
# The component `docs` installs the reference, all documents that HEADERS name,
# and what the documents link to.
set -eu
if [ "$1" = --self-test ]; then
  script=$0 python=$2 cmake=$3 build=$4 headers=$5
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # without WHAT MESSAGE FILE: an installation that lacks FILE.
  without() {
    fake cmake "'$cmake' \"\$@\" && find '$work/work' -name '$3' -delete"
    must_fail "$1" "$2" "$script" "$python" "$work/cmake" "$build" "$headers" \
      "$work/work"
  }
  without "a front page" 'html/index.html is not installed' index.html
  without "a manual page" 'FindOIDInfo.3 is not installed' FindOIDInfo.3
  without "an example" 'own_table.cc leads nowhere' own_table.cc
  without "a document" 'key_blob.md is not installed' key_blob.md
  end_self_test
fi
python=$1 cmake=$2 build=$3 headers=$4 work=$5
links=$(dirname "$0")/../docs/links.py
rm -rf "$work"
"$cmake" --install "$build" --prefix "$work" --component docs > /dev/null

named=$(grep -rhoE 'docs/[a-z_]+\.md' "$headers" | sort -u)
[ -n "$named" ] || { echo "the headers name no document"; exit 1; }
# shellcheck disable=SC2086  # a list of names
for file in html/index.html FindOIDInfo.3 $named; do
  [ -n "$(find "$work" -path "*/$file")" ] ||
    { echo "$file is not installed"; exit 1; }
done
top=$(dirname "$(find "$work" -name README.md -path '*/doc/*' | head -n 1)")
"$python" -B "$links" "$top"
