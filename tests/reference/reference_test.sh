#!/bin/sh
# reference_test.sh [--self-test] PYTHON MADE SYMBOLS
# What reference_test.py looks at, in what the target docs has MADE, with the
# lists of exported symbols in the folder SYMBOLS.
set -eu
test=$(dirname "$0")/reference_test.py
# looked_at PYTHON MADE SYMBOLS
looked_at() {
  "$1" -B "$test" "$2/html" "$2/xml" "$3/exported_symbols.txt" \
    "$3/exported_platform_symbols.txt"
}

if [ "$1" = --self-test ]; then
  python=$2 made=$3 symbols=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # without WHAT MESSAGE FILE SED: another reference.
  without() {
    rm -rf "$work/made"
    mkdir "$work/made"
    cp -r "$made/html" "$made/xml" "$work/made"
    sed -i "$4" "$work/made/$3"
    must_fail "$1" "$2" looked_at "$python" "$work/made" "$symbols"
  }
  namespace=xml/namespacekorvan.xml
  must_pass "the reference as it is" looked_at "$python" "$made" "$symbols"
  without "an example" '^  what it does, arguments, result, errors,' \
    $namespace 's/verbatim>/computeroutput>/g'
  without "a word of threads" 'ownership, ownership, exceptions, but should' \
    $namespace 's/<title>Threads</<title>Ownership</'
  without "a function" '^korvan::FindOIDInfo is exported, but not explained' \
    $namespace 's/korvan::FindOIDInfo</korvan::Other</'
  without "a page" 'links to none.html, which is not there' \
    html/files.html 's/"oid__info_8h.html"/"none.html"/'
  without "a place" 'links to #none, a place that is not there' \
    html/index.html '1s/^/<a href="#none"><\/a>/'
  without "an image" 'performance_page.html shows the command @image' \
    html/performance_page.html "\$s/^/@image/"
  mkdir "$work/empty"
  must_fail "no reference" 'nothing to look at\|is exported, but not' \
    looked_at "$python" "$work/empty" "$symbols"
  end_self_test
fi
looked_at "$@"
