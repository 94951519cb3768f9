#!/bin/sh
# code_at_load.sh [--self-test] OBJECT...
# Fails when the library's objects run code at load beyond the registrations of
# the cleanup helper's destructor and of the fork handlers.
set -eu
export LC_ALL=C

if [ "${1:-}" = --self-test ]; then
  shift
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the objects as they are" "$0" "$@"
  # with WHAT MESSAGE OBJECT...: one more, of the source on standard input.
  with() {
    what=$1 message=$2
    shift 2
    "$CXX" -O2 -fPIC -c -x c++ - -o "$work/more.o"
    must_fail "$what" "$message" "$0" "$@" "$work/more.o"
  }
  with "an initialiser that calls" 'names:' "$@" << 'END'
int Now();
int at_load = Now();
END
  with "an initialiser for nothing" 'registers nothing' "$@" << 'END'
[[gnu::constructor, gnu::section(".text.startup")]] static void Start() {
  __asm__ volatile("nop");
}
END
  with "a registration and a call of the file's own code" 'its own file$' \
    "$@" << 'END'
extern "C" int pthread_atfork(void (*)(), void (*)(), void (*)());
static volatile int stored;
[[gnu::noinline, gnu::section(".text.startup")]] static void Store() {
  stored = 1;
}
static const int status = (Store(), pthread_atfork(Store, Store, Store));
END
  with "a function to run at load" 'runs at load' "$@" << 'END'
volatile int calls;
[[gnu::constructor, gnu::section(".text.any")]] static void Count() { ++calls; }
END
  with "a destructor of another class" 'names:' "$@" << 'END'
struct Held { ~Held(); } held;
END
  with "another registration" 'load: .* pthread_atfork$' "$@" << 'END'
extern "C" int pthread_atfork(void (*)(), void (*)(), void (*)());
static int status = pthread_atfork(nullptr, nullptr, nullptr);
END
  must_fail "one registration" 'registered at load: pthread_atfork$' \
    "$0" "$work/more.o"
  with "a function that is chosen at load" 'chosen at load' "$@" << 'END'
static int One() { return 1; }
extern "C" int (*Choose())() { return One; }
int Chosen() __attribute__((ifunc("Choose")));
END
  must_fail "no object" 'registered at load:$' "$0"
  must_fail "a missing object" 'No such file' "$0" "$@" "$work/none.o"
  fake tools/objdump 'exit 0'
  must_fail "a silent objdump" 'registered at load:$' \
    env "PATH=$work/tools:$PATH" "$0" "$@"
  end_self_test
fi

# What the code may call, and what else it may name: the arguments of that. On
# arm64 it loads what it calls.
called='(call|jmp|ldr) (__cxa_atexit|pthread_atfork)'
named='adrp (__cxa_atexit|pthread_atfork)'
named="$named|(lea|mov|adrp|add|ldr) (__dso_handle|\.bss|\.text"
named="$named|_ZN6korvan21COidInfoCleanupHelperD[12]Ev"
named="$named|_ZN6korvan3oid12_GLOBAL__N_1.*(BeforeFork|AfterFork)Ev"
named="$named|_ZN6korvan3oid12_GLOBAL__N_1.*fork_handlers_status.*)"

found=
for object in "$@"; do
  symbols=$(readelf -Ws "$object")
  # Clang does not mark its objects as GNU's, where alone 10 means IFUNC.
  if printf '%s\n' "$symbols" | grep -E ' (IFUNC|<OS specific>: 10) '; then
    echo "$object: the function above is chosen at load"
    exit 1
  fi
  relocations=$(objdump -r "$object")
  starts=$(printf '%s\n' "$relocations" | awk '
    /^RELOCATION RECORDS FOR / {at_load = /\[\.(init_array|ctors)/}
    at_load && $2 ~ /^R_/ {print $3}')
  [ -n "$starts" ] || continue
  if printf '%s\n' "$starts" | grep -vE '^\.text\.startup([-+]|$)'; then
    echo "$object: what stands above runs at load"
    exit 1
  fi
  code=$(objdump -dr --no-show-raw-insn -j .text.startup "$object")
  # Each instruction that names something or jumps, with what it names.
  names=$(printf '%s\n' "$code" | awk '
    function end() {if (jumps && !named) print operation, "to its own file"}
    $2 ~ /^R_/ {print operation, $3; named = 1; next}
    /^ *[0-9a-f]+:/ {end(); operation = $2; named = 0
                     jumps = operation ~ /^(call|j|bnd|notrack|b$|bl$|b[.]|cb|tb)/}
    END {end()}')
  others=$(printf '%s\n' "$names" |
    grep -vE "^($called|$named)(@plt)?([-+]0x[0-9a-f]+)?\$" || true)
  if [ -n "$others" ]; then
    printf '%s: code at load names:\n%s\n' "$object" "$others"
    exit 1
  fi
  registers=$(printf '%s\n' "$names" | grep -E "^$called" |
    grep -oE '(__cxa_atexit|pthread_atfork)') ||
    { echo "$object: code at load registers nothing"; exit 1; }
  found="$found $registers"
done
# shellcheck disable=SC2086  # the names are words
[ "$(printf '%s\n' $found | sort | tr '\n' ' ')" = \
  '__cxa_atexit pthread_atfork ' ] ||
  { echo "registered at load:$found"; exit 1; }
