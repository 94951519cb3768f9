#!/bin/sh
# initool_completion_test.sh [--self-test] INITOOL COMPLETION
# What bash offers by the file COMPLETION: commands, options, files, and what
# the file that is given holds.
set -eu
export LC_ALL=C.UTF-8
command -v bash > /dev/null || { echo "skipped: there is no bash"; exit 77; }

if [ "$1" = --self-test ]; then
  program=$2 completion=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$program" "$completion"
  # with WHAT MESSAGE SED_SCRIPT: another completion.
  with() {
    sed "$3" "$completion" > "$work/completion"
    must_fail "$1" "$2" "$0" "$program" "$work/completion"
  }
  with "a command less" 'offers' 's/get list lint set/get list set/'
  with "an option less" 'offers' 's/ --wide//'
  with "names that are not quoted" 'offers' 's/printf %q/printf %s/'
  with "keys for sections" 'offers' 's/_initool_field 1 /_initool_field 2 /'
  with "keys of all sections" 'offers' 's/@]:1:2/@]:1:1/'
  with "options that count as arguments" 'offers' 's/-?\*) ;;/none) ;;/'
  with "no files to merge" 'offers' 's/ | 2:merge//'
  with "a file that bash can't read" 'syntax error' 's/esac//'
  must_fail "no program" 'offers' "$0" "$work/none/initool" "$completion"
  end_self_test
fi
program=$1 completion=$2
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

# offers WANTED WORD...: with the cursor at the end of the last word, bash
# offers WANTED.
offers() {
  wanted=$1
  shift
  shown=$(offered "$completion" "$program" "$@")
  [ "$shown" = "$wanted" ] ||
    fail "bash offers '$shown', not '$wanted': initool $*"
}
makes one.ini '[Main]\n[key=v\n[kind=w\n[Two words]\n[k"=1\n[Empty]\n'
makes second.ini ''
offers 'get,list,lint,set,rename,remove,merge,' ''
offers 'list,lint,'                             li
offers 'set,'                                   --wide set
offers '--wide,'                                --w
offers '--lossy,'                               set one.ini Main --l
offers '--help,--version,--json,--tsv,--wide,--lossy,' lint one.ini --
for command in get list lint set rename remove merge; do
  offers 'one.ini,'                             $command on
done
offers 'second.ini,'                            merge one.ini se
offers 'Empty,Main,Two\ words,'                 get one.ini ''
offers 'Main,'                                  --wide remove --lossy one.ini M
offers 'Two words,'                             list one.ini '"Two'
offers '\[key,\[kind,'                          set one.ini Main ''
offers '\[kind,'                                rename one.ini Main '\[ki'
offers '[kind,'                                 get one.ini Main "'[ki"
offers '\[k\",'                                 get one.ini 'Two\ words' ''
offers '\[k\",'                                 get one.ini '"Two words"' '\['
offers ','                                      get one.ini Empty ''
offers ','                                      lint one.ini ''
offers ','                                      list one.ini Main ''
offers ','                                      get none.ini ''
offers ','                                      get - '' < /dev/zero
