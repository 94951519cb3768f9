#!/bin/sh
# initool_test.sh [--self-test] INITOOL
set -eu
export LC_ALL=C.UTF-8

if [ "$1" = --self-test ]; then
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the program as it is" "$0" "$2"
  # shellcheck disable=SC2016  # what the changed program does
  {
    changed "$2" "no results" 'wanted ^value' '"$real" "$@" > /dev/null'
    changed "$2" "messages where results go" 'wanted none:' '"$real" "$@" 2>&1'
    changed "$2" "failures without a status" 'exit status 0, wanted 1' \
      '"$real" "$@" || exit 0'
    changed "$2" "one status for all failures" 'exit status 1, wanted 3' \
      '"$real" "$@" || exit 1'
    changed "$2" "empty sections not listed, but refused" 'list .* Empty$' \
      '[ "$*" != "list clean.ini Empty" ] || exit 1; exec "$real" "$@"'
    changed "$2" "usage instead of a change" 'wanted none:' \
      '[ "$1" != set ] || exec "$real" --help; exec "$real" "$@"'
    changed "$2" "nothing changed" 'clean.ini should hold' \
      '[ "$1" != set ] || exit 0; exec "$real" "$@"'
    changed "$2" "no --wide" 'no section .имя' \
      '[ "$1" != --wide ] || shift; exec "$real" "$@"'
    changed "$2" "no --lossy" '^changed --lossy set' \
      '[ "$1" != --lossy ] || shift; exec "$real" "$@"'
    changed "$2" "--lossy unasked" 'exit status 0, wanted 3' \
      '"$real" --lossy "$@"'
    changed "$2" "a link replaced by the file" 'symbolic links did not stay' \
      '"$real" "$@"; status=$?
       [ ! -L "$2" ] || { cat "$2" > link; rm "$2"; mv link "$2"; }
       exit "$status"'
    changed "$2" "other permission bits" 'the mode did not stay' \
      '"$real" "$@"; status=$?; [ ! -f "$2" ] || chmod 644 "$2"; exit "$status"'
    changed "$2" "a half of a new file left behind" 'left behind' \
      '"$real" "$@"; status=$?
       case $*$status in *vvv4) : > real/.initool-x ;; esac; exit "$status"'
    changed "$2" "no word of a limit" 'beyond a limit' \
      '"$real" "$@"; status=$?; case $*$status in *vvv4) exit 0 ;; esac
       exit "$status"'
  }
  must_fail "no program" 'exit status 127' "$0" "$work/none"
  end_self_test
fi
program=$1
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

# Reading.
makes clean.ini '[Main]\n[key=value \n[other = 2\n[Empty]\n'
expect 0 '^value $'     '' get  clean.ini Main '[key'
expect 0 '^value $'     '' get  clean.ini ' MAIN' '[KEY '
expect 0 '^\[other= 2$' '' list clean.ini
expect 0 '^\[key=value' '' list clean.ini main
expect 1 '' "no section 'Man'"                get  clean.ini Man '[key'
expect 1 '' "no key '\[k' in section 'Main'"  get  clean.ini Main '[k'
expect 1 '' "no key 'key'.*'\[key' is there"  get  clean.ini Main key
expect 1 '' "no section 'Man'"                list clean.ini Man
expect 0 '' '' list clean.ini Empty

# Editing.
expect 0 '' '' set clean.ini Main '[key' new
expect 0 '' '' set clean.ini Added '[k' ' blanks '
holds clean.ini '[Added]\n[k= blanks \n[Empty]\n[Main]\n[key=new\n[other= 2\n'
expect 0 '' '' rename clean.ini Main '[other' '[another'
expect 0 '' '' rename clean.ini Added Moved
expect 0 '' '' remove clean.ini Empty
expect 0 '' '' remove clean.ini Main '[key'
holds clean.ini '[Main]\n[another= 2\n[Moved]\n[k= blanks \n'
expect 1 '' "'MOVED' is taken"    rename clean.ini Main MOVED
expect 1 '' "'\[K' is taken"      rename clean.ini Moved '[k' '[K'
expect 1 '' "no section 'Gone'"   rename clean.ini Gone New
expect 1 '' "no key '\[gone'"     rename clean.ini Main '[gone' '[new'
expect 1 '' "no section 'Gone'"   remove clean.ini Gone
expect 1 '' "no key '\[gone'"     remove clean.ini Main '[gone'
holds clean.ini '[Main]\n[another= 2\n[Moved]\n[k= blanks \n'
expect 0 '' '' set made.ini S '[k' v
holds made.ini '[S]\n[k=v\n'
[ "$(stat -c %a made.ini)" = "$(printf %o $((0666 & ~$(umask))))" ] ||
  fail "a new file has the mode $(stat -c %a made.ini)"
expect 0 '' '' set made.ini S '[--k' --lossy

# Merging.
makes other.ini '# note\n[k=before any header\n[s]\n[K=2\nplain=3\n[T]\n'
expect 0 '' '3 lines of other.ini .*not merged' merge made.ini other.ini
holds made.ini '[S]\n[--k=--lossy\n[k=2\n[T]\n'
expect 0 '' '' merge merged.ini made.ini
cmp -s made.ini merged.ini || fail "merging into nothing is no copy"

# What would be lost is told, and nothing is written.
lossy='# about\n\n[Main]\nname=value\n \t\r\n[k=v\n; end'
makes lossy.ini "$lossy"
expect 3 '' '3 lines of lossy.ini .*would be lost' set    lossy.ini Main '[k' 2
expect 3 '' '3 lines of lossy.ini .*would be lost' rename lossy.ini Main New
expect 3 '' '3 lines of lossy.ini .*would be lost' remove lossy.ini Main
expect 3 '' '3 lines of lossy.ini .*would be lost' merge  lossy.ini made.ini
expect 0 '^\[k=v$' '3 lines of lossy.ini .*not listed' list lossy.ini
expect 1 '' "no key 'name'.*3 lines of lossy.ini"  get    lossy.ini Main name
holds lossy.ini "$lossy"
expect 0 '' '3 lines of lossy.ini .*is lost' --lossy set lossy.ini Main '[k' 2
holds lossy.ini '[Main]\n[k=2\n'
makes early.ini '[k=no header yet\n[S]\n[1=a\n[1=b\n'
expect 3 '' '1 line of early.ini' remove early.ini S
makes early.ini '[S]\n[1=a\n[1=b\n'
expect 0 '' '' set early.ini S '[2' c
holds early.ini '[S]\n[1=b\n[2=c\n'

# So is what would not be read back.
line_feed='
'
expect 3 '' "1 line of the new text can't be read back: 'k=v'" \
  set clean.ini Main k v
expect 3 '' "can't be read back: '\[k=v\]'" set clean.ini Main '[k' 'v]'
expect 3 '' "can't be read back: '\[k=v"    set clean.ini Main '[k' "v${line_feed}"
expect 3 '' "can't be read back: '\[a=b=c'" set clean.ini Main '[a=b' c
expect 3 '' "can't be read back: 'k= blanks '"      rename clean.ini Moved '[k' k
expect 3 '' 'and so on'               rename clean.ini Moved "a${line_feed}"
holds clean.ini '[Main]\n[another= 2\n[Moved]\n[k= blanks \n'
expect 0 '' "'k=v' and is lost" --lossy set clean.ini Main k v
holds clean.ini '[Main]\n[another= 2\nk=v\n[Moved]\n[k= blanks \n'
expect 1 '' "no key 'k'"                 get clean.ini Main k
expect 3 '' '1 line of clean.ini'        set clean.ini Main '[x' 1

# Wide text.
makes wide.ini '[Имя]\n[Ключ=значение\n'
expect 0 '^значение$' ''       --wide get wide.ini имя '[КЛЮЧ'
expect 1 '' "no section 'имя'"  get wide.ini имя '[КЛЮЧ'
expect 0 '^значение$' ''       get wide.ini Имя '[Ключ'
expect 0 '^\[Ключ=значение$' '' --wide list wide.ini имя
expect 0 '' '' --wide set wide.ini ИМЯ '[ключ' 'другое'
expect 0 '' '' --wide rename wide.ini имя 'Ίδιο'
holds wide.ini '[Ίδιο]\n[Ключ=другое\n'
makes wide_lossy.ini '# строка\n[Имя]\n'
expect 3 '' '1 line of wide_lossy.ini' --wide remove wide_lossy.ini Имя
for bytes in '[k=\377v\n[l=w\n' '[k=\320' '[k=v\n\320\n'; do
  makes undecodable.ini "[S]\n$bytes"
  expect 4 '' "isn't text in the encoding" --wide get undecodable.ini S '[k'
  expect 4 '' "isn't text in the encoding" \
    --wide --lossy set undecodable.ini S '[k' 1
  holds undecodable.ini "[S]\n$bytes"
done
LC_ALL=C
expect 4 '' "isn't text in the encoding" --wide list wide.ini
expect 0 'Ключ' '' list wide.ini
LC_ALL=xx_YY
expect 0 '^\[S\]$' 'the locale of the environment is unknown' list made.ini
LC_ALL=C.UTF-8

# The file's place and permission bits.
mkdir real links
makes real/file.ini '[S]\n'
chmod 640 real/file.ini
ln -s ../real/file.ini links/first.ini
ln -s first.ini links/second.ini
expect 0 '' '' set links/second.ini S '[k' v
holds real/file.ini '[S]\n[k=v\n'
[ "$(readlink links/first.ini) $(readlink links/second.ini)" = \
  "../real/file.ini first.ini" ] || fail "symbolic links did not stay"
[ "$(stat -c %a real/file.ini)" = 640 ] || fail "the mode did not stay"
ln -s ../real/new.ini links/dangling.ini
expect 0 '' '' set links/dangling.ini S '[k' v
holds real/new.ini '[S]\n[k=v\n'
ln -s loop links/loop
expect 4 '' 'links/loop: ' set links/loop S '[k' v

# What can't be read or written.
expect 4 '' 'none.ini: no such file'     get    none.ini S '[k'
expect 4 '' 'none.ini: no such file'     list   none.ini
expect 4 '' 'none.ini: no such file'     remove none.ini S
expect 4 '' 'none.ini: no such file'     merge  made.ini none.ini
expect 4 '' "none/f.ini: can't make a"   set    none/f.ini S '[k' v
expect 4 '' "real: can't read"           list   real
expect 4 '' "real: can't read"           set    real S '[k' v
expect 4 '' "made.ini/f: can't open"     set    made.ini/f S '[k' v
expect 4 '' '/dev/null: is no regular'   set    /dev/null S '[k' v
expect_full_disk 4 "can't write the output" --help
expect_full_disk 4 "can't write the output" list made.ini
expect_full_disk 4 "can't write the output" get  made.ini S '[k'

# A disk that fills up under the new text; a limit on the size of files takes
# its place.
long=$(head -c 9000 /dev/zero | tr '\0' v)
before=$(ls -A real)
got=0
(trap '' XFSZ; ulimit -f 8; exec "$program" set real/file.ini S '[l' "$long") \
  > out 2> err || got=$?
judge "set beyond a limit" 4 '' "real/file.ini: can't write: File too large"
holds real/file.ini '[S]\n[k=v\n'
[ "$(ls -A real)" = "$before" ] || fail "left behind: $(ls -A real)"

# Usage.
expect 0 'usage:' '' --help
expect 0 'begins with "\[", holds "="' '' --help
expect 2 '' 'a command is needed'
expect 2 '' 'a command is needed'       --wide
expect 2 '' "unknown option '--wise'"   --wise get made.ini S k
expect 2 '' "unknown command 'put'"     put made.ini
expect 2 '' "'get' takes other"         get made.ini S
expect 2 '' "'set' takes other"         set made.ini S '[k'
expect 2 '' "'list' takes other"        list
expect 2 '' "'remove' takes other"      remove made.ini
expect 2 '' "'rename' takes other"      rename made.ini S
expect 2 '' "'merge' takes other"       merge made.ini

[ -z "$(find . -name '.initool-*')" ] || fail "new files stayed"
