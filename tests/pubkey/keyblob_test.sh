#!/bin/sh
# keyblob_test.sh [--self-test] KEYBLOB DATA
# Runs the example program on the certificates in the folder DATA and on what
# is none.
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
    with "failures without a status" 'exit status 0, wanted 1' \
      '"$real" "$@" || exit 0'
    with "one status for all failures" 'exit status 1, wanted 2' \
      '"$real" "$@" || exit 1'
    with "no --out" 'the blob has' '"$real" "$1" ${2+"$2"}'
    with "half a blob" 'the blob has' \
      '"$real" "$@"; status=$?
       [ ! -f blob ] || head -c 50 blob > half && mv half blob
       exit "$status"'
    with "no --check" 'wanted byte for byte' '"$real" "$1"'
    with "a line less" 'no line with .*magic' '"$real" "$@" | sed /magic/d'
    with "no word of a full disk" 'dev/full' \
      '"$real" "$@"; status=$?; [ ! -c /dev/stdout ] || exit 0; exit "$status"'
  }
  must_fail "no program" 'exit status 127' "$0" "$work/none" "$data"
  must_fail "no certificates" 'No such file' "$0" "$program" "$work/none"
  end_self_test
fi
program=$1 data=$2
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

# shows PATTERN...: each matches a line of the last output.
shows() {
  for pattern in "$@"; do
    grep -q -e "$pattern" out || fail "no line with $pattern in:
$(cat out)"
  done
}

gost=$data/gost2001-A.der
expect 0 'byte for byte' '' "$gost" --check --out blob
shows '1.2.643.2.2.19  GOST R 34.10-2001' 'ALG_ID      0x2E23' \
  'key         512 bits' '1.2.643.2.2.35.1  GOST R 34.10 - 2001' \
  '1.2.643.2.2.30.1$' '0008  4d 41 47 31  *magic'
[ "$(wc -c < blob)" = 100 ] || fail "the blob has $(wc -c < blob) bytes"

expect 0 'content, 66 bytes' '' --back blob
shows '0000  04 40 a5 21' 'parameters, 20 bytes'

expect 0 'ALG_ID      0xA400' '' "$data/rsa2048.der"
expect 1 'The key is no OCTET STRING' '' "$data/rsa2048.der" --check
expect 0 'ALG_ID      0x2200' '' "$data/dsa2048.der"
expect 1 'certificate 1 of 1' \
  '1.2.840.10045.2.1 is no public-key algorithm' "$data/ecp256.der"

cat "$gost" "$data/rsa2048.der" > bundle.der
expect 0 'certificate 2 of 2' '' bundle.der
expect 1 '' 'holds 2 certificates' bundle.der --out blob2
[ ! -e blob2 ] || fail 'a blob was written'
for der in "$gost" "$data/rsa2048.der"; do
  echo '-----BEGIN CERTIFICATE-----'
  base64 -w 64 "$der"
  echo '-----END CERTIFICATE-----'
done > bundle.pem
expect 0 'certificate 2 of 2' '' bundle.pem

expect 1 '' 'No such file' missing.der
expect 1 '' 'nothing can be read' "$folder"
makes empty ''
expect 1 '' 'nothing can be read' empty
head -c 200 "$gost" > damaged
expect 1 '' 'certificate 1 is damaged' damaged
head -c 300 bundle.pem > damaged.pem
expect 1 '' 'certificate 1 is damaged' damaged.pem
makes none.pem \
  '-----BEGIN NOTHING-----\nAAAA\n-----END NOTHING-----\n'
expect 1 '' 'no certificate' none.pem
head -c 30 blob > short
expect 1 '' 'too short' --back short

# What can't be written.
expect 1 'blob        100 bytes' 'cannot be written' "$gost" --out "$folder"
expect 1 'blob        100 bytes' 'cannot be written' "$gost" --out /dev/full
expect_full_disk 1 'the output cannot be written' --help
expect_full_disk 1 'the output cannot be written' "$gost"
expect_full_disk 1 'the output cannot be written' "$gost" --check
expect_full_disk 1 'the output cannot be written' --back blob

expect 2 '' 'usage'
expect 2 '' 'usage' --unknown
expect 2 '' 'usage' "$gost" "$gost"
expect 2 '' 'usage' "$gost" --out
expect 2 '' 'usage' --back blob --check
expect 2 '' 'usage' --back blob "$gost"
expect 0 'usage' '' --help
