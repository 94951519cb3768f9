#!/bin/sh
# completion_test.sh [--self-test] OIDINFO COMPLETIONS
# What bash offers for the values of oidinfo's and keyblob's options, by the
# files in the folder COMPLETIONS.
set -eu
export LC_ALL=C.UTF-8
command -v bash > /dev/null || { echo "skipped: there is no bash"; exit 77; }

if [ "$1" = --self-test ]; then
  program=$2 completions=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$program" "$completions"
  # with WHAT MESSAGE FILE SED_SCRIPT: another completion.
  with() {
    rm -rf "$work/completions"
    cp -r "$completions" "$work/completions"
    sed "$4" "$completions/$3" > "$work/completions/$3"
    must_fail "$1" "$2" "$0" "$program" "$work/completions"
  }
  with "names that are not quoted" 'offers' oidinfo 's/printf %q/printf %s/'
  with "no group 20" 'offers' oidinfo 's/ 8 20/ 8/'
  with "ALG_IDs of another field" 'offers' oidinfo 's/_oidinfo_field 8/&0/'
  with "an option more" 'offers' oidinfo 's/--group --all/--group --grow --all/'
  with "an option that is there no more" 'offers' keyblob \
    's/--check --out/--check --output --out/'
  with "what holds the word anywhere" 'offers' oidinfo \
    's/== \("[^"]*"\)\*/== *\1*/'
  with "OIDs of all groups" 'offers' keyblob 's/--group 3/--all/'
  with "no OIDs of algorithms" 'offers' keyblob 's/--group 3/--group 9/'
  with "a file that bash can't read" 'syntax error' keyblob 's/esac//'
  must_fail "no program" 'offers' "$0" "$work/none/oidinfo" "$completions"
  end_self_test
fi
program=$1 completions=$2
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"
PATH=$(dirname "$program"):$PATH

# offers WANTED WORD...: with the cursor at the end of the last word, bash
# offers WANTED and nothing else.
offers() {
  wanted=$1 call="$*"
  shift
  shown=$(offered "$completions/$1" "$@")
  [ "$shown" = "$wanted" ] ||
    fail "bash offers '$shown', not '$wanted': $call"
}
offers '--help,--version,--json,--tsv,--oid,--name,--algid,--sign,--group,--all,' \
  oidinfo -
offers '--help,--version,--json,--tsv,--from-blob,--oid,--check,--out,' \
  keyblob --
offers '1,2,3,4,5,6,7,8,20,'            oidinfo --group ''
offers '--group,'                       oidinfo --g
offers '1.2.643.2.2.19,'                oidinfo 1.2.643.2.2.19
offers '1.2.643.2.2.20,1.2.643.2.2.21,' oidinfo --oid 1.2.643.2.2.2
offers '0x2E1E,0x2E23,0x2E29,'          oidinfo 0x2E
offers '0x2E1E,0x2E23,0x2E29,'          oidinfo --json --algid 0x2E
offers 'Common\ Name,'                  oidinfo Comm
offers 'Common\ Name,'                  oidinfo --name 'Common\ N'
offers 'Common Name,'                   oidinfo '"Common N'
offers 'Common Name,'                   oidinfo "'Common N"
offers '2,20,'                          oidinfo --group 2
offers ','                              oidinfo --sign 0
offers ','                              oidinfo nothing
offers '--from-blob,'                   keyblob a --f
offers ','                              keyblob --out a
offers '1.2.643.2.2.19,'                keyblob --oid 1.2.643.2.2.19
offers '1.3.14.3.2.22,'                 keyblob --oid 1.3.14.3.2.2
