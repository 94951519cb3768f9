#!/bin/sh
# keyblob_test.sh [--self-test] KEYBLOB DATA
# What keyblob makes of the certificates in the folder DATA, of public keys and
# of blobs, and of what is none.
set -eu
export LC_ALL=C.UTF-8

if [ "$1" = --self-test ]; then
  program=$2 data=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the program as it is" "$0" "$program" "$data"
  # with WHAT MESSAGE SCRIPT
  with() {
    changed "$program" "$1" "$2" "$3" "$data"
  }
  # shellcheck disable=SC2016  # what the changed program does
  {
    with "no results" 'wanted byte for byte' '"$real" "$@" > /dev/null'
    with "results where messages go" 'wanted none:' '"$real" "$@" >&2'
    with "messages where results go" 'messages, wanted 1' '"$real" "$@" 2>&1'
    with "failures without a status" 'exit status 0, wanted 3' \
      '"$real" "$@" || exit 0'
    with "one status for all failures" 'exit status 3, wanted 1' \
      '"$real" "$@" || exit 3'
    with "no --out" 'the blob has' '"$real" "$1" ${2+"$2"}'
    with "half a blob" 'the blob has' \
      '"$real" "$@"; status=$?
       [ ! -f blob ] || head -c 50 blob > half && mv half blob
       exit "$status"'
    with "no --check" 'wanted byte for byte' '"$real" "$1"'
    with "a line less" 'no line with .*magic' '"$real" "$@" | sed /magic/d'
    with "another public key info" 'is not the one of the certificate' \
      '"$real" "$@"; status=$?; [ ! -f info ] || echo >> info; exit "$status"'
    with "one OID where a blob has two" 'no line with' \
      'case $1 in --from-blob) "$real" "$@" | sed "/    or  /d"; exit ;; esac
       exec "$real" "$@"'
    with "broken JSON" 'no JSON' \
      'case $1 in --json) "$real" "$@" | sed 1d; exit ;; esac
       exec "$real" "$@"'
    with "a member less in JSON" 'the members are' \
      'case $1 in --json) "$real" "$@" | sed "/key_bits/d"; exit ;; esac
       exec "$real" "$@"'
    with "no status with JSON" '--json: exit status 0, without' \
      '"$real" "$@"; status=$?; [ "$1" != --json ] || exit 0; exit "$status"'
    with "no messages with JSON" '--json has other messages' \
      '[ "$1" != --json ] || exec 2> /dev/null; exec "$real" "$@"'
    with "raw control characters" 'a control character' \
      'case $* in evil.der) printf "\033" ;; esac; exec "$real" "$@"'
    with "a crash on garbage" 'ends with status 134' \
      'case $* in garbage) exit 134 ;; esac; exec "$real" "$@"'
    with "two lines about garbage" 'not one line' \
      'case $* in garbage) echo more >&2 ;; esac; exec "$real" "$@"'
  }
  must_fail "no program" 'exit status 127' "$0" "$work/none" "$data"
  must_fail "no certificates" 'No such file' "$0" "$program" "$work/none"
  end_self_test
fi
program=$1 data=$2 here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

# A certificate's key to a blob, and the way back.
gost=$data/gost2001-A.der
expect 0 'byte for byte' '' "$gost" --check --out blob
shows '^certificate 1 of 1$' 'subject     C = RU, O = Example, CN = GOST R 34' \
  '1.2.643.2.2.19  GOST R 34.10-2001' 'ALG_ID      0x2E23' \
  'key         512 bits' '1.2.643.2.2.35.1  GOST R 34.10 - 2001' \
  '1.2.643.2.2.30.1$' '0008  4d 41 47 31  *magic'
[ "$(wc -c < blob)" = 100 ] || fail "the blob has $(wc -c < blob) bytes"
expect 0 'ALG_ID      0xA400' '' "$data/rsa2048.der"
expect 3 'The key is no OCTET STRING' '' --check "$data/rsa2048.der"
shows '294 bytes went in, 298 other ones come out'
expect 0 'ALG_ID      0x2200' '' "$data/dsa2048.der"
expect 1 'certificate 1 of 1' \
  '1.2.840.10045.2.1 is no public-key algorithm' "$data/ecp256.der"

expect 0 'bit string  66 bytes' '' --from-blob blob --out info
shows '^blob$' '0000  04 40 a5 21' 'parameters  20 bytes' \
  'algorithm   1.2.643.2.2.19  GOST R 34.10-2001' 'info        101 bytes'
openssl asn1parse -inform DER -in "$gost" > structure
offset=$(awk -F : '/d=2 .* l=  99 cons: SEQUENCE/ {print $1 + 0}' structure)
tail -c "+$((offset + 1))" "$gost" | head -c 101 | cmp -s - info ||
  fail "the public key info is not the one of the certificate"
expect 0 'the public key info, 101 bytes, comes out' '' info --check
shows '^public key 1 of 1$'
grep -q subject out && fail "a public key has a subject"
"$program" "$data/rsa2048.der" --out rsa.blob > out
expect 0 'algorithm   1.2.840.113549.1.1.1  RSA$' '' --from-blob rsa.blob
shows '    or        1.3.14.3.2.22  RSA_KEYX$'
expect 0 'algorithm   1.3.14.3.2.22  RSA_KEYX' '' \
  --from-blob rsa.blob --oid 1.3.14.3.2.22 --out info
grep -q '    or  ' out && fail "an OID beside the given one: $(cat out)"
expect 0 '1.3.14.3.2.22' '' info
makes unknown.blob \
  '\006\040\000\000\064\022\000\000MAG1\010\000\000\000\005\000k'
expect 1 '' 'no public-key algorithm 0x1234; --oid gives one' \
  --from-blob unknown.blob
expect 0 'algorithm   2.999.1$' '' --from-blob unknown.blob --oid 2.999.1
makes no_der.blob \
  '\006\040\000\000\043\056\000\000MAG1\010\000\000\000\005\001k'
expect 3 '' 'its parameters are not one value' --from-blob no_der.blob
head -c 30 blob > short
expect 3 '' 'short: is too short' --from-blob short
makes empty ''
expect 3 '' 'empty: is empty' --from-blob empty

# Through pipes: nothing but the bytes goes to standard output.
"$program" --out - "$gost" | cmp -s - blob || fail "--out - is no blob"
got=0
"$program" --out - "$gost" | "$program" --from-blob - > out 2> err || got=$?
judge 'blob through a pipe' 0 'info        101 bytes' ''
expect 2 '' 'there is no place for anything else' --out - "$gost" --json
got=0
"$program" - < "$folder" > out 2> err || got=$?
judge 'a folder' 4 '' "standard input: can't be read: Is a directory"
got=0
"$program" - <&- > out 2> err || got=$?
judge 'no standard input' 4 '' "standard input: can't be read"
got=0
"$program" "$gost" --out made >&- 2> err || got=$?
: > out
judge 'no standard output' 4 '' "output can't be written"
cmp -s made blob || fail "without standard output another blob is written"

# The other forms.
cat "$gost" "$data/rsa2048.der" info > bundle.der
expect 0 'certificate 2 of 3' '' bundle.der
shows 'public key 3 of 3'
expect 3 '' 'holds 3 keys' bundle.der --out blob2
[ ! -e blob2 ] || fail 'a blob was written'
pem() {  # pem NAME FILE
  printf '%s\n' "-----BEGIN $1-----" "$(base64 -w 64 "$2")" "-----END $1-----"
}
{
  echo 'what stands around it'
  pem CERTIFICATE "$gost"
  pem 'EC PARAMETERS' info
  pem 'X509 CERTIFICATE' "$data/rsa2048.der"
  pem 'PUBLIC KEY' info
} > bundle.pem
expect 0 'certificate 2 of 3' '' bundle.pem
shows 'certificate 1 of 3' 'public key 3 of 3'
cat "$gost" "$data/ecp256.der" "$data/rsa2048.der" > mixed.der
expect 1 'certificate 3 of 3' 'mixed.der: certificate 2: 1.2.840' mixed.der
expect 3 'certificate 3 of 3' 'certificate 2: 1.2.840' mixed.der --check

# Why a public key info comes back as another.
encoded() {  # encoded ALGORITHM_OID BIT_STRING_CONTENT
  cat > key.cnf <<END
asn1=SEQUENCE:info
[info]
algorithm=SEQUENCE:algorithm
key=FORMAT:HEX,BITSTRING:$2
[algorithm]
oid=OID:$1
END
  openssl asn1parse -genconf key.cnf -noout -out key.der
}
encoded 1.2.643.2.2.19 04020102
expect 0 'comes out byte for byte' '' --check key.der
encoded 1.2.643.2.2.19 0481020102
expect 3 "OCTET STRING is not in DER" '' --check key.der
encoded 1.3.6.1.4.1.86913.2.1.2.2 04020102
expect 3 'key of 0x2E29 is not wrapped again' '' --check key.der
encoded 1.3.6.1.4.1.86913.2.1.2.2 010203
expect 0 'comes out byte for byte' '' --check key.der
makes unused.der '0\020\060\010\006\006\052\205\003\002\002\023\003\004\004\004\001\120'
expect 3 'The bit string has unused bits' '' --check unused.der

# What can't be read.
expect 4 '' "missing.der: can't be read: No such file" missing.der
expect 4 '' "can't be read: Is a directory" "$folder"
expect 4 '' "''.*can't be read: No such file" ''
expect 3 '' 'empty: is empty' empty
head -c 200 "$gost" > damaged
expect 3 '' 'damaged: entry 1 is damaged' damaged
{ cat "$gost"; echo; } > more.der
expect 3 '' 'more.der: entry 2 is damaged' more.der
head -c 300 bundle.pem > damaged.pem
expect 3 '' 'damaged.pem: entry 1 is damaged' damaged.pem
pem NOTHING "$gost" > none.pem
expect 3 '' 'no certificate and no public key in it' none.pem
truncate -s 16M large
expect 3 '' 'entry 1 is damaged' large
truncate -s 100G large
expect 3 '' 'large: is larger than 16 MiB' large
got=0
"$program" - < /dev/zero > out 2> err || got=$?
judge 'endless input' 3 '' 'standard input: is larger than 16 MiB'

# What can't be written.
expect 4 'blob        100 bytes' "can't be written: Is a dir" "$gost" --out "$folder"
expect 4 'blob        100 bytes' "/dev/full: can't be written: No space" \
  "$gost" --out /dev/full
expect 4 'blob        100 bytes' "'': can't be written" "$gost" --out ''
for order in "$gost" "$gost --check" "$gost --out -" "$gost --json" \
  "$gost --tsv" '--from-blob blob'; do
  # shellcheck disable=SC2086  # the order is words
  expect_full_disk 4 "can't be written: No space left" $order
done

# Usage.
expect 0 'Usage: keyblob' '' --help
expect 2 '' 'FILE is missing'
expect 2 '' "unknown option '--unknown'" --unknown
expect 2 '' 'unexpected argument' "$gost" "$gost"
expect 2 '' "'--out' needs a value" "$gost" --out
expect 2 '' "'--from-blob' and '--check' can't be used together" \
  --from-blob blob --check
expect 2 '' "'--oid' needs '--from-blob'" "$gost" --oid 1.2.3
expect 2 '' "'x' is no OID" --from-blob blob --oid x
expect 2 '' "'' is no OID" --from-blob blob --oid ''

# TSV and JSON.
expect 1 '^number	source	subject	oid	name	other_oids	algid	key_bits	parameters	parameter_oids	bit_string	public_key_info	blob	check	error$' \
  'certificate 2' mixed.der --tsv
awk -F '\t' 'NF != 15 {exit 1}' out || fail "a line has not 15 fields"
shows '^2	certificate	.*	1.2.840.10045.2.1		.* is no public-key algorithm' \
  "$(printf '^1.*\t%s\t\t$' "$(od -An -v -tx1 blob | tr -d ' \n')")"
members='{"keys": [{"number": 0, "source": 0, "subject": 0,
  "algorithm": {"oid": 0, "name": 0},
  "other_algorithms": [{"oid": 0, "name": 0}], "algid": 0, "key_bits": 0,
  "parameters": 0, "parameter_oids": [{"oid": 0, "name": 0}],
  "bit_string": 0, "public_key_info": 0, "blob": 0,
  "check": {"same": 0, "size": 0, "reason": 0}, "error": 0}]}'
# shellcheck source=tests/tools/json_output.sh
. "$here/json_output.sh"
json '[11811, None, 41984]' '[key["algid"] for key in keys]' mixed.der
json "['certificate', 512, True, 101]" \
  '[keys[0][m] for m in ("source", "key_bits")] +
   [keys[0]["check"][m] for m in ("same", "size")]' "$gost" --check
json "$(od -An -v -tx1 blob | tr -d ' \n')" 'keys[0]["blob"]' "$gost"
json "['blob', None, 'RSA', 'RSA_KEYX']" \
  '[keys[0][m] for m in ("source", "subject")] +
   [keys[0]["algorithm"]["name"], keys[0]["other_algorithms"][0]["name"]]' \
  --from-blob rsa.blob

# A subject may hold anything; nothing of it acts on a terminal.
openssl req -x509 -newkey rsa:2048 -nodes -keyout /dev/null -utf8 \
  -subj "/O=Имя	\\\\/CN=$(printf 'a\033[31m\302\233\342\200\256b')" \
  -outform DER -out evil.der 2> /dev/null
expect 0 'O = Имя' '' evil.der
harmless
shows 'u{9B}.u{202E}b'
expect 0 'O = Имя' '' evil.der --tsv
harmless
json "$(printf 'O = Имя\\09\\\\, CN = a\\1B[31m\302\233\342\200\256b')" \
  'keys[0]["subject"]' evil.der
harmless

# Garbage: certificates that end early, or have a wrong byte somewhere.
survives() {
  got=0
  "$program" "$@" > out 2> err || got=$?
  [ "$got" -le 3 ] || fail "$* ends with status $got: $(od -tx1 garbage)
$(cat err)"
  [ "$(wc -l < err)" -le 1 ] || fail "not one line: $(cat err)"
}
for file in "$gost" "$data/dsa2048.der" info blob; do
  size=$(wc -c < "$file")
  for i in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do
    head -c $((size * i / 21)) "$file" > garbage
    survives garbage
    survives --from-blob garbage
    at=$(((i * i * 31 + i) % size))
    {
      head -c $at "$file"
      printf '\377'
      tail -c "+$((at + 2))" "$file"
    } > garbage
    survives garbage
    survives garbage --check
    survives --from-blob garbage
  done
done
# A certificate whose parameters are nested deep.
python3 - > garbage <<'END'
import sys
def value(tag, content):
    size = len(content)
    if size < 128:
        return bytes([tag, size]) + content
    length = size.to_bytes((size.bit_length() + 7) // 8, "big")
    return bytes([tag, 128 | len(length)]) + length + content
nested = value(6, bytes([42, 3]))
for depth in range(30000):
    nested = value(0x30, nested)
gost = bytes([6, 6, 42, 133, 3, 2, 2, 19])
sys.stdout.buffer.write(
    value(0x30, value(0x30, gost + nested) + value(3, bytes([0, 1]))))
END
survives garbage --tsv
shows '	1.2.3	'
