#!/bin/sh
# initool_test.sh INITOOL
set -u
export LC_ALL=C.UTF-8
initool=$1
folder=$(mktemp -d)
trap 'umount "$folder/small" 2> /dev/null; rm -rf "$folder"' EXIT
cd "$folder" || exit 1
failed=0

fail() {
  printf '%s\n\n' "$*"
  failed=1
}

# expect STATUS PATTERN ARGUMENT...: the exit status, and a pattern that the
# output, standard error included, must match.
expect() {
  status=$1 pattern=$2
  shift 2
  output=$("$initool" "$@" 2>&1)
  actual=$?
  if [ $actual -ne "$status" ] || ! printf '%s\n' "$output" | grep -q -- "$pattern"
  then
    fail "initool $*
exit status $actual, wanted $status and \"$pattern\" in:
$output"
  fi
}

# holds FILE TEXT: the file's whole content, in printf's notation.
holds() {
  # shellcheck disable=SC2059  # the text is the format
  if ! printf "$2" | cmp -s - "$1"; then
    fail "$1 should hold '$2' and holds:
$(cat "$1")"
  fi
}

# Reading.
printf '[Main]\n[key=value \n[other = 2\n[Empty]\n' > clean.ini
expect 0 '^value $'     get  clean.ini Main '[key'
expect 0 '^value $'     get  clean.ini ' MAIN' '[KEY '
expect 0 '^\[other= 2$' list clean.ini
expect 0 '^\[key=value' list clean.ini main
expect 1 "no section 'Man'"                get  clean.ini Man '[key'
expect 1 "no key '\[k' in section 'Main'"  get  clean.ini Main '[k'
expect 1 "no key 'key'.*'\[key' is there"  get  clean.ini Main key
expect 1 "no section 'Man'"                list clean.ini Man
[ "$("$initool" list clean.ini Empty)" = "" ] || fail "an empty section lists"

# Editing.
expect 0 '^$' set clean.ini Main '[key' new
expect 0 '^$' set clean.ini Added '[k' ' blanks '
holds clean.ini '[Added]\n[k= blanks \n[Empty]\n[Main]\n[key=new\n[other= 2\n'
expect 0 '^$' rename clean.ini Main '[other' '[another'
expect 0 '^$' rename clean.ini Added Moved
expect 0 '^$' remove clean.ini Empty
expect 0 '^$' remove clean.ini Main '[key'
holds clean.ini '[Main]\n[another= 2\n[Moved]\n[k= blanks \n'
expect 1 "'MOVED' is taken"    rename clean.ini Main MOVED
expect 1 "'\[K' is taken"      rename clean.ini Moved '[k' '[K'
expect 1 "no section 'Gone'"   rename clean.ini Gone New
expect 1 "no key '\[gone'"     rename clean.ini Main '[gone' '[new'
expect 1 "no section 'Gone'"   remove clean.ini Gone
expect 1 "no key '\[gone'"     remove clean.ini Main '[gone'
holds clean.ini '[Main]\n[another= 2\n[Moved]\n[k= blanks \n'
expect 0 '^$' set made.ini S '[k' v
holds made.ini '[S]\n[k=v\n'
[ "$(stat -c %a made.ini)" = "$(printf %o $((0666 & ~$(umask))))" ] ||
  fail "a new file has the mode $(stat -c %a made.ini)"
expect 0 '^$' set made.ini S '[--k' --lossy

# Merging.
printf '# note\n[k=before any header\n[s]\n[K=2\nplain=3\n[T]\n' > other.ini
expect 0 '3 lines of other.ini .*not merged' merge made.ini other.ini
holds made.ini '[S]\n[--k=--lossy\n[k=2\n[T]\n'
expect 0 '^$' merge merged.ini made.ini
cmp -s made.ini merged.ini || fail "merging into nothing is no copy"

# What would be lost is told, and nothing is written.
lossy='# about\n\n[Main]\nname=value\n \t\r\n[k=v\n; end'
printf "$lossy" > lossy.ini
expect 3 '3 lines of lossy.ini .*would be lost' set    lossy.ini Main '[k' 2
expect 3 '3 lines of lossy.ini .*would be lost' rename lossy.ini Main New
expect 3 '3 lines of lossy.ini .*would be lost' remove lossy.ini Main
expect 3 '3 lines of lossy.ini .*would be lost' merge  lossy.ini made.ini
expect 0 '3 lines of lossy.ini .*not listed'    list   lossy.ini
expect 1 "no key 'name'.*3 lines of lossy.ini"  get    lossy.ini Main name
holds lossy.ini "$lossy"
expect 0 '3 lines of lossy.ini .*is lost' --lossy set lossy.ini Main '[k' 2
holds lossy.ini '[Main]\n[k=2\n'
printf '[k=no header yet\n[S]\n[1=a\n[1=b\n' > early.ini
expect 3 '1 line of early.ini' remove early.ini S
printf '[S]\n[1=a\n[1=b\n' > early.ini
expect 0 '^$' set early.ini S '[2' c
holds early.ini '[S]\n[1=b\n[2=c\n'

# So is what would not be read back.
line_feed='
'
expect 3 "1 line of the new text can't be read back: 'k=v'" \
  set clean.ini Main k v
expect 3 "can't be read back: '\[k=v\]'" set clean.ini Main '[k' 'v]'
expect 3 "can't be read back: '\[k=v"    set clean.ini Main '[k' "v${line_feed}"
expect 3 "can't be read back: '\[a=b=c'" set clean.ini Main '[a=b' c
expect 3 "can't be read back: 'k= blanks '"      rename clean.ini Moved '[k' k
expect 3 'and so on'               rename clean.ini Moved "a${line_feed}"
holds clean.ini '[Main]\n[another= 2\n[Moved]\n[k= blanks \n'
expect 0 "'k=v' and is lost" --lossy set clean.ini Main k v
holds clean.ini '[Main]\n[another= 2\nk=v\n[Moved]\n[k= blanks \n'
expect 1 "no key 'k'"                 get clean.ini Main k
expect 3 '1 line of clean.ini'        set clean.ini Main '[x' 1

# Wide text.
printf '[Имя]\n[Ключ=значение\n' > wide.ini
expect 0 '^значение$' --wide get wide.ini имя '[КЛЮЧ'
expect 1 "no section 'имя'"  get wide.ini имя '[КЛЮЧ'
expect 0 '^значение$'        get wide.ini Имя '[Ключ'
expect 0 '^\[Ключ=значение$' --wide list wide.ini имя
expect 0 '^$' --wide set wide.ini ИМЯ '[ключ' 'другое'
expect 0 '^$' --wide rename wide.ini имя 'Ίδιο'
holds wide.ini '[Ίδιο]\n[Ключ=другое\n'
printf '# строка\n[Имя]\n' > wide_lossy.ini
expect 3 '1 line of wide_lossy.ini' --wide remove wide_lossy.ini Имя
for bytes in '[k=\377v\n[l=w\n' '[k=\320' '[k=v\n\320\n'; do
  printf "[S]\n$bytes" > undecodable.ini
  expect 4 "isn't text in the encoding" --wide get undecodable.ini S '[k'
  expect 4 "isn't text in the encoding" --wide --lossy set undecodable.ini S '[k' 1
  holds undecodable.ini "[S]\n$bytes"
done
LC_ALL=C
expect 4 "isn't text in the encoding" --wide list wide.ini
expect 0 'Ключ' list wide.ini
LC_ALL=xx_YY
expect 0 'the locale of the environment is unknown' list made.ini
LC_ALL=C.UTF-8

# The file's place, permission bits and owner.
mkdir real links
printf '[S]\n' > real/file.ini
chmod 640 real/file.ini
ln -s ../real/file.ini links/first.ini
ln -s first.ini links/second.ini
expect 0 '^$' set links/second.ini S '[k' v
holds real/file.ini '[S]\n[k=v\n'
[ "$(readlink links/first.ini) $(readlink links/second.ini)" = \
  "../real/file.ini first.ini" ] || fail "symbolic links did not stay"
[ "$(stat -c %a real/file.ini)" = 640 ] || fail "the mode did not stay"
ln -s ../real/new.ini links/dangling.ini
expect 0 '^$' set links/dangling.ini S '[k' v
holds real/new.ini '[S]\n[k=v\n'
ln -s loop links/loop
expect 4 'links/loop: ' set links/loop S '[k' v
if [ "$(id -u)" -eq 0 ]; then
  chown 12:34 real/file.ini
  expect 0 '^$' set real/file.ini S '[k' w
  [ "$(stat -c %u:%g real/file.ini)" = 12:34 ] || fail "the owner did not stay"
fi

# What can't be read or written.
expect 4 'none.ini: no such file'     get    none.ini S '[k'
expect 4 'none.ini: no such file'     list   none.ini
expect 4 'none.ini: no such file'     remove none.ini S
expect 4 'none.ini: no such file'     merge  made.ini none.ini
expect 4 "none/f.ini: can't make a"   set    none/f.ini S '[k' v
expect 4 "real: can't read"           list   real
expect 4 "real: can't read"           set    real S '[k' v
expect 4 "made.ini/f: can't open"     set    made.ini/f S '[k' v
expect 4 '/dev/null: is no regular'   set    /dev/null S '[k' v
"$initool" list made.ini > /dev/full 2> messages
[ $? -eq 4 ] || fail "a full disk below the output goes untold"
"$initool" --help > /dev/full
[ $? -eq 4 ] || fail "a full disk below the help goes untold"

# A disk that fills up under the new text. The file's size is limited for want
# of the right to mount a small disk.
long=$(head -c 9000 /dev/zero | tr '\0' v)
before=$(ls -A real)
output=$(trap '' XFSZ; ulimit -f 8; "$initool" set real/file.ini S '[l' "$long" 2>&1)
[ $? -eq 4 ] || fail "a limit on the file's size goes untold: $output"
mkdir small
if mount -t tmpfs -o size=8k none small 2> /dev/null; then
  printf '[S]\n[k=v\n' > small/f.ini
  expect 4 'small/f.ini: .*No space left' set small/f.ini S '[l' "$long"
  holds small/f.ini '[S]\n[k=v\n'
  [ "$(ls -A small)" = f.ini ] || fail "a full disk has $(ls -A small)"
fi
[ "$(ls -A real)" = "$before" ] || fail "left behind: $(ls -A real)"

# Usage.
expect 0 'usage:' --help
expect 0 'begins with "\[", holds "="' --help
expect 2 'a command is needed'
expect 2 'a command is needed'       --wide
expect 2 "unknown option '--wise'"   --wise get made.ini S k
expect 2 "unknown command 'put'"     put made.ini
expect 2 "'get' takes other"         get made.ini S
expect 2 "'set' takes other"         set made.ini S '[k'
expect 2 "'list' takes other"        list
expect 2 "'remove' takes other"      remove made.ini
expect 2 "'rename' takes other"      rename made.ini S
expect 2 "'merge' takes other"       merge made.ini

[ -z "$(find . -name '.initool-*')" ] || fail "new files stayed"
exit $failed
