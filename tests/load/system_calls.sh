#!/bin/sh
# system_calls.sh [--self-test] STRACE PROGRAM STANDARD_PROGRAM
# What memory_alone, PROGRAM, asks of the system while the library is loaded and
# at work: loading makes no call that loading the C++ library alone does not make,
# which STANDARD_PROGRAM shows, and opens no file but the libraries; working asks
# for memory and nothing else. So it works where there is no file, no environment
# and no locale, and where the kernel kills whoever calls it.
set -eu
export LC_ALL=C

if [ "$1" = --self-test ]; then
  real=$2 program=$3 standard=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$real" "$program" "$standard"
  # traced WHAT MESSAGE SED: a strace that sees something else of the program.
  # shellcheck disable=SC2016  # for the written script
  traced() {
    fake strace "'$real' \"\$@\" || exit
      case \$* in *'$standard') ;; *) sed -i '$3' \"\$2\" ;; esac"
    must_fail "$1" "$2" "$0" "$work/strace" "$program" "$standard"
  }
  traced "a file that is read at load" 'opens other files' \
    '/"main"/i openat(AT_FDCWD, "/etc/one", O_RDONLY) = 3'
  traced "another call at load" 'calls more .* uname' '/"main"/i uname({}) = 0'
  traced "one call more at load" 'calls more .* getrandom' \
    '/"main"/i getrandom("", 8, 0) = 8'
  for call in 'openat(AT_FDCWD, "/etc/one", O_RDONLY) = 3' 'gettid() = 1' \
    'mmap(NULL, 4096, PROT_READ, MAP_PRIVATE, 3, 0) = 0x7f67fce95000'; do
    traced "at work, $call" 'asks for more than memory' "/\"work\"/a $call"
    traced "at the end, $call" 'asks for more than memory' "/\"end\"/a $call"
  done
  traced "no mark" 'has no part' '/"work"/d'
  must_fail "a system that lets nobody trace" 'strace can.t trace here' \
    "$0" false "$program" "$standard"
  # run WHAT MESSAGE CONDITION: a program that ends by a signal where it holds.
  run() {
    fake program "if $3; then kill -KILL \$\$; fi; exec '$program' \"\$@\""
    must_fail "$1" "$2" "$0" "$work/untraced" "$work/program" "$standard"
  }
  # shellcheck disable=SC2016  # for the written scripts
  {
    # One that runs the script for its status, and looks at the program itself.
    fake untraced "case \$3 in
        '$work/program') \"\$3\" || exit; set -- \"\$1\" \"\$2\" '$program' ;;
      esac
      exec '$real' \"\$@\""
    run "a program that needs a file" 'an empty root' \
      '[ "${1-}" = in_empty_root ]'
    run "a program that calls" 'strict seccomp' \
      '[ "${1-}" = under_strict_seccomp ]'
    run "a program that needs a variable" 'no environment' \
      '[ -z "${LANG-}${LC_ALL-}" ]'
    run "a program that needs a locale" 'a nonsense LANG' \
      '[ "${LANG-}" = nonsense ]'
  }
  end_self_test
fi
strace=$1 program=$2 standard=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  printf '%s\n' "$*"
  exit 1
}
"$strace" -o "$work/try" "$standard" > "$work/err" 2>&1 ||
  fail "strace can't trace here, so that nothing can be seen: $(cat "$work/err")"

# part FROM TO FILE: the calls from a mark to another, without the marks.
part() {
  sed -n "/^write(-1, \"$1\"/,/^write(-1, \"$2\"/p" "$3" | sed '1d;$d' \
    > "$work/part"
  grep -q "^write(-1, \"$1\"" "$3" || fail "has no part $1"
}
# Loading a library needs these, and one mapping more or less is no matter.
of_files='openat|read|pread64|newfstatat|fstat|statx|close|mmap|mprotect|munmap'
# at_load FILE: leaves the calls before main: kinds, other calls, opened files.
at_load() {
  sed '/^write(-1, "main"/,$d' "$1" > "$1.load"
  sed 's/(.*//' "$1.load" | sort -u > "$1.kinds"
  sed 's/(.*//' "$1.load" | grep -vxE "$of_files" | sort > "$1.others"
  sed -n 's/^openat([^,]*, "\([^"]*\)".*/\1/p' "$1.load" | sed 's|.*/||' |
    sort -u > "$1.files"
}
# only_memory WHAT: of the part.
only_memory() {
  if grep -vE -e '^(brk|munmap|mremap|madvise)\(' \
    -e '^mmap\(NULL, [0-9]+, PROT_(READ\|PROT_WRITE|NONE), .*MAP_ANONYMOUS.*, -1, 0\)' \
    -e '^mprotect\(0x[0-9a-f]+, [0-9]+, PROT_READ\|PROT_WRITE\)' \
    -e '^exit_group\(' -e '^\+\+\+ exited' "$work/part"; then
    fail "$1 asks for more than memory, as above"
  fi
}
# looked_at WHAT COMMAND...: at the program that COMMAND starts, by strace.
looked_at() {
  what=$1
  shift
  rm -f "$work/log"
  "$@" "$strace" -o "$work/log" "$program" > "$work/out" 2>&1 ||
    fail "$what: $(cat "$work/out")"
  part work end "$work/log"
  only_memory "$what: at work it"
  sed -n '/^write(-1, "end"/,$p' "$work/log" | sed 1d > "$work/part"
  only_memory "$what: at its end it"
}
looked_at "all as it is" env
at_load "$work/log"
mv "$work/log.kinds" "$work/kinds"
mv "$work/log.others" "$work/others"
mv "$work/log.files" "$work/files"
"$strace" -o "$work/standard" "$standard"
at_load "$work/standard"
more=$(comm -23 "$work/kinds" "$work/standard.kinds"
  comm -23 "$work/others" "$work/standard.others")
[ -z "$more" ] || fail "loading calls more than the C++ library's does:" "$more"
more=$(comm -23 "$work/files" "$work/standard.files" |
  grep -vxE 'libkorvan(_platform)?\.so\.1' || true)
[ -z "$more" ] || fail "loading opens other files:" "$more"

looked_at "no environment" env -i
looked_at "a nonsense LANG" env -u LC_ALL LANG=nonsense

# Without strace, which would need the calls that are forbidden.
mkdir "$work/empty"
"$program" in_empty_root "$work/empty" > "$work/out" 2>&1 ||
  fail "an empty root: $(cat "$work/out")"
"$program" under_strict_seccomp > "$work/out" 2>&1 ||
  fail "strict seccomp: $(cat "$work/out")"
