#!/bin/sh
# oidinfo_test.sh [--self-test] OIDINFO
set -eu
export LC_ALL=C.UTF-8

if [ "$1" = --self-test ]; then
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the program as it is" "$0" "$2"
  # shellcheck disable=SC2016  # what the changed program does
  {
    changed "$2" "no results" 'wanted name' '"$real" "$@" > /dev/null'
    changed "$2" "results where messages go" 'wanted none:' '"$real" "$@" >&2'
    changed "$2" "messages where results go" 'wanted none:' '"$real" "$@" 2>&1'
    changed "$2" "failures without a status" 'exit status 0, wanted 1' \
      '"$real" "$@" || exit 0'
    changed "$2" "one status for all failures" 'exit status 1, wanted 2' \
      '"$real" "$@" || exit 1'
    changed "$2" "no group" '--group' '"$real" "$1" ${2+"$2"}'
    changed "$2" "a line less" 'should hold' '"$real" "$@" | sed /marked/d'
    changed "$2" "a record less" '--all prints 259 lines' \
      '[ "$1" != --all ] || { "$real" --all | sed 260d; exit; }
       exec "$real" "$@"'
    changed "$2" "no status for a full disk" '--help > /dev/full' \
      '"$real" "$@"; status=$?; [ "$status" -ne 3 ] || exit 0; exit "$status"'
    changed "$2" "no word of a full disk" '--help > /dev/full' \
      '"$real" "$@" 2> messages; status=$?
       [ "$status" -eq 3 ] || cat messages >&2; exit "$status"'
    changed "$2" "a lookup that passes over a full disk" '--oid .* > /dev/full' \
      '"$real" "$@"; status=$?
       [ "$1$status" != --oid3 ] || exit 0; exit "$status"'
  }
  must_fail "no program" 'exit status 127' "$0" "$work/none"
  end_self_test
fi
program=$1
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

expect 0 'name  *GOST R 34.10-2001'  '' --oid 1.2.643.2.2.19 --group 3
holds out '  OID         1.2.643.2.2.19
  name        GOST R 34.10-2001
  group       3, public-key algorithm
  ALG_ID      0x2E23
  CNG         GOST R 34.10-2001
  marked      yes
'
expect 0 'ALG_ID  *0x2E23'           '' --oid 1.2.643.2.2.19
expect 0 'OID  *2.5.4.3'             '' --name 'common name'
expect 0 'group  *5, name attribute' '' --oid 2.5.4.3
expect 0 'group  *6,'                '' --oid 2.5.4.3 --group 6
expect 0 'CNG  *GOST 28147-89'       '' --algid 0x661E
expect 0 'public key  *0x2400 (RSA)' '' --sign 32772,9216
expect 0 'name  *(no name)'          '' --oid 2.5.29.16
expect 0 'extra  *0x0007 0x0000'     '' --name E --group 5
expect 0 'usage:'                    '' --help
expect 0 '^group  *OID'              '' --all
rows=$(wc -l < out)
[ "$rows" -eq 260 ] || fail "--all prints $rows lines"

expect 1 '' 'no such record'         --oid 1.2.3
expect 1 '' 'no such record'         --oid 2.5.4.3 --group 9
expect 1 '' 'no such record'         --name Имя
expect 2 '' 'usage:'
expect 2 '' 'usage:'                 --oid
expect 2 '' "unknown option '--id'"  --id 1.2.3
expect 2 '' 'one key is needed'      --oid 1.2.3 --name CN
expect 2 '' "'x' is no group"        --oid 1.2.3 --group x
expect 2 '' "'' is no ALG_ID"        --algid ''
expect 2 '' "'0x' is no ALG_ID"      --algid 0x
expect 2 '' "'12z' is no ALG_ID"     --algid 12z
expect 2 '' "'-1' is no ALG_ID"      --algid -1
expect 2 '' 'is no ALG_ID'           --algid 4294967296
expect 2 '' 'is no pair'             --sign 0x8004
expect 2 '' 'is no pair'             --sign 0x8004,

for order in --help --all '--oid 2.5.4.3' '--name E' '--algid 0x661E' \
  '--sign 32772,9216'; do
  # shellcheck disable=SC2086  # the order is words
  expect_full_disk 3 'the output cannot be written' $order
done
