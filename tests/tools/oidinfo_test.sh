#!/bin/sh
# oidinfo_test.sh [--self-test] OIDINFO
# What oidinfo finds, in which order, and how it presents it.
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
      '[ "$1" != --all ] || { "$real" "$@" | sed 260d; exit; }
       exec "$real" "$@"'
    changed "$2" "no status for a full disk" '> /dev/full' \
      '"$real" "$@"; status=$?
       [ "$status" -ne 4 ] || [ "$1" != --sign ] || exit 0; exit "$status"'
    changed "$2" "no word of a full disk" '> /dev/full' \
      '"$real" "$@" 2> messages; status=$?
       [ "$status" -eq 4 ] && [ "$1" = --all ] || cat messages >&2
       exit "$status"'
    changed "$2" "the first match alone" 'wanted 2 of 2' \
      '[ "$*" != 2.5.4.3 ] || { "$real" "$@" | head -n 5; exit; }
       exec "$real" "$@"'
    changed "$2" "matches in another order" 'not in the order of the registry' \
      '[ "$*" != "- --tsv" ] || { "$real" "$@" | (read -r line; echo "$line"; tac); exit; }
       exec "$real" "$@"'
    changed "$2" "no word of what the lookup returns" 'FindOIDInfo returns' \
      '"$real" "$@" | sed "s/, the one that.*//"'
    changed "$2" "no suggestions" 'Common Name' \
      '"$real" "$@" 2> messages; status=$?; sed "s/; is it.*//" messages >&2
       exit "$status"'
    changed "$2" "colours all the time" 'should hold' \
      '"$real" "$@" | sed "s/^1.2/$(printf "\033")[1m&/"'
    changed "$2" "colours never" 'no colours on a terminal' \
      '[ -t 1 ] || exec "$real" "$@"; "$real" "$@" | cat'
    changed "$2" "broken JSON" 'no JSON' \
      'case $* in *--json*) "$real" "$@" | sed 1d; exit ;; esac
       exec "$real" "$@"'
    changed "$2" "a member less in JSON" 'the members are' \
      'case $* in *--json*) "$real" "$@" | sed "/cng_extra/d"; exit ;; esac
       exec "$real" "$@"'
    changed "$2" "no status with JSON" '--json: exit status 0, without' \
      '"$real" "$@"; status=$?; [ "$1" != --json ] || exit 0; exit "$status"'
    changed "$2" "no messages with JSON" '--json has other messages' \
      '[ "$1" != --json ] || exec 2> /dev/null; exec "$real" "$@"'
    changed "$2" "raw control characters" 'a control character' \
      '"$real" "$@" 2> messages; status=$?; sed "s/u{202E}/&$(printf "\033")/" \
       messages >&2; exit "$status"'
  }
  must_fail "no program" 'exit status 127' "$0" "$work/none"
  end_self_test
fi
program=$1 here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

# The kind of key follows from its form, or from an option.
expect 0 'name  *GOST R 34.10-2001'  '' 1.2.643.2.2.19 --group 3
holds out '1.2.643.2.2.19: 1 of 1, the one that FindOIDInfo returns
  OID         1.2.643.2.2.19
  name        GOST R 34.10-2001
  group       3, public-key algorithm
  ALG_ID      0x2E23
  CNG         GOST R 34.10-2001
  marked      yes
'
expect 0 'ALG_ID  *0x2E23'           '' --oid 1.2.643.2.2.19
expect 0 'OID  *2.5.4.3$'            '' --name 'common name'
expect 0 'OID  *2.5.4.3$'            '' 'cOMMON nAME'
expect 0 'group  *6,'                '' --group 6 2.5.4.3
expect 0 'group  *6,'                '' 2.5.4.3 --group=0x6
expect 0 'CNG  *GOST 28147-89'       '' --algid 0x661E
expect 0 'CNG  *GOST 28147-89'       '' 26142
expect 0 'public key  *0x2400 (RSA)' '' --sign 32772,9216
expect 0 'public key  *0x2400 (RSA)' '' 0x8004,0x2400
shows 'hash  *0x8004 (sha1)'
expect 0 'name  *(no name)'          '' 2.5.29.16
expect 0 'extra  *0x0007 0x0000'     '' E --group 5
expect 1 '' "no record has the name '2.5.4.3'" --name 2.5.4.3
expect 1 '' "no record has the OID 'CN'"       --oid CN
expect 0 'OID  *2.5.4.3$'            '' -- CN

# Every match, in the order of the search; the lookup's own is told.
expect 0 '2 of 2' '' 2.5.4.3
holds out '2.5.4.3: 1 of 2, the one that FindOIDInfo returns
  OID         2.5.4.3
  name        CN
  group       5, name attribute
  marked      no
2.5.4.3: 2 of 2
  OID         2.5.4.3
  name        Common Name
  group       6, extension or attribute
  marked      no
'
expect 0 '4 of 4' '' 0x8004,0x2400
[ "$(grep -c 'FindOIDInfo returns' out)" -eq 1 ] || fail "returned: $(cat out)"
# A hash counts as a pair with 0.
expect 0 'name  *sha1$' '' 0x8004,0
shows '1 of 3, the one that FindOIDInfo returns'

# The whole registry, and each group of it.
expect 0 '^group  *OID' '' --all
rows=$(wc -l < out)
[ "$rows" -eq 260 ] || fail "--all prints $rows lines"
expect 0 '^key	kind' '' --all --tsv
tail -n +2 out > all.tsv
for group in 1 2 3 4 5 6 7 8 20; do
  expect 0 'group_name' '' --group "$group" --tsv
  tail -n +2 out
done > groups.tsv
sed 's/\tgroup\t/\tall\t/' groups.tsv | cmp -s - all.tsv ||
  fail "the groups are not the whole registry"
expect 0 '^8      2.5.29.32.0  *All issuance' '' --group 8
[ "$(wc -l < out)" -eq 2 ] || fail "--group 8 prints $(cat out)"
expect 0 '^8      2.5.29.32.0  *All issuance' '' --group 8 --all

# Each record is found by its OID and by its name, with all that have the same,
# in the order of the registry.
cut -f 4 all.tsv | sort -u > oids
got=0
"$program" - --tsv < oids > out 2> err || got=$?
judge 'oidinfo - < oids' 0 '^2.5.4.3	oid	yes' ''
[ "$(wc -l < out)" -eq 260 ] || fail "by OID $(wc -l < out) lines are found"
cut -f 1,4 out | tail -n +2 | awk -F '\t' '$1 != $2 {exit 1}' ||
  fail "a record with another OID is found"
# The row of each match in the registry, by OID, ascends.
awk -F '\t' 'NR == FNR {row[$4 FS $5 FS $6 FS $8 FS $11] = FNR; next}
  FNR == 1 {next}
  {n = row[$4 FS $5 FS $6 FS $8 FS $11]}
  $1 == key && n < last {exit 1} {key = $1; last = n}' all.tsv out ||
  fail "the matches are not in the order of the registry"
awk -F '\t' 'FNR == 1 {next} ($1 != key) != ($3 == "yes") {exit 1} {key = $1}' \
  out || fail "the first match is not the one that is returned"
cut -f 5 all.tsv | grep '[^ ]' | sort -u > names
got=0
"$program" - --tsv < names > out 2> err || got=$?
judge 'oidinfo - < names' 0 'GOST R 34.10-2001	name	yes' ''
cut -f 2 out | tail -n +2 | grep -v -x name && fail "a name of another kind"
tail -n +2 out | cut -f 4-6 | sort -u > found
awk -F '\t' '$5 ~ /[^ ]/' all.tsv | cut -f 4-6 | sort -u | cmp -s - found ||
  fail "not every record is found by its name"

# Keys of standard input.
printf 'CN\n\n1.2.3\n0x2E23' > keys
got=0
"$program" - < keys > out 2> err || got=$?
judge 'oidinfo - < keys' 1 '^0x2E23: 1 of 1' "no record has the OID '1.2.3'"
shows '^CN: 1 of 1'
got=0
"$program" --algid - < keys > out 2> err || got=$?
judge 'oidinfo --algid - < keys' 2 '' "'CN' is no ALG_ID"
printf 'C\000N\n' > keys
got=0
"$program" - < keys > out 2> err || got=$?
judge 'oidinfo - < keys with a NUL' 3 '' 'standard input: is no text'
got=0
"$program" - < "$folder" > out 2> err || got=$?
judge 'oidinfo - < a folder' 4 '' "standard input: can't be read: Is a dir"
got=0
"$program" - <&- > out 2> err || got=$?
judge 'oidinfo - with no standard input' 4 '' "standard input: can't be read"
got=0
head -c 1100000 /dev/zero | "$program" - > out 2> err || got=$?
judge 'oidinfo - with a long input' 3 '' 'standard input: is larger than 1 MiB'

# What is not found, and what is like it.
expect 1 '' "no record has the OID '1.2.3'" 1.2.3
expect 1 '' "no record in group 9 has the OID" 2.5.4.3 --group 9
expect 1 '' 'no record in group 9$'  --group 9
expect 1 '' "no record has the name 'Имя'" Имя
expect 1 '' "has the name 'kommon name'; is it 'Common Name'?\$" 'kommon name'
expect 1 '' "is it '1.2.643.2.2.19', '1.2.643.2.2.98' or '1.2.643.2.2.9'?\$" \
  1.2.643.2.2.18
expect 1 '' "the name 'SHA3'; is it 'sha1' or 'sha'?\$" SHA3 --group 1
expect 1 '' "the name 'nothing of this kind'\$" 'nothing of this kind'
expect 1 '' 'u{1B}.u{9B}.u{202E}' \
  "$(printf '\033\302\233\342\200\256')"
LC_ALL=C grep -q '[^ -~]' err && fail "a control character in: $(cat -v err)"
expect 1 '' '.xFF' --oid "$(printf 'a\377')"
expect 2 '' 'no text in the encoding' "$(printf 'a\377')"
LC_ALL=C
expect 2 '' 'no text in the encoding' Имя
LC_ALL=C.UTF-8

# Usage.
expect 0 'Usage: oidinfo'            '' --help
expect 2 '' 'a key is missing'
expect 2 '' "'--oid' needs a value"  --oid
expect 2 '' "unknown option '--id'"  --id 1.2.3
expect 2 '' 'one key is enough'      --oid 1.2.3 --name CN
expect 2 '' 'one key is enough'      CN --name CN
expect 2 '' 'none with --all'        CN --all
expect 2 '' "unexpected argument 'name'" common name
expect 2 '' "'--group' is given twice" CN --group 1 --group 2
expect 2 '' "'x' is no group"        --oid 1.2.3 --group x
expect 2 '' "'' is no group"         --group ''
expect 2 '' "'' is no ALG_ID"        --algid ''
expect 2 '' "'0x' is no ALG_ID"      --algid 0x
expect 2 '' "'12z' is no ALG_ID"     --algid 12z
expect 2 '' "'-1' is no ALG_ID"      --algid=-1
expect 2 '' 'is no ALG_ID'           --algid 4294967296
expect 2 '' 'is no pair'             --sign 0x8004
expect 2 '' 'is no pair'             --sign 0x8004,

# Columns are coloured on a terminal, where nobody has anything against it.
on_terminal() {
  script -qec "$1 '$program' CN" /dev/null < /dev/null > out
}
on_terminal 'env -u NO_COLOR'
grep -q "$(printf '\033')" out || fail "no colours on a terminal: $(cat out)"
on_terminal 'NO_COLOR='
grep -q "$(printf '\033')" out || fail "no colours though NO_COLOR is empty"
on_terminal 'NO_COLOR=1'
grep -q "$(printf '\033')" out && fail "colours in spite of NO_COLOR"

# TSV: 15 fields in each line.
expect 0 '^key	kind	returned	oid	name	group	group_name	algid	extra	hash	public_key	flags	cng	cng_extra	marked$' '' \
  0x801E,0x2E23 --tsv
holds out "$(sed 1q out)
0x801E,0x2E23	sign	yes	1.2.643.2.2.3	GOST R 34.10/34.11-2001	4	\
signature algorithm	0x801E	0x2E23	0x801E	0x2E23		GOST R 34.11-94	\
GOST R 34.10-2001	yes
"
awk -F '\t' 'NF != 15 {exit 1}' all.tsv || fail "a line has not 15 fields"
expect 1 '^key	kind' 'no record' --tsv 1.2.3
[ "$(wc -l < out)" -eq 1 ] || fail "a record is found: $(cat out)"

# JSON: the same members in each record, in the order that is documented.
members='{"lookups": [{"key": 0, "kind": 0, "group": 0, "records": [{
  "returned": 0, "oid": 0, "name": 0, "group": 0, "group_name": 0, "algid": 0,
  "extra": 0, "hash": {"algid": 0, "name": 0},
  "public_key": {"algid": 0, "name": 0}, "flags": 0, "cng": 0, "cng_extra": 0,
  "marked": 0}], "suggestions": 0, "hidden": 0}]}'
# shellcheck source=tests/tools/json_output.sh
. "$here/json_output.sh"
json 259 'len(lookups[0]["records"])' --all
json "['2.5.4.3', 'oid', None, 'CN', True, 'Common Name', False]" \
  '[lookups[0][m] for m in ("key", "kind", "group")] + [r[m]
    for r in lookups[0]["records"] for m in ("name", "returned")]' 2.5.4.3
json "{'algid': 32772, 'name': 'sha1'} {'algid': 9216, 'name': 'RSA'} [9216]" \
  '"{hash} {public_key} {extra}".format(**lookups[0]["records"][0])' \
  0x8004,0x2400
json "[] ['Common Name'] kommon name Имя" \
  '"{records} {suggestions} {key} Имя".format(**lookups[0])' 'kommon name'
json "Имя" 'lookups[0]["key"]' Имя
grep -q Имя out || fail "JSON escapes text: $(cat out)"
LC_ALL=C
json "Имя" 'lookups[0]["key"]' --oid Имя
LC_ALL=C.UTF-8
grep -q Имя out || fail "JSON is not UTF-8: $(cat out)"
json "a$(printf '\033\177\302\233')" 'lookups[0]["key"]' \
  "a$(printf '\033\177\302\233')"
harmless
json "[None, None]" '[r[m] for r in lookups[0]["records"]
  for m in ("returned", "algid")]' --group 8

# What can't be written.
for order in --all '--all --json' '--group 3 --tsv' '--oid 2.5.4.3' \
  '--name E' '--algid 0x661E' '--sign 32772,9216'; do
  # shellcheck disable=SC2086  # the order is words
  expect_full_disk 4 "the output can't be written: No space left" $order
done
