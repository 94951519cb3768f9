#!/bin/sh
# keyblob_test.sh KEYBLOB DATA
#
# Runs the example program on the certificates in the folder DATA and on what
# is none.
set -eu
keyblob=$1
data=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
  echo "$1"
  cat out err
  exit 1
}

# expect STATUS PATTERN STREAM ARGUMENT...: runs keyblob and looks for a line.
expect() {
  status=$1 pattern=$2 stream=$3
  shift 3
  "$keyblob" "$@" > out 2> err && got=0 || got=$?
  [ "$got" = "$status" ] || fail "keyblob $*: exit status $got, not $status"
  grep -q -e "$pattern" "$stream" || fail "keyblob $*: no '$pattern' in $stream"
}

gost=$data/gost2001-A.der
expect 0 'byte for byte' out "$gost" --check --out blob
grep -q '1.2.643.2.2.19  GOST R 34.10-2001' out || fail 'no algorithm'
grep -q 'ALG_ID      0x2E23' out || fail 'no ALG_ID'
grep -q 'key         512 bits' out || fail 'no key size'
grep -q '1.2.643.2.2.35.1  GOST R 34.10 - 2001' out || fail 'no named OID'
grep -q '1.2.643.2.2.30.1$' out || fail 'no dotted OID'
grep -q '0008  4d 41 47 31  *magic' out || fail 'no magic'
[ "$(wc -c < blob)" = 100 ] || fail 'the blob has not 100 bytes'

expect 0 "content, 66 bytes" out --back blob
grep -q '0000  04 40 a5 21' out || fail 'no OCTET STRING'
grep -q 'parameters, 20 bytes' out || fail 'no parameters'

expect 0 'ALG_ID      0xA400' out "$data/rsa2048.der"
expect 1 'The key is no OCTET STRING' out "$data/rsa2048.der" --check
expect 0 'ALG_ID      0x2200' out "$data/dsa2048.der"
expect 1 '1.2.840.10045.2.1 is no public-key algorithm' err "$data/ecp256.der"

cat "$gost" "$data/rsa2048.der" > bundle.der
expect 0 'certificate 2 of 2' out bundle.der
expect 1 'holds 2 certificates' err bundle.der --out blob2
[ ! -e blob2 ] || fail 'a blob was written'
for der in "$gost" "$data/rsa2048.der"; do
  echo '-----BEGIN CERTIFICATE-----'
  base64 -w 64 "$der"
  echo '-----END CERTIFICATE-----'
done > bundle.pem
expect 0 'certificate 2 of 2' out bundle.pem

expect 1 'No such file' err missing.der
expect 1 'nothing can be read' err "$work"
: > empty
expect 1 'nothing can be read' err empty
head -c 200 "$gost" > cut
expect 1 'certificate 1 is damaged' err cut
head -c 300 bundle.pem > cut.pem
expect 1 'certificate 1 is damaged' err cut.pem
printf -- '-----BEGIN NOTHING-----\nAAAA\n-----END NOTHING-----\n' > none.pem
expect 1 'no certificate' err none.pem
head -c 30 blob > short
expect 1 'too short' err --back short
expect 1 'cannot be written' err "$gost" --out "$work"
"$keyblob" "$gost" > /dev/full 2> err && fail 'a full disk went unseen'
grep -q 'output cannot be written' err || fail 'no word of a full disk'

expect 2 'usage' err
expect 2 'usage' err --unknown
expect 2 'usage' err "$gost" "$gost"
expect 2 'usage' err "$gost" --out
expect 2 'usage' err --back blob --check
expect 2 'usage' err --back blob "$gost"
expect 0 'usage' out --help
