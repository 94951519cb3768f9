#!/bin/sh
# every_tool_test.sh [--self-test] PROGRAM MAN_PAGE COMPLETION DOCUMENT
# What every command-line program promises alike: its help and its messages, its
# manual page, its completion in bash, and the exit statuses of DOCUMENT.
set -eu
export LC_ALL=C.UTF-8
for command in man bash; do
  command -v "$command" > /dev/null ||
    { echo "skipped: there is no $command"; exit 77; }
done

if [ "$1" = --self-test ]; then
  program=$2 page=$3 completion=$4 document=$5
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$program" "$page" "$completion" "$document"
  name=$(basename "$program")
  # with WHAT MESSAGE SCRIPT: another program, of the same name.
  with() {
    fake "bin/$name" "real='$program'
$3"
    must_fail "$1" "$2" "$0" "$work/bin/$name" "$page" "$completion" "$document"
  }
  # shellcheck disable=SC2016  # what the changed program does
  {
    with "a long help" 'more than 24 lines' \
      '"$real" "$@" || exit; seq 24'
    with "a wide help" 'more than 80 columns' \
      '"$real" "$@" | sed "1s/\$/$(printf %80s .)/"; exit "$?"'
    with "no help" 'exit status 2, wanted 0' 'exec "$real" --nosuch'
    with "another name" 'output, wanted' \
      '"$real" "$@" | sed "s/(korvan)/(other)/"'
    with "another version" 'is not the version of the manual page' \
      '"$real" "$@" | sed "s/korvan) .*/korvan) 9.9.9/"'
    with "usage on two lines" 'not one line' \
      '"$real" "$@"; status=$?; [ "$status" -ne 2 ] || echo >&2; exit "$status"'
    with "a usage error without a status" 'wanted 2' \
      '"$real" "$@"; status=$?; [ "$status" -ne 2 ] || exit 0; exit "$status"'
    with "no word of a full disk" 'dev/full' \
      '"$real" "$@"; status=$?; [ "$status" -ne 4 ] || exit 0; exit "$status"'
    with "other exit statuses" 'exit statuses of --help' \
      '"$real" "$@" > text; status=$?; sed "s/3 refused/3 denied/" text
       exit "$status"'
    with "an option more" 'does not name --more' \
      '"$real" "$@" > text; status=$?; cat text
       ! grep -q "  --help" text || echo "  --more  "; exit "$status"'
  }
  # page_with WHAT MESSAGE SED_SCRIPT, and the like for the other files.
  page_with() {
    sed "$3" "$page" > "$work/page.1"
    must_fail "$1" "$2" "$0" "$program" "$work/page.1" "$completion" "$document"
  }
  page_with "a manual page with an unknown request" 'warning' \
    '2s/^/.NOSUCH\n/'
  page_with "a manual page with another table" 'exit statuses of .*page.1' \
    's/^refused$/denied/'
  page_with "a manual page without examples" 'no section EXAMPLES' \
    's/^.SH EXAMPLES/.SH MORE/'
  page_with "a manual page that misses an option" 'does not name --version' \
    's/-version/-edition/'
  sed 's/--version//' "$completion" > "$work/completion"
  must_fail "a completion that misses an option" 'completes' \
    "$0" "$program" "$page" "$work/completion" "$document"
  sed 's/| refused |/| denied |/' "$document" > "$work/document"
  must_fail "a document with another table" 'exit statuses of .*document' \
    "$0" "$program" "$page" "$completion" "$work/document"
  end_self_test
fi
program=$1 page=$2 completion=$3 document=$4
name=$(basename "$program")
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

one_line() {
  [ "$(wc -l < err)" -eq 1 ] || fail "not one line: $(cat err)"
}

# Help and version.
expect 0 "^Usage: $name" '' --help
[ "$(wc -l < out)" -le 24 ] || fail "--help prints more than 24 lines"
awk 'length > 80 {exit 1}' out || fail "--help prints more than 80 columns"
mv out help
expect 0 "^$name (korvan) [0-9.]*\$" '' --version
[ "$(wc -l < out)" -eq 1 ] || fail "--version prints $(cat out)"
grep -q "^.TH .*\"korvan $(sed 's/.* //' out)\"" "$page" ||
  fail "$(cat out) is not the version of the manual page"
LC_ALL=xx_YY
expect 0 "^Usage: $name" 'the locale of the environment is unknown' --help
one_line
LC_ALL=C.UTF-8

# A wrong call is told in one line.
expect 2 '' "^$name: unknown option '--nosuch' (try --help)\$" --nosuch
one_line
expect 2 '' "^$name: .*unknown option.*u{1B}" "--$(printf '\033')"
one_line
expect 2 '' "^$name: .* (try --help)\$"
one_line

# One table of exit statuses.
printf '%s\n' '0 done' '1 not found' '2 usage' '3 refused' \
  "4 can't read or write" > statuses
sed -n 's/^Exit status: \(.*\)\.$/\1/p' help | tr ',' '\n' | sed 's/^ //' |
  diff statuses - || fail "exit statuses of --help, behind <"
awk '/^\.SH EXIT STATUS/ {on = 1; next} /^\.(SH|PP)/ {on = 0}
  on && /^\.B [0-9]/ {number = $2; next} on && !/^\./ {print number, $0}' \
  "$page" | diff statuses - || fail "exit statuses of $page, behind <"
sed -n 's/^| \([0-9]\) | \(.*\) |$/\1 \2/p' "$document" |
  diff statuses - || fail "exit statuses of $document, behind <"

# The manual page.
MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" \
  2> err > /dev/null || fail "man: $(cat err)"
[ ! -s err ] || fail "a warning: $(cat err)"
MANWIDTH=80 man -E UTF-8 -l "$page" | sed 's/.\x08//g' > text
for section in NAME SYNOPSIS DESCRIPTION OPTIONS 'EXIT STATUS' EXAMPLES; do
  grep -q "^$section\$" text || fail "$page has no section $section"
done
sed -n 's/^  \(--[a-z-]*\).*/\1/p' help | sort > options
[ "$(wc -l < options)" -ge 4 ] || fail "no options are seen: $(cat help)"
while read -r option; do
  grep -q -e "^ *$option" text || fail "$page does not name $option"
done < options

# The completion offers the options of the help.
# shellcheck disable=SC2016  # for bash
bash -c '. "$1"; COMP_WORDS=("$2" --) COMP_CWORD=1
  "_${2##*/}"; printf "%s\n" "${COMPREPLY[@]}"' bash "$completion" "$program" |
  sort | diff options - || fail "< --help names, > $completion completes"

# What can't be written is.
for order in --help --version; do
  expect_full_disk 4 "^$name: .*can't be written: No space left" $order
  one_line
  got=0
  "$program" $order >&- 2> err || got=$?
  : > out
  judge "$name $order >&-" 4 '' "^$name: .*can't be written: Bad file"
done
