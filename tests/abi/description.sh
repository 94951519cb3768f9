#!/bin/sh
# description.sh [--self-test] ABIDW ABIDIFF HEADERS LIBRARY DESCRIPTION
# Fails unless the ABI of LIBRARY, which has debug information, is the one that
# the file DESCRIPTION states: its functions, and the layouts of the types that
# the folder HEADERS shows to programs. docs/abi.md tells what may change when.
set -eu
# describe ABIDW HEADERS LIBRARY: prints the description or, with echo set, the
# command that does.
describe() {
  ${echo-} "$1" --headers-dir "$2" --exported-interfaces-only \
    --no-corpus-path --no-comp-dir-path --no-show-locs --drop-private-types \
    --no-parameter-names "$3"
}

if [ "$1" = --self-test ]; then
  abidw=$2 abidiff=$3 headers=$4 description=$6
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # A library with a class, and with changes of it.
  mkdir "$work/headers"
  built() {  # built MEMBERS MORE [ENUMERATORS]
    echo "class One { public: enum Kind { kFirst, kLast = 9, ${3-} };
      explicit One(int number); int Get(Kind kind) const;
      private: $1 }; $2" > "$work/headers/one.h"
    { echo '#include "one.h"'
      echo 'One::One(int number) : one_(number) {}'
      echo 'int One::Get(Kind kind) const { return one_ + kind; }'; } |
      "$CXX" -g -O2 -shared -fPIC -x c++ - -I"$work/headers" \
        -o "$work/library.so"
  }
  # shellcheck disable=SC2317  # called by must_pass and must_fail
  judged() {
    "$0" "$abidw" "$abidiff" "$work/headers" "$work/library.so" "$work/abi"
  }
  built 'int one_;' ''
  describe "$abidw" "$work/headers" "$work/library.so" > "$work/abi"
  must_pass "nothing changed" judged
  built 'int one_; int two_ = 2;' ''
  must_fail "a member more" 'type size changed from 32 to 64' judged
  built 'long one_;' ''
  must_fail "another member" "'int one_'" judged
  built 'int one_;' 'inline int More() { return 1; }
    __attribute__((used)) inline int (*more)() = More;'
  must_fail "a function more" 'Added function' judged
  built 'int one_;' '' 'kSecond'
  must_fail "an enumerator more" '1 enumerator insertion' judged
  must_fail "no description" 'No such file\|cannot' "$0" "$abidw" "$abidiff" \
    "$headers" "$work/library.so" "$description.none"
  end_self_test
fi
abidw=$1 abidiff=$2 headers=$3 library=$4 description=$5
[ -f "$description" ] || { echo "$description: No such file"; exit 1; }
now=$(mktemp)
trap 'rm -f "$now"' EXIT
describe "$abidw" "$headers" "$library" > "$now"
# A value more for an enumeration is harmless to abidiff, and it would say
# nothing of it; to a program that is already built it is a value unknown.
"$abidiff" --harmless "$description" "$now" || {
  echo "The ABI is not the stored one. If docs/abi.md allows the change:"
  echo "  $(echo="echo" describe "$abidw" "$headers" "$library") > $description"
  exit 1
}
