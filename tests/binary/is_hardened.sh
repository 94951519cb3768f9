#!/bin/sh
# is_hardened.sh LIBRARY
# Fails unless LIBRARY binds at load, is protected, and can be unloaded.
set -eu
export LC_ALL=C
library=$1
failed=0

expect() {  # expect WHAT PATTERN TEXT
  printf '%s\n' "$3" | grep -Eq "$2" || { echo "missing: $1"; failed=1; }
}
forbid() {
  ! printf '%s\n' "$3" | grep -Eq "$2" || { echo "found: $1"; failed=1; }
}

dynamic=$(readelf -Wd "$library")
segments=$(readelf -Wl "$library")
symbols=$(readelf -W --symbols --dyn-syms "$library")

expect "immediate binding" 'FLAGS_1.*NOW' "$dynamic"
expect "read-only relocations" 'GNU_RELRO' "$segments"
expect "a stack that is not executable" 'GNU_STACK .* RW  *0x' "$segments"
forbid "text relocations" 'TEXTREL' "$dynamic"
forbid "a library that can't be unloaded" 'NODELETE|NOOPEN' "$dynamic"
forbid "symbolic binding" 'SYMBOLIC' "$dynamic"
forbid "a writable and executable segment" 'LOAD .* RWE ' "$segments"
forbid "a unique symbol, which pins the library" ' UNIQUE ' "$symbols"

# Indirect calls may only land on marked instructions. The library's own mark
# is no proof: the system's start files lack it, and the linker drops it then.
landings=$(objdump -d --no-show-raw-insn "$library" |
  awk '/^[0-9a-f]+ <.*>:$/ {address = $1; getline
       if ($2 == "endbr64") print address}')
functions=$(nm -D --defined-only "$library" | awk '$2 == "T" {print $1}')
for address in $functions; do
  printf '%s\n' "$landings" | grep -q "$address" ||
    { echo "missing: a landing mark at $address"; failed=1; }
done

# Relative relocations are packed: none is left among the others.
if printf '%s\n' "$dynamic" | grep -q '(RELR)'; then
  forbid "an unpacked relative relocation" 'R_X86_64_RELATIVE' \
    "$(readelf -Wr "$library")"
else
  echo "missing: packed relative relocations"
  failed=1
fi
exit $failed
