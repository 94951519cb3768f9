#!/bin/sh
# tables_need_no_code.sh OBJECT
# Fails when the registry's object runs code at load beyond registering the
# destructor of its cleanup helper.
set -eu
export LC_ALL=C
object=$1

start=$(objdump -dr --no-show-raw-insn -j .text.startup "$object")
printf '%s\n' "$start" | grep -q '__cxa_atexit' ||
  { echo "nothing registers the cleanup helper"; exit 1; }
# All that it may name is the registration and its three arguments.
others=$(printf '%s\n' "$start" | sed -n 's/.*R_[A-Z0-9_]*[[:space:]]*//p' |
  grep -vE '^(__cxa_atexit|__dso_handle|\.bss|_ZN6korvan21COidInfoCleanupHelperD[12]Ev)(@plt)?([-+]0x[0-9a-f]+)?$' || true)
if [ -n "$others" ]; then
  printf 'code at load names:\n%s\n' "$others"
  exit 1
fi
initialisers=$(objdump -t "$object" | grep -c '_GLOBAL__sub_I_')
[ "$initialisers" -eq 1 ] || { echo "$initialisers initialisers"; exit 1; }
