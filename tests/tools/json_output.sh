# How the tests look at the JSON that a program prints. To be read by `.` after
# program_test.sh, in a script that has set `members`, a value of Python with
# the members of the document: of objects by their names in their order, of
# lists by one element. What is 0 there may be anything, and anything may be
# null.
# shellcheck shell=sh

: "${program:?}" "${members:?}"
cat > members.py <<'END'
import json, sys
def compare(value, wanted):
    if isinstance(wanted, dict) and value is not None:
        if list(value) != list(wanted):
            sys.exit(f"the members are {list(value)}")
        for name in wanted:
            compare(value[name], wanted[name])
    elif isinstance(wanted, list) and value is not None:
        for element in value:
            compare(element, wanted[0])
try:
    document = json.loads(sys.stdin.buffer.read().decode("utf-8"))
except ValueError as error:
    sys.exit(f"no JSON in UTF-8: {error}")
compare(document, eval(sys.argv[1]))
result = str(eval("(" + sys.argv[2] + ")", document))
sys.stdout.buffer.write(result.encode("utf-8"))
END

# json RESULT EXPRESSION ARGUMENT...
# Runs the program with --json and the arguments. RESULT is what an expression
# of Python is, in which the members of the document are variables. The exit
# status and the messages are those that there are without --json. Neither run
# has an input, which the other would miss.
json() {
  wanted=$1 expression=$2
  shift 2
  got=0 plain=0
  "$program" "$@" > plain_out 2> plain_err < /dev/null || plain=$?
  "$program" --json "$@" > out 2> err < /dev/null || got=$?
  shown=$(LC_ALL=C.UTF-8 python3 members.py "$members" "$expression" \
    < out 2>&1) || fail "$* --json: $shown"
  [ "$shown" = "$wanted" ] ||
    fail "$expression of $* is '$shown', not '$wanted'"
  [ "$got" -eq "$plain" ] ||
    fail "$* --json: exit status $got, without --json $plain"
  cmp -s plain_err err || fail "$* --json has other messages:
$(cat err)
without --json:
$(cat plain_err)"
}

# harmless: the last output has no control character but the line feed, and of
# TSV the tab. Those of 8 bits are looked for in UTF-8.
harmless() {
  if tr -d '\n\t' < out | LC_ALL=C grep -q "$(
    printf '[\001-\037\177]\\|\302[\200-\237]\\|\342\200[\250-\256]'
  )"; then
    fail "a control character in: $(cat -v out)"
  fi
}
