#!/bin/sh
# oidinfo_test.sh OIDINFO
set -u
export LC_ALL=C.UTF-8
oidinfo=$1
failed=0

# expect STATUS PATTERN ARGUMENT...: the exit status, and a pattern that the
# output, standard error included, must match.
expect() {
  status=$1 pattern=$2
  shift 2
  output=$("$oidinfo" "$@" 2>&1)
  actual=$?
  if [ $actual -ne "$status" ] || ! printf '%s' "$output" | grep -q "$pattern"
  then
    printf 'oidinfo %s\nexit status %s, wanted %s and "%s" in:\n%s\n\n' \
      "$*" "$actual" "$status" "$pattern" "$output"
    failed=1
  fi
}

expect 0 'name  *GOST R 34.10-2001'  --oid 1.2.643.2.2.19 --group 3
expect 0 'ALG_ID  *0x2E23'           --oid 1.2.643.2.2.19
expect 0 'OID  *2.5.4.3'             --name 'common name'
expect 0 'group  *5, name attribute' --oid 2.5.4.3
expect 0 'group  *6,'                --oid 2.5.4.3 --group 6
expect 0 'CNG  *GOST 28147-89'       --algid 0x661E
expect 0 'public key  *0x2400 (RSA)' --sign 32772,9216
expect 0 'name  *(no name)'          --oid 2.5.29.16
expect 0 'extra  *0x0007 0x0000'     --name E --group 5
expect 0 '^group  *OID'              --all
expect 0 'usage:'                    --help
expect 1 'no such record'            --oid 1.2.3
expect 1 'no such record'            --oid 2.5.4.3 --group 9
expect 1 'no such record'            --name Имя
expect 2 'usage:'
expect 2 'usage:'                    --oid
expect 2 "unknown option '--id'"     --id 1.2.3
expect 2 'one key is needed'         --oid 1.2.3 --name CN
expect 2 "'x' is no group"           --oid 1.2.3 --group x
expect 2 "'' is no ALG_ID"           --algid ''
expect 2 "'0x' is no ALG_ID"         --algid 0x
expect 2 "'12z' is no ALG_ID"        --algid 12z
expect 2 "'-1' is no ALG_ID"         --algid -1
expect 2 'is no ALG_ID'              --algid 4294967296
expect 2 'is no pair'                --sign 0x8004
expect 2 'is no pair'                --sign 0x8004,

rows=$("$oidinfo" --all | wc -l)
[ "$rows" -eq 260 ] || { echo "--all prints $rows lines"; failed=1; }
exit $failed
