#!/bin/sh
# old_programs.sh [--self-test] COMPILER SOURCE_DIR LIBRARY_DIR VERSION
# Builds the programs in the folder VERSION beside this script with the headers
# of that version, and runs them with the libraries in LIBRARY_DIR: what was
# compiled then runs with what is built now. Both ways of addressing are tried,
# because a program at a fixed address copies the registry's table.
set -eu
if [ "$1" = --self-test ]; then
  compiler=$2 source=$3 libraries=$4 version=$5
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "all as it is" "$0" "$compiler" "$source" "$libraries" "$version"
  # A version in which a record has a member more.
  cp -r "$source/include" "$work/include"
  (cd "$work" && git init -q . && git add . &&
    sed -i 's/  DWORD dwOidFlags/  void* more; DWORD dwOidFlags/
            s/static_assert(/static_assert(true || /' include/korvan/*.h &&
    git -c user.name=test -c user.email=test@example.org commit -q -a -m test &&
    git tag "v$version.0")
  must_fail "programs of another layout" 'registry .*fails' \
    "$0" "$compiler" "$work" "$libraries" "$version"
  sed -i 's/define KORVAN_VERSION .*/define KORVAN_VERSION "9.9.9"/' \
    "$work/include/korvan/version.h"
  (cd "$work" && git tag -d "v$version.0" > /dev/null)
  must_fail "a version whose headers are lost" 'tag' \
    "$0" "$compiler" "$work" "$libraries" "$version"
  must_fail "no such version" 'no programs' \
    "$0" "$compiler" "$source" "$libraries" 0.1
  end_self_test
fi
compiler=$1 source=$2 libraries=$3 version=$4
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

[ -n "$(ls "$here/$version"/*.cc 2> /dev/null)" ] ||
  { echo "no programs of version $version"; exit 1; }

# Until it is released the version is the one that is worked on.
tag=v$version.0
if git -C "$source" rev-parse -q --verify "refs/tags/$tag" > /dev/null 2>&1; then
  git -C "$source" archive "$tag" include | tar -x -C "$work"
elif grep -q "define KORVAN_VERSION \"$version\.0\"" \
  "$source/include/korvan/version.h"; then
  cp -r "$source/include" "$work"
else
  echo "the tag $tag is missing, which has the headers: git fetch --tags"
  exit 1
fi

for program in "$here/$version"/*.cc; do
  for address in "-fpie -pie" "-fno-pie -no-pie"; do
    # shellcheck disable=SC2086  # the options are words
    "$compiler" -std=c++11 -O2 $address -I"$work/include" "$program" \
      -o "$work/program" -L"$libraries" -lkorvan -lkorvan_platform \
      -Wl,-rpath,"$libraries"
    "$work/program" || {
      echo "$(basename "$program" .cc) of version $version ($address) fails"
      exit 1
    }
  done
done
