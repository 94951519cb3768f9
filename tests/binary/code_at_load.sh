#!/bin/sh
# code_at_load.sh OBJECT...
# Fails when the library's objects run code at load beyond the registrations of
# the cleanup helper's destructor and of the fork handlers.
set -eu
export LC_ALL=C

# All that the code may name: the two registrations and their arguments.
allowed='__cxa_atexit|pthread_atfork|__dso_handle|\.bss|\.text'
allowed="$allowed|_ZN6korvan21COidInfoCleanupHelperD[12]Ev"
allowed="$allowed|_ZN6korvan3oid12_GLOBAL__N_1.*(BeforeFork|AfterFork)Ev"
allowed="$allowed|_ZN6korvan3oid12_GLOBAL__N_1.*fork_handlers_status.*"

found=
for object in "$@"; do
  initialisers=$(objdump -t "$object" | grep -c '_GLOBAL__sub_I_' || true)
  [ "$initialisers" -gt 0 ] || continue
  start=$(objdump -dr --no-show-raw-insn -j .text.startup "$object")
  names=$(printf '%s\n' "$start" | sed -n 's/.*R_[A-Z0-9_]*[[:space:]]*//p')
  others=$(printf '%s\n' "$names" |
    grep -vE "^($allowed)(@plt)?([-+]0x[0-9a-f]+)?\$" || true)
  if [ -n "$others" ]; then
    printf '%s: code at load names:\n%s\n' "$object" "$others"
    exit 1
  fi
  found="$found $(printf '%s\n' "$names" |
    grep -oE '^(__cxa_atexit|pthread_atfork)')"
done
# shellcheck disable=SC2086  # the names are words
[ "$(printf '%s\n' $found | sort | tr '\n' ' ')" = \
  '__cxa_atexit pthread_atfork ' ] ||
  { echo "registered at load:$found"; exit 1; }
