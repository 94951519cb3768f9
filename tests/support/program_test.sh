# What the tests of the command-line programs share. To be read by `.`, in a
# script that has set `program`, the path of one. Leaves the script in a new
# folder, which goes away in the end. The first failure ends the test.
# shellcheck shell=sh

: "${program:?}"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit

fail() {
  printf '%s\n' "$*"
  exit 1
}

# matches FILE PATTERN: a line of FILE does; without a pattern, FILE is empty.
matches() {
  if [ -n "$2" ]; then
    grep -q -e "$2" "$1"
  else
    [ ! -s "$1" ]
  fi
}

# judge WHAT STATUS OUTPUT MESSAGE
# WHAT has left its exit status in `got`, its output in the file out and its
# messages in the file err. They must be STATUS, and match the patterns.
judge() {
  if [ "$got" -ne "$2" ] || ! matches out "$3" || ! matches err "$4"; then
    fail "$1
exit status $got, wanted $2
output, wanted ${3:-none}:
$(cat out)
messages, wanted ${4:-none}:
$(cat err)"
  fi
}

# expect STATUS OUTPUT MESSAGE ARGUMENT...
# Runs the program with the arguments; OUTPUT and MESSAGE are as for judge.
expect() {
  status=$1 output=$2 message=$3
  shift 3
  got=0
  "$program" "$@" > out 2> err || got=$?
  judge "${program##*/} $*" "$status" "$output" "$message"
}

# expect_full_disk STATUS MESSAGE ARGUMENT...
# The same where the output goes to a disk that is full.
expect_full_disk() {
  status=$1 message=$2
  shift 2
  : > out
  got=0
  "$program" "$@" > /dev/full 2> err || got=$?
  judge "${program##*/} $* > /dev/full" "$status" '' "$message"
}

# holds FILE TEXT: the file's whole content, in printf's notation.
holds() {
  # shellcheck disable=SC2059  # the text is the format
  if ! printf -- "$2" | cmp -s - "$1"; then
    fail "$1 should hold '$2' and holds:
$(cat "$1")"
  fi
}

# makes FILE TEXT: a file of that content.
makes() {
  # shellcheck disable=SC2059  # the text is the format
  printf -- "$2" > "$1"
}

# shows PATTERN...: each matches a line of what the program put out.
shows() {
  for pattern in "$@"; do
    grep -q -e "$pattern" out || fail "no line with $pattern in:
$(cat out)"
  done
}

# offered FILE WORD...: what bash offers by the completion FILE with the cursor
# at the end of the last word, each with a comma.
offered() {
  # shellcheck disable=SC2016  # for bash
  bash -c '. "$1"; shift; COMP_WORDS=("$@")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    "_${1##*/}"; printf "%s," "${COMPREPLY[@]}"' bash "$@" 2>&1
}
