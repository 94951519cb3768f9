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
    changed "$2" "help instead of a change" 'wanted none:' \
      '[ "$1" != set ] || exec "$real" --help; exec "$real" "$@"'
    changed "$2" "nothing changed" 'clean.ini should hold' \
      '[ "$1" != set ] || exit 0; exec "$real" "$@"'
    changed "$2" "no --wide" 'no section .имя' \
      '[ "$1" != --wide ] || shift; exec "$real" "$@"'
    changed "$2" "no --lossy" '^changed --lossy set' \
      '[ "$1" != --lossy ] || shift; exec "$real" "$@"'
    changed "$2" "--lossy unasked" 'exit status 0, wanted 3' \
      'case $1 in set | rename | remove | merge) exec "$real" --lossy "$@" ;; esac
       exec "$real" "$@"'
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
    changed "$2" "CR LF that becomes LF" 'crlf.ini should hold' \
      '"$real" "$@"; status=$?
       case $2 in crlf.ini) tr -d "\r" < "$2" > cut; mv cut "$2" ;; esac
       exit "$status"'
    changed "$2" "a refusal of several lines" 'wanted' \
      '"$real" "$@"; status=$?; [ "$status" -ne 2 ] || echo more >&2
       exit "$status"'
    changed "$2" "control characters on a terminal" 'on the terminal' \
      'case $* in get*values.ini*) "$real" "$@" | cat ;; *) exec "$real" "$@" ;; esac'
    changed "$2" "colours in spite of NO_COLOR" 'in spite of NO_COLOR' \
      'unset NO_COLOR; exec "$real" "$@"'
    changed "$2" "no colours" 'no colour' 'NO_COLOR=1 exec "$real" "$@"'
    changed "$2" "other JSON" 'the JSON is' \
      'case $* in *json*values.ini*) "$real" "$@" | sed "s/: null/: 0/" ;;
         *) exec "$real" "$@" ;; esac'
    changed "$2" "no advice for a key" 'name it' \
      '"$real" "$@" 2> text; status=$?; sed "s/name it/call it/" text >&2
       exit "$status"'
    changed "$2" "no word of byte-order marks" 'byte-order mark' \
      '"$real" "$@" 2> text; status=$?; sed "s/byte-order//" text >&2
       exit "$status"'
    changed "$2" "a long help" 'is no screen' \
      '"$real" "$@" || exit; case $#$* in 2*--help) seq 24 ;; esac'
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
expect 0 '' '' set made.ini S -- '[--k' --lossy

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
expect 0 '' '3 lines of lossy.ini .*are lost' --lossy set lossy.ini Main '[k' 2
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
expect 4 '' "none.ini: can't be read: No such file"     get    none.ini S '[k'
expect 4 '' "none.ini: can't be read: No such file"     list   none.ini
expect 4 '' "none.ini: can't be read: No such file"     remove none.ini S
expect 4 '' "none.ini: can't be read: No such file"     merge  made.ini none.ini
expect 4 '' "none/f.ini: can't make a"   set    none/f.ini S '[k' v
expect 4 '' "real: can't be read: Is a directory"          list   real
expect 4 '' "real: can't be read: Is a directory"          set    real S '[k' v
expect 4 '' "made.ini/f: can't be read: Not a directory"    set    made.ini/f S '[k' v
expect 4 '' '/dev/null: is no regular'   set    /dev/null S '[k' v
expect_full_disk 4 "the output can't be written" --help
expect_full_disk 4 "the output can't be written" list made.ini
expect_full_disk 4 "the output can't be written" get  made.ini S '[k'

# A disk that fills up under the new text; a limit on the size of files takes
# its place.
long=$(head -c 9000 /dev/zero | tr '\0' v)
before=$(ls -A real)
got=0
(trap '' XFSZ; ulimit -f 8; exec "$program" set real/file.ini S '[l' "$long") \
  > out 2> err || got=$?
judge "set beyond a limit" 4 '' "real/file.ini: can't be written: File too large"
holds real/file.ini '[S]\n[k=v\n'
[ "$(ls -A real)" = "$before" ] || fail "left behind: $(ls -A real)"

# Standard input.
makes piped.ini '[S]\n[k=v\n'
expect 0 '^v$' ''              get - S '[k' < piped.ini
expect 0 '^\[k=v$' ''          list - < piped.ini
expect 0 'standard input: 2 lines' '' lint - < piped.ini
expect 0 '' ''                 merge from_pipe.ini - < piped.ini
holds from_pipe.ini '[S]\n[k=v\n'
expect 1 '' "(standard input is empty)" get - S k < /dev/null
expect 4 '' "^initool: standard input: can't be read: Is a directory" list - < .
expect 4 '' "^initool: standard input: can't be read: Bad file" list - <&-
for command in 'set - S k v' 'rename - S T' 'remove - S' 'merge - piped.ini'; do
  # shellcheck disable=SC2086  # the command is words
  expect 2 '' "standard input can't be changed (try --help)" $command
done

# What is no INI text.
: > empty.ini
expect 0 '' '^initool: empty.ini: is empty$' list empty.ini
expect 1 '' "no section 'S' (empty.ini is empty)" get empty.ini S k
makes binary.ini '\177ELF\002\000\000\n\000[S]\n\001\033[2J\n'
expect 0 '' '^initool: 3 lines of binary.ini can.t be read' list binary.ini
expect 3 '' '3 lines of binary.ini' set binary.ini S '[k' v
makes marked.ini '\357\273\277[S]\n[k=v\n'
marked='it begins with a UTF-8 byte-order mark, so its first line is skipped'
expect 0 '' "2 lines of marked.ini .*$marked" list marked.ini
expect 1 '' "no section 'S' (2 lines .*$marked" get marked.ini S '[k'
expect 3 '' "$marked" set marked.ini S '[k' v
expect 3 '' "$marked" --wide set marked.ini S '[k' v
for mark in '\377\376:16' '\376\377:16' '\377\376\000\000:32' \
  '\000\000\376\377:32'; do
  makes utf.ini "${mark%:*}[\\000"
  expect 0 '' "begins with a UTF-${mark#*:} byte-order mark, so convert" \
    list utf.ini
  expect 4 '' "encoding of the locale, UTF-8; it begins with a UTF-${mark#*:}" \
    --wide list utf.ini
done

# The ends of lines stay where they are all alike.
makes crlf.ini '[S]\r\n[k=v\r\n\r\n[T]\r\n'
expect 0 '' '' set crlf.ini S '[l' w
holds crlf.ini '[S]\r\n[k=v\r\n[l=w\r\n[T]\r\n'
expect 0 '^w$' '' get crlf.ini S '[l'
expect 0 '' '' --wide remove crlf.ini T
holds crlf.ini '[S]\r\n[k=v\r\n[l=w\r\n'
makes mixed.ini '[S]\r\n[k=v\n'
expect 0 '' '^initool: 1 line of mixed.ini ends with CR, others do not; all' \
  set mixed.ini S '[l' w
holds mixed.ini '[S]\n[k=v\n[l=w\n'
makes mixed.ini '[S]\r\n[k=v\r\r\n'
expect 0 '' '2 lines of mixed.ini end with CR' set mixed.ini S '[l' w
expect 3 '' "can't be read back: '\[k=v.u{D}'" set mixed.ini S '[k' "v$(printf '\r')"
makes mixed.ini '# lost\n[S]\r\n'
expect 3 '' '1 line of mixed.ini' set mixed.ini S '[l' w
[ "$(wc -l < err)" -eq 1 ] || fail "a refusal of several lines: $(cat err)"

# A name that the reader would not find.
expect 3 '' "name it '\[k')" set made.ini S k v
expect 3 '' "name it '\[k')" set made.ini S ' k ' v
expect 3 '' "name it '\[j')" rename made.ini S '[k' j
expect 3 '' "name it '\[ключ')" --wide set wide.ini Имя ключ v
for lost in '[a=b c' 'k v]' 'a=b c'; do
  # shellcheck disable=SC2086  # the name and the value
  expect 3 '' "can't be read back" set made.ini S $lost
  case $lost in
    'a=b c') matches err "name it '\[a=b'" && fail "bad advice: $(cat err)" ;;
    *) matches err 'name it' && fail "bad advice: $(cat err)" ;;
  esac
done

# JSON and tab-separated values.
# json_holds TEXT: the output is JSON in UTF-8, and holds that.
json_holds() {
  shown=$(python3 -c 'import json, sys
document = json.loads(sys.stdin.buffer.read().decode("utf-8"))
sys.stdout.write(json.dumps(document, separators=(",", ":")))' < out 2>&1) ||
    fail "no JSON: $(cat out)
$shown"
  [ "$shown" = "$1" ] || fail "the JSON is $shown
wanted    $1"
}
makes values.ini '[B]\n[T]\n[k=a\tb\\n"\n[l=\303\244\033\177\302\233x\n'
expect 0 . '' --json list values.ini
json_holds '{"keys":[{"section":"B","key":null,"value":null},'\
'{"section":"T","key":"[k","value":"a\tb\\n\""},'\
'{"section":"T","key":"[l","value":"\u00e4\u001b\u007f\u009bx"}]}'
expect 0 . '' list values.ini T --tsv
holds out 'section\tkey\tvalue
T\t[k\ta\\tb\\\\n"
T\t[l\t\303\244\\u{1B}\\u{7F}\\u{9B}x
'
expect 0 . '' get values.ini T '[k' --tsv
holds out 'section\tkey\tvalue\nT\t[k\ta\\tb\\\\n"\n'
expect 0 . '' get --json values.ini T '[k'
json_holds '{"keys":[{"section":"T","key":"[k","value":"a\tb\\n\""}]}'
expect 0 . '' --json list values.ini B
json_holds '{"keys":[{"section":"B","key":null,"value":null}]}'
expect 0 . '' --tsv list values.ini B
holds out 'section\tkey\tvalue\nB\t\t\n'
expect 0 . 'is empty' --json list empty.ini
json_holds '{"keys":[]}'
makes bytes.ini '[S]\n[k=\377\344v\302\n'
expect 0 . '^initool: the file has bytes that are no UTF-8' --json list bytes.ini
json_holds '{"keys":[{"section":"S","key":"[k","value":"\ufffd\ufffdv\ufffd"}]}'
[ "$(wc -l < err)" -eq 1 ] || fail "more than a line: $(cat err)"
expect 0 . '' --tsv get bytes.ini S '[k'
holds out 'section\tkey\tvalue\nS\t[k\t\\xFF\\xE4v\\xC2\n'
expect 0 '"другое"' '' --wide --json get wide.ini 'Ίδιο' '[ключ'
expect 0 '"другое"' '' --json get wide.ini 'Ίδιο' '[Ключ'
expect 0 'другое' '' --wide --tsv get wide.ini 'Ίδιο' '[ключ'
LC_ALL=C
expect 0 '"другое"' '' --json get wide.ini 'Ίδιο' '[Ключ'
LC_ALL=C.UTF-8
expect 1 '' "no section 'X'" --json list values.ini X
for command in 'set f S k v' 'rename f S T' 'remove f S' 'merge f g'; do
  for format in --json --tsv; do
    # shellcheck disable=SC2086  # the command is words
    expect 2 '' 'has no --json and --tsv (try --help)' $command $format
  done
done
expect 2 '' "can't be used together" --json --tsv list values.ini

# on_terminal ARGUMENT...: what a terminal gets, in the file out.
on_terminal() {
  shell_words=$program
  for argument; do
    shell_words="$shell_words '$argument'"
  done
  script -q -c "$shell_words" /dev/null < /dev/null > typescript ||
    fail "there is no terminal: script fails with $?"
  tr -d '\r' < typescript > out
}
escape=$(printf '\033')
makes colour.ini '# about\n[S]\n'
(
  unset NO_COLOR
  for arguments in 'list colour.ini' 'lint colour.ini'; do
    # shellcheck disable=SC2086  # the arguments are words
    on_terminal $arguments
    matches out "$escape\[" || fail "no colour: $arguments"
    # shellcheck disable=SC2086  # the arguments are words
    "$program" $arguments > out 2> err || :
    ! matches out "$escape\[[0-9;]*m" || fail "a file in colour: $arguments"
    # shellcheck disable=SC2086  # the arguments are words
    NO_COLOR=1 on_terminal $arguments
    ! matches out "$escape" || fail "colour in spite of NO_COLOR: $arguments"
    # shellcheck disable=SC2086  # the arguments are words
    NO_COLOR='' on_terminal $arguments
    matches out "$escape\[" || fail "no colour with an empty NO_COLOR: $arguments"
  done
)
NO_COLOR=1
export NO_COLOR
for arguments in 'list values.ini' 'list values.ini T' 'get values.ini T [l' \
  'list values.ini --tsv' 'list values.ini --json' 'lint values.ini' \
  'lint values.ini --tsv' 'lint values.ini --json'; do
  # shellcheck disable=SC2086  # the arguments are words
  on_terminal $arguments
  ! matches out "$(printf '[\001-\010\013-\037\177]')" ||
    fail "a control character on the terminal: $arguments"
  ! matches out "$(printf '\302\233')" ||
    fail "U+009B on the terminal: $arguments"
  matches out 'u{1B}\|u001b' || fail "no escape: $arguments"
done
expect 0 . '' get values.ini T '[l'
holds out '\303\244\033\177\302\233x\n'
(
  LC_ALL=C
  on_terminal get values.ini T '[l'
  holds out '\\xC3\\xA4\\u{1B}\\u{7F}\\xC2\\x9Bx\n'
)
makes values.ini '[\033T]\n'
for arguments in 'get values.ini X [k' 'set values.ini T [x a]' \
  'set values.ini T [x]'; do
  # shellcheck disable=SC2086  # the arguments are words
  "$program" $arguments > out 2> err || :
  ! matches err "$escape" || fail "a control character in a message: $arguments"
done

# Options stand anywhere, and names that look like them after "--".
makes order.ini '[S]\n[k=v\n'
for arguments in '--json --wide get order.ini S [k' \
  'get --json --wide order.ini S [k' 'get order.ini S [k --json --wide' \
  '--wide get order.ini --json S [k' '--json get --wide -- order.ini S [k'; do
  # shellcheck disable=SC2086  # the arguments are words
  expect 0 '"value": "v"' '' $arguments
done
expect 0 '' '' set order.ini Main -- '[key' -5
expect 0 '^-5$' '' get order.ini Main '[key'
expect 0 '' '' set order.ini -- -S '[-k' --help
expect 0 '^--help$' '' get order.ini -- -S '[-k'
expect 0 '' '' set order.ini -- list '[get' set
expect 0 '' '' set order.ini list '[lint' list
expect 0 '^list$' '' get order.ini list '[lint'
for value in '' ' ' '{}' '[],' '[a' '%%' "'q'" '"q"' 'a,b' '=' '%s' "\\"; do
  expect 0 '' '' set order.ini Odd '[k' "$value"
  expect 0 . '' --json get order.ini Odd '[k'
  [ "$("$program" get order.ini Odd '[k')" = "$value" ] ||
    fail "'$value' did not come back"
done

# Help and usage.
expect 0 '^initool (korvan) [0-9.]*$' '' --version
for command in '' get list lint set rename remove merge; do
  # shellcheck disable=SC2086  # there may be no command
  expect 0 'Usage: initool' '' $command --help
  awk 'length > 80 {exit 1} END {exit NR > 24}' out ||
    fail "'$command --help' is no screen: $(cat out)"
done
expect 0 "lines '\[key=value'" '' --help
# usage MESSAGE ARGUMENT...: a usage error is that line alone.
usage() {
  sentence=$1
  shift
  expect 2 '' . "$@"
  [ "$(cat err)" = "initool: $sentence (try --help)" ] ||
    fail "initool $* says $(cat err), wanted $sentence"
}
usage "a command is missing"
usage "a command is missing"         --wide
usage "unknown option '--nosuch'"   --nosuch
usage "unknown option '--wise'"     --wise get made.ini S k
usage "unknown option '--wise'"     get made.ini S k --wise
usage "unknown command 'put'"   put made.ini
usage "unexpected argument 'x'"     get made.ini S k x
usage "unexpected argument 'x'"     list made.ini S x
usage "FILE is missing"            get
usage "FILE is missing"            list
usage "FILE is missing"            lint
usage "KEY is missing"             get made.ini S
usage "VALUE is missing"           set made.ini S '[k'
usage "SECTION is missing"         remove made.ini
usage "NEW-NAME is missing"        rename made.ini S
usage "OTHER-FILE is missing"      merge made.ini
for command in 'get f S k' 'list f' 'lint f'; do
  # shellcheck disable=SC2086  # the command is words
  usage "'${command%% *}' has no --lossy" $command --lossy
done

[ -z "$(find . -name '.initool-*')" ] || fail "new files stayed"
