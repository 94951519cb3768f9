#!/bin/sh
# compile_flags.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR
# The Release library is compiled with the flags that keep mistakes from being
# used, every source of it, as the compile database says, and none takes one of
# them back. What can be seen in the library itself is
# tests/binary/is_hardened.sh's and imports.sh's.
set -eu
if [ "$1" = --self-test ]; then
  cmake=$2 compiler=$3 source=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # shellcheck source=tests/build/changed_flags.sh
  . "$(dirname "$0")/changed_flags.sh"
  breaks "a warning that is left out" \
    '^lookup.cc: without -Wformat=2$' 's/ -Wformat=2//'
  breaks "a flag that is left out" \
    '^lookup.cc: without -fno-strict-overflow$' 's/ -fno-strict-overflow//'
  breaks "another flag that is left out" \
    '^lookup.cc: without -fno-plt$' 's/APPEND hardening -fno-plt/APPEND hardening/'
  # shellcheck disable=SC2016  # CMake's variable
  breaks "a library that is not hardened" \
    '^last_error.cc: without -fstack-protector-strong$' \
    's/${korvan_hardening}//'
  breaks "weaker checks of copies" \
    '^lookup.cc: without -D_FORTIFY_SOURCE=3$' 's/_SOURCE=\$.*>"/_SOURCE=1>"/'
  breaks "checks of copies that are taken back" \
    '^lookup.cc: without -D_FORTIFY_SOURCE=3$' \
    's/-U_FORTIFY_SOURCE;\(-D_FORTIFY[^>]*\)/\1;-U_FORTIFY_SOURCE/'
  for flag in -w -Wno-shadow -Wformat=1 -O0 -fno-stack-protector \
    -fstack-protector -fstrict-overflow -fvisibility=default -fno-PIC; do
    breaks "$flag behind the others" "^lookup.cc: with $flag\$" \
      "s/ -Wformat=2)/ -Wformat=2 $flag)/"
  done
  case $("$compiler" -dumpmachine) in
    x86_64-*) breaks "no protection of jumps behind the others" \
      '^lookup.cc: with -fcf-protection=none$' \
      's/ -Wformat=2)/ -Wformat=2 -fcf-protection=none)/' ;;
  esac
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4
rm -rf "$work"
mkdir -p "$work"
"$cmake" -S "$source" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_COMPILER="$compiler" -DKORVAN_BUILD_TESTS=OFF \
  -DKORVAN_BUILD_EXAMPLES=OFF -DKORVAN_BUILD_TOOLS=OFF > "$work/log" 2>&1 ||
  { cat "$work/log"; exit 1; }

flags="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast
  -Wformat=2 -O2 -fPIC -fvisibility=hidden -fstack-protector-strong
  -fstack-clash-protection -fno-delete-null-pointer-checks
  -fno-strict-overflow -fno-gnu-unique -fno-semantic-interposition"
case $("$compiler" -dumpmachine) in
  x86_64-*) flags="$flags -fno-plt -fcf-protection=full" ;;
  aarch64-*) flags="$flags -fno-plt -mbranch-protection=standard" ;;
esac
flags=$(printf '%s' "$flags" | tr -s '\n ' ' ')
# takes_back FLAG: whether it is none of the flags, but makes one of them mean
# less, since it is the compiler's last word on it.
takes_back() {
  case " $flags " in *" $1 "*) return 1 ;; esac
  case $1 in
    -w | -Wno-* | -O* | -fno-pic | -fno-PIC | -fpic | -fstack-protector*) ;;
    -W*=* | -f*=* | -m*=*) has "${1%%=*}=" ;;
    -fno-*) has "-f${1#-fno-}" ;;
    -f*) has "-fno-${1#-f}" ;;
    *) return 1 ;;
  esac
}
has() {  # has BEGINNING: whether one of the flags begins so
  case " $flags" in *" $1"*) ;; *) return 1 ;; esac
}
# What a source is fortified with is the last word on it.
fortified="-D_FORTIFY_SOURCE=3"
[ "$("$compiler" -dumpversion)" != 11 ] || fortified="-D_FORTIFY_SOURCE=2"

failed=0
commands=$work/commands
sed -nE 's,^ *"command": "(.*/(oid|resources|pubkey|ini|platform)/[a-z0-9_]*\.cc)".*,\1,p' \
  "$work/build/compile_commands.json" > "$commands"
while read -r command; do
  name=$(basename "${command##* }")
  for flag in $flags; do
    case " $command " in
      *" $flag "*) ;;
      *) echo "$name: without $flag"; failed=1 ;;
    esac
  done
  for word in $command; do
    ! takes_back "$word" || { echo "$name: with $word"; failed=1; }
  done
  last=$(printf '%s\n' "$command" | tr ' ' '\n' | grep _FORTIFY_SOURCE |
    tail -n 1)
  [ "$last" = "$fortified" ] ||
    { echo "$name: without $fortified"; failed=1; }
done < "$commands"
sources=$(find -L "$source/oid" "$source/resources" "$source/pubkey" \
  "$source/ini" "$source/platform" -name '*.cc' | wc -l)
[ "$(wc -l < "$commands")" -eq "$sources" ] ||
  { echo "of $sources sources $(wc -l < "$commands") are compiled"; failed=1; }
[ $failed -ne 0 ] || echo "figures: $sources sources," \
  "$(echo "$flags $fortified" | wc -w) flags each"
exit $failed
