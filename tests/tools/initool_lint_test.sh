#!/bin/sh
# initool_lint_test.sh [--self-test] INITOOL
# What `initool lint` tells of each kind of line, and that it agrees with the
# library's reader, as `initool list` shows it, over many random lines.
set -eu
export LC_ALL=C.UTF-8

if [ "$1" = --self-test ]; then
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the program as it is" "$0" "$2"
  # printing WHAT MESSAGE SED_SCRIPT: the JSON of lint is another.
  # shellcheck disable=SC2016  # what the changed program does
  printing() {
    changed "$program" "$1" "$2" '"$real" "$@" > text; status=$?
      case $* in *json*lint*) sed '"'$3'"' text ;; *) cat text ;; esac
      exit "$status"'
  }
  program=$2
  # shellcheck disable=SC2016  # what the changed program does
  {
    changed "$2" "another word" 'should hold' \
      '"$real" "$@" > text; status=$?
       sed "s/ a comment/ no comment/" text; exit "$status"'
    changed "$2" "a loss without a status" 'exit status 0, wanted 3' \
      '"$real" "$@" || exit 0'
  }
  printing "another value" 'list' 's/"value": "v"/"value": "w"/'
  printing "a plain key that is none" 'repaired' 's/"plain_key"/"incomplete"/'
  printing "a line that could be a plain key" 'repaired' 's/"no_bracket"/"plain_key"/'
  printing "a line that lacks more than an =" 'repaired' 's/"no_bracket"/"incomplete"/'
  printing "no comments" 'repaired' 's/"comment"/"no_bracket"/'
  printing "no word of the header that is missing" 'remarks' 's/"no_header"/"blank"/'
  printing "another line that replaces" 'later' 's/"later": 1/"later": 2/'
  printing "another line that is replaced" 'earlier' 's/"earlier": 1/"earlier": 2/'
  printing "no word of blanks behind headers" 'remarks' 's/"trailing_blank"//'
  printing "no word of keys that are headers" 'remarks' 's/"equals_in_header"//'
  printing "no word of CR" 'remarks' 's/"carriage_return"/"nul"/'
  printing "no word of another case" 'remarks' 's/"other_case"/"nul"/'
  must_fail "no program" 'exit status 127' "$0" "$work/none"
  end_self_test
fi
program=$1
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

# Every kind of line.
makes all.ini '[k=v
# a note
  ; another

[Main]
name = value
[Name=a
[nAME=b
[Main] ; note
[unfinished
some text
[list=a,b]
[ Blank ] \t
[MAIN]
[Name=c\r
[esc=\033]0;x\000\t
=value
'
expect 3 . '' lint all.ini
holds out " 1  skipped  '[k' comes before the first header
 2  skipped  a comment
 3  skipped  a comment
 4  skipped  blank
 5  header   section 'Main'
 6  skipped  'name = value' does not begin with \"[\"; '[name' would be a key
 7  key      '[Name' is 'a'; line 8 replaces it
 8  key      '[nAME' is 'b'; replaces line 7; line 15 replaces it; the first spelling of the name stays
 9  skipped  '[Main] ; note' does not end with \"]\", and has no \"=\"
10  skipped  '[unfinished' does not end with \"]\", and has no \"=\"
11  skipped  'some text' does not begin with \"[\"
12  header   section 'list=a,b'; no key line, because it ends with \"]\"
13  header   section 'Blank ]'; the name loses the blank at the end, not the \"]\"
14  header   section 'MAIN', which goes on from line 5; the first spelling of the name stays
15  key      '[Name' is 'c'; replaces line 8; the CR at the end is dropped
16  key      '[esc' is '\\\\u{1B}]0;x\\\\u{0}\\\\u{9}'; holds NUL, where names end when they are compared
17  skipped  '=value' does not begin with \"[\"; '[' would be a key
all.ini: 17 lines, 4 headers, 4 key lines; a change would lose 8 lines; the CR at the end of 1 line would go
"
expect 3 '^6	skipped	plain_key						' '' --tsv lint all.ini
expect 3 "^14	header	other_case	MAIN			5		" '' --tsv lint all.ini
expect 3 '^8	key	other_case	MAIN	\|^8	key	other_case	Main	\[nAME	b	7	15	' '' \
  lint all.ini --tsv
expect 3 '^line	kind	remarks	section	key	value	earlier	later	message$' '' \
  --tsv lint all.ini

# What may be changed, and what is empty.
makes clean.ini '[S]\n\n[k=v'
expect 0 '^clean.ini: 3 lines, 1 header, 1 key line; a change loses none$' '' \
  lint clean.ini
expect 0 '"later": null' '' --json lint clean.ini
makes crlf.ini '[S]\r\n[k=v\r\n'
expect 0 'its lines end with CR LF, and will$' '' lint crlf.ini
: > empty.ini
expect 0 '^empty.ini: is empty$' '' lint empty.ini
expect 0 '^{"lines": \[\]}$' '' --json lint empty.ini

# Byte-order marks.
makes marked.ini '\357\273\277[S]\n[k=v\n\357\273\277[S]\n'
for width in '' --wide; do
  # shellcheck disable=SC2086  # there may be no option
  expect 3 '^1  skipped  begins with a UTF-8 byte-order mark, not with "\["$' '' \
    $width lint marked.ini
  matches out "it begins with a UTF-8 byte-order mark, so its first line is" ||
    fail "no word of the mark: $(cat out)"
  matches out "^2  skipped  '\[k' comes before the first header" ||
    fail "what the first line was to be is not said: $(cat out)"
  matches out '^3  skipped  .* does not begin with "\["$' ||
    fail "a mark in another line: $(cat out)"
done
makes utf16.ini '\377\376[\000S\000]\000\n\000'
expect 3 'UTF-16 byte-order mark, so convert it' '' lint utf16.ini

# A change is refused where lint tells a loss, and only there.
for file in all clean crlf marked utf16; do
  cp $file.ini copy.ini
  linted=0 changed=0
  "$program" lint copy.ini > out 2> err || linted=$?
  "$program" set copy.ini New '[k' v > out 2> err || changed=$?
  [ "$linted" -eq "$changed" ] ||
    fail "lint $file.ini ends with $linted, a change with $changed"
done

# Long lines are told by their beginning.
{ printf '[S]\n#x'; head -c 100 /dev/zero | tr '\0' y; echo; head -c 70 /dev/zero | tr '\0' z; } > long.ini
expect 3 "'z\{60\}'\.\.\. does not begin" '' lint long.ini

# Random lines.
cat > lines.py <<'END'
import json, random, subprocess, sys

def run(command, text, option):
    done = subprocess.run([sys.argv[1], "--json", *option, command, "-"],
                          input=text, capture_output=True)
    if done.returncode not in (0, 3):
        sys.exit(f"exit status {done.returncode}: {done.stderr}")
    return json.loads(done.stdout)

def name(text):
    return text.split("\0")[0].lower()

def line(random):
    pieces = [b"[", b"]", b"=", b" ", b"\t", b"\r", b"#", b";", b"k", b"K",
              b"a", b"\0", b"v", "\u00e4".encode(), b"\x1b"]
    weights = [3, 2, 2, 2, 1, 1, 1, 1, 3, 3, 2, 1, 1, 1, 1]
    start = random.choice([b"", b"[", b"[k=", b"[a", b"k=", b" [", b"[K]"])
    return start + b"".join(random.choices(pieces, weights,
                                           k=random.randrange(6)))

def check(condition, what, row, text):
    if not condition:
        sys.exit(f"{what}: {row}, of {text}")

for seed in range(20):
    generator = random.Random(seed)
    option = ["--wide"] if seed % 2 else []
    texts = [line(generator) for _ in range(250)]
    rows = run("lint", b"\n".join(texts) + b"\n", option)["lines"]
    check([row["line"] for row in rows] == list(range(1, 251)), "lines", 0, 0)

    # The headers and key lines make what list lists.
    sections, last = {}, {}
    for row, text in zip(rows, texts):
        remarks = row["remarks"]
        earlier = spelled = None
        if row["kind"] != "skipped":
            section = sections.setdefault(
                name(row["section"]), [row["section"], {}, row["line"]])
            if row["kind"] == "header":
                spelled = section[0] == row["section"]
                earlier = section[2] if section[2] != row["line"] else None
            else:
                key = section[1].setdefault(name(row["key"]),
                                            [row["key"], None, None])
                spelled = key[0] == row["key"]
                earlier = key[2]
                key[1:] = row["value"], row["line"]
                last[row["line"]] = earlier
        check(row["earlier"] == earlier, "earlier", row, text)
        check(("other_case" in remarks) == (spelled is False), "remarks", row,
              text)
        check(("carriage_return" in remarks) == text.endswith(b"\r"),
              "remarks", row, text)
        check(("nul" in remarks) == (b"\0" in text), "remarks", row, text)
    later = {earlier: number for number, earlier in last.items()}
    for row, text in zip(rows, texts):
        check(row["later"] == later.get(row["line"]), "later", row, text)
    made = [{"section": section, "key": key, "value": value}
            for section, keys, _ in sections.values()
            for key, value, _ in list(keys.values()) or [(None, None, None)]]
    listed = run("list", b"\n".join(texts), option)["keys"]
    in_order = lambda row: (row["section"], row["key"] or "")
    check(sorted(made, key=in_order) == sorted(listed, key=in_order),
          "list", listed, made)

    # A line that is repaired as its remark tells becomes what it tells.
    wanted, repaired = [], []
    def expect(kind, text):
        wanted.append(kind)
        repaired.append(text)
    for row, text in zip(rows, texts):
        remarks = row["remarks"]
        bare = text.lstrip(b" \t\r")
        reasons = {"blank", "comment", "plain_key", "no_bracket", "incomplete",
                   "no_header"} & set(remarks)
        check(len(reasons) == (row["kind"] == "skipped"), "remarks", row, text)
        check(("blank" in remarks) == (bare == b""), "remarks", row, text)
        if row["kind"] == "header":
            bracket = text.rstrip(b"\r")[-1:]
            check(("trailing_blank" in remarks) == (bracket != b"]"),
                  "remarks", row, text)
            expect({"key"} if "equals_in_header" in remarks
                   else {"header", "skipped"}, text + b"x")
            check(("equals_in_header" in remarks) == (b"=" in text), "remarks",
                  row, text)
            continue
        expect({"key"} if row["kind"] == "key" or "no_header" in remarks
               else {"skipped"}, text)
        if "plain_key" in remarks:
            expect({"key"}, b"[" + bare)
        if "no_bracket" in remarks:
            expect({"header", "skipped"}, b"[" + bare)
            check(bare[:1] not in b"[#;", "repaired", row, text)
        if "comment" in remarks:
            check(bare[:1] in b"#;", "repaired", row, text)
        if "incomplete" in remarks:
            expect({"key"}, bare + b"=")
    told = run("lint", b"\n".join([b"[s]", *repaired, b""]), option)["lines"]
    told.pop(0)
    for row, kinds, text in zip(told, wanted, repaired, strict=True):
        check(row["kind"] in kinds, f"repaired, wanted {kinds}", row, text)
END
python3 lines.py "$program" || fail "random lines"
