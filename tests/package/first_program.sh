#!/bin/sh
# first_program.sh [--self-test] DOCUMENT CMAKE COMPILER WORK_DIR LIBDIR
# Does what DOCUMENT, docs/first_program.md, tells, against WORK_DIR/moved: its
# program and its CMakeLists.txt, its commands, what they print.
set -eu
if [ "$1" = --self-test ]; then
  shift
  document=$1
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$@"
  # with WHAT MESSAGE SED ARGUMENT...: another document.
  with() {
    what=$1 message=$2
    sed "$3" "$document" > "$work/document"
    shift 4
    must_fail "$what" "$message" "$0" "$work/document" "$@"
  }
  with "a program that prints something else" 'does not tell' \
    's/ALG_ID 0x%X/ALG_ID %u/' "$@"
  with "a program that can't be compiled" 'error: ' 's/korvan.h>$/none.h>/' "$@"
  with "a command that is wrong" 'not found' 's/^    build.first/    first/' "$@"
  with "a package that is not there" 'korvan2' \
    's/^find_package(korvan/find_package(korvan2/' "$@"
  with "a target that is not there" 'korvan::none' 's/korvan::korvan/korvan::none/' "$@"
  with "no commands" 'shows no commands' 's/^    / /' "$@"
  end_self_test
fi
document=$1 cmake=$2 compiler=$3 moved=$4/moved libdir=$4/moved/$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# block LANGUAGE: the block of that language.
block() {
  awk -v begin="^\`\`\`$1\$" '$0 ~ begin {on = 1; next} /^```$/ {on = 0} on' \
    "$document"
}
block cpp > "$work/first.cc"
block cmake > "$work/CMakeLists.txt"
# Commands stand indented by four blanks, outside of the blocks.
awk '/^```/ {on = !on} !on && /^    /' "$document" > "$work/commands"
[ -s "$work/commands" ] || { echo "$document shows no commands"; exit 1; }

# `g++` and `cmake` are those of the build under test.
mkdir "$work/bin"
ln -s "$(command -v "$compiler")" "$work/bin/g++"
ln -s "$(command -v "$cmake")" "$work/bin/cmake"
cd "$work"
export PATH="$work/bin:$PATH" PKG_CONFIG_PATH="$libdir/pkgconfig" \
  CMAKE_PREFIX_PATH="$moved" LD_LIBRARY_PATH="$libdir" CXX="g++"
sh -e "$work/commands" > "$work/printed" 2>&1 ||
  { cat "$work/printed"; exit 1; }
grep '^1\.2\.' "$work/printed" > "$work/results"
[ "$(wc -l < "$work/results")" -eq 2 ] ||
  { echo "not two programs have printed a result"; exit 1; }
while read -r line; do
  grep -q -F -e "\`$line\`" "$document" ||
    { echo "$document does not tell: $line"; exit 1; }
done < "$work/results"
