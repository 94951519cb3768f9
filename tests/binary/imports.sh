#!/bin/sh
# imports.sh [--self-test] LIBRARY ALLOWED_LIBRARY...
# Fails when LIBRARY needs a shared object other than the allowed ones, or
# lacks the stack protector or the fortified calls of the C library.
set -eu
export LC_ALL=C

if [ "$1" = --self-test ]; then
  shift
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the library as it is" "$0" "$@"
  must_fail "a library that is not allowed" '^needs libc\.so\.6$' \
    "$0" "$1" libm.so.6
  made() {  # made NAME SYMBOL...: a library that imports the symbols
    name=$1
    shift
    {
      echo '.section .note.GNU-stack,"",@progbits; .data'
      printf '.quad %s\n' "$@"
    } > "$work/$name.s"
    "$CXX" -shared "$work/$name.s" -o "$work/$name.so"
  }
  made both __stack_chk_fail __memcpy_chk
  made fortified __memcpy_chk
  made protected __stack_chk_fail
  shift
  must_pass "a library that imports both" "$0" "$work/both.so" "$@"
  must_fail "no stack protector" '^has no stack protector$' \
    "$0" "$work/fortified.so" "$@"
  must_fail "nothing fortified" '^calls nothing fortified$' \
    "$0" "$work/protected.so" "$@"
  must_fail "no library" 'No such file' "$0" "$work/none.so" "$@"
  fake tools/readelf "case \$* in
    *-Wd*) ;;
    *) exec $(command -v readelf) \"\$@\" ;;
  esac"
  must_fail "a readelf that names no needed library" '^needs no library' \
    env "PATH=$work/tools:$PATH" "$0" "$work/both.so" "$@"
  end_self_test
fi
library=$1
shift

failed=0
fail() {
  echo "$1"
  failed=1
}

dynamic=$(readelf -Wd "$library")
needed=$(printf '%s\n' "$dynamic" | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p')
[ -n "$needed" ] || fail "needs no library, which no library can"
for one in $needed; do
  # On some platforms the stack protector's value is in the loader, which is
  # there anyway.
  case $one in ld-linux-*.so.[0-9] | ld64.so.[0-9]) continue ;; esac
  case " $* " in
    *" $one "*) ;;
    *) fail "needs $one" ;;
  esac
done
imported=$(readelf -W --dyn-syms "$library")
printf '%s\n' "$imported" | grep -q ' UND __stack_chk_fail@' ||
  fail "has no stack protector"
# libc++ copies by functions of the compiler's own.
case $needed in
  *libc++*) ;;
  *) printf '%s\n' "$imported" | grep -q ' UND __[a-z]*_chk@' ||
    fail "calls nothing fortified" ;;
esac
exit $failed
