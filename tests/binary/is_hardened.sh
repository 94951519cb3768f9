#!/bin/sh
# is_hardened.sh [--self-test] LIBRARY packed|plain
# Fails unless LIBRARY binds at load, is protected, can be unloaded, and has
# relative relocations of this kind.
set -eu
export LC_ALL=C

if [ "$1" = --self-test ]; then
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the library as it is" "$0" "$2" "$3"

  # A small library with all that is asked for, and then with one thing else.
  for landings in full none; do
    "$CXX" -fPIC -O2 -fcf-protection=$landings -c -x c++ - \
      -o "$work/$landings.o" << 'END'
extern "C" int Answer() { return 42; }
int (*pointer)() = Answer;
END
  done
  link() {  # link NAME OBJECT [FLAG...]
    name=$1
    shift
    "$CXX" -shared -Wl,-z,now,-z,relro,-z,noexecstack,-z,pack-relative-relocs \
      "$@" -o "$work/$name.so"
  }
  # with WHAT MESSAGE [FLAG...]
  with() {
    what=$1 message=$2
    shift 2
    link changed "$work/full.o" "$@"
    must_fail "$what" "$message" "$0" "$work/changed.so" packed
  }
  link small "$work/full.o"
  must_pass "a small library" "$0" "$work/small.so" packed
  with "lazy binding" '^missing: immediate binding$' -Wl,-z,lazy
  with "writable relocations" '^missing: read-only relocations$' -Wl,-z,norelro
  with "an executable stack" '^missing: a stack that' -Wl,-z,execstack
  with "no unloading" '^found: a library that can' -Wl,-z,nodelete
  with "no loading" '^found: a library that can' -Wl,-z,nodlopen
  with "symbolic binding" '^found: symbolic binding$' -Wl,-Bsymbolic
  link unmarked "$work/none.o"
  must_fail "no landing marks" '^missing: a landing mark at' \
    "$0" "$work/unmarked.so" packed
  with "plain relocations" '^missing: packed relative relocations$' \
    -Wl,-z,nopack-relative-relocs
  must_fail "packed relocations" '^found: packed relative relocations$' \
    "$0" "$work/small.so" plain
  link plain "$work/full.o" -Wl,-z,nopack-relative-relocs
  must_pass "plain relocations that are wanted" "$0" "$work/plain.so" plain
  # assembly WHAT MESSAGE TEXT [FLAG...]
  assembly() {
    what=$1 message=$2
    printf '%s\n' "$3" '.section .note.GNU-stack,"",@progbits' > "$work/more.s"
    shift 3
    with "$what" "$message" "$work/more.s" "$@"
  }
  assembly "a relocation at an odd address" '^found: an unpacked relative' \
    '.data; .byte 0; here: .quad here'
  assembly "a relocation of the text" '^found: text relocations$' \
    '.text; .quad Answer' -Wl,-z,notext
  assembly "text that can be written" '^found: a writable and executable' \
    '.section .both, "awx"; .byte 0'
  assembly "a unique symbol" '^found: a unique symbol' \
    '.data; .globl one; .type one, @gnu_unique_object; one: .byte 0'

  must_fail "no library" 'No such file' "$0" "$work/none.so" packed
  for tool in readelf nm objdump; do
    fake "without_$tool/$tool" 'exit 0'
    must_fail "a silent $tool" '^missing: ' \
      env "PATH=$work/without_$tool:$PATH" "$0" "$work/small.so" packed
  done
  end_self_test
fi
library=$1 kind=$2
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
relocations=$(readelf -Wr "$library")

expect "immediate binding" 'FLAGS_1.*NOW' "$dynamic"
expect "read-only relocations" 'GNU_RELRO' "$segments"
expect "a stack that is not executable" 'GNU_STACK .* RW  *0x' "$segments"
forbid "text relocations" 'TEXTREL' "$dynamic"
forbid "a library that can't be unloaded" 'NODELETE|NOOPEN' "$dynamic"
forbid "symbolic binding" 'SYMBOLIC' "$dynamic"
forbid "a writable and executable segment" 'LOAD .* RWE ' "$segments"
expect "symbols" ' FUNC ' "$symbols"
forbid "a unique symbol, which pins the library" ' UNIQUE ' "$symbols"

# Indirect calls may only land on marked instructions: on arm64, one that signs
# the return address is marked, too. The library's own mark is no proof: the
# system's start files lack it, and the linker drops it then.
code=$(objdump -d --no-show-raw-insn "$library")
landings=$(printf '%s\n' "$code" |
  awk '/^[0-9a-f]+ <.*>:$/ {address = $1; getline
       if ($2 ~ /^(endbr64|bti|paciasp)$/) print address}')
exported=$(nm -D --defined-only "$library")
functions=$(printf '%s\n' "$exported" | awk '$2 == "T" {print $1}')
expect "exported functions" '.' "$functions"
for address in $functions; do
  expect "a landing mark at $address" "^$address\$" "$landings"
done

expect "relocations" 'R_[A-Z0-9]*_' "$relocations"
case $kind in
  packed)
    expect "packed relative relocations" '\(RELR\)' "$dynamic"
    forbid "an unpacked relative relocation" 'R_[A-Z0-9_]*_RELATIVE' "$relocations"
    ;;
  plain) forbid "packed relative relocations" '\(RELR\)' "$dynamic" ;;
esac
exit $failed
