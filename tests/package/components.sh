#!/bin/sh
# components.sh [--self-test] CMAKE BUILD_DIR WORK_DIR LIBDIR
# Installs every component alone, below a DESTDIR. Each has what is its own, and
# together they are what is installed without a choice; CMake's list of that is
# enough to remove it. LIBDIR is a relative folder.
set -eu
if [ "$1" = --self-test ]; then
  cmake=$2 build=$3 libdir=$5
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # shellcheck disable=SC2016  # what the changed CMake does
  {
    # with WHAT MESSAGE SCRIPT: a CMake that does SCRIPT after its work, where it
    # has installed to `to`.
    with() {
      fake cmake "'$cmake' \"\$@\"
        to=\${DESTDIR:-}\$4
        $3"
      must_fail "$1" "$2" "$0" "$work/cmake" "$build" "$work/tree" "$libdir"
    }
    with "a header in every component" 'runtime has other files' \
      'mkdir -p "$to/include"; touch "$to/include/one.h"'
    with "programs without a linked name" 'development has other files' \
      "rm -f \"\$to/$libdir/libkorvan.so\""
    with "no printers that GDB loads itself" 'nothing for GDB to load' \
      'rm -rf "$to/share/gdb"'
    with "a file that belongs to no component" 'belongs to no component' \
      'case $* in *--component*) ;; *) touch "$to/more" ;; esac'
    with "a file that is not in the list" 'is left after all that' \
      "case \$* in
        *--component*) ;;
        *) touch \"\$to/$libdir/libkorvan.so.1.9\" ;;
      esac
      case \$* in *runtime*) touch \"\$to/$libdir/libkorvan.so.1.9\" ;; esac"
    with "a file beside DESTDIR" 'outside of DESTDIR' \
      'touch "$DESTDIR/beside"'
  }
  end_self_test
fi
cmake=$1 build=$2 work=$3 libdir=$4
rm -rf "$work"
mkdir -p "$work"

fail() {
  printf '%s\n' "$*"
  exit 1
}
files() {  # files DIR
  (cd "$1" && find . ! -type d | sed 's/^..//' | sort)
}

# has COMPONENT PATTERN: a component's files, and no others, match the pattern.
has() {
  DESTDIR=$work/$1 "$cmake" --install "$build" --prefix /usr --component "$1" \
    > /dev/null
  [ "$(ls "$work/$1")" = usr ] || fail "$1 is outside of DESTDIR"
  files "$work/$1/usr" > "$work/$1.files"
  if grep -v -E -x -e "$2" "$work/$1.files"; then
    fail "$1 has other files"
  fi
}
# needs COMPONENT FILE...
needs() {
  component=$1
  shift
  for file; do
    grep -q -F -x -e "$file" "$work/$component.files" ||
      fail "$component has other files, but no $file"
  done
}
has runtime "$libdir/libkorvan(_platform)?\.so\.1(\.[0-9.]+)?"
needs runtime "$libdir/libkorvan.so.1" "$libdir/libkorvan_platform.so.1"
has development "include/korvan/.*\.h|$libdir/libkorvan(_platform)?\.so|\
$libdir/cmake/korvan/.*\.cmake|$libdir/pkgconfig/korvan(-platform)?\.pc|\
share/korvan/gdb_printers\.py|\
share/gdb/auto-load/usr/$libdir/libkorvan\.so\.1\.[0-9.]+-gdb\.py"
needs development "$libdir/libkorvan.so" "$libdir/libkorvan_platform.so" \
  include/korvan/korvan.h include/korvan/platform/asn1_record.h \
  "$libdir/cmake/korvan/korvan-config.cmake" "$libdir/pkgconfig/korvan.pc" \
  share/korvan/gdb_printers.py
[ "$(grep -c '^share/gdb/' "$work/development.files")" -eq 1 ] ||
  fail "development has nothing for GDB to load with the library"
has tools "bin/(oidinfo|initool|keyblob)|share/.*|\
$libdir/cmake/korvan/korvan-tools-targets.*\.cmake"
needs tools bin/oidinfo bin/initool
has docs "share/doc/korvan/.*|share/man/man3/.*\.3"
needs docs share/doc/korvan/README.md share/doc/korvan/docs/architecture.md

# All of them, and their removal. GDB's file stands in a folder that is named for
# the prefix.
all="$work/all of them"
"$cmake" --install "$build" --prefix "$all" > /dev/null
files "$all" | sed "s|/auto-load$all/|/auto-load/usr/|" |
  sort > "$work/all.files"
sort "$work/runtime.files" "$work/development.files" "$work/tools.files" \
  "$work/docs.files" | diff - "$work/all.files" ||
  fail "what > shows belongs to no component"
xargs -d '\n' rm < "$build/install_manifest.txt"
[ -z "$(files "$all")" ] ||
  fail "$(files "$all") is left after all that CMake lists is removed"
