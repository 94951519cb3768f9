#!/bin/sh
# compile_user.sh [--self-test] WORK_DIR LIBDIR SOURCE COMPILER FLAG...
# Compiles a program beside this script against the library in WORK_DIR/moved,
# without a warning, and runs it.
set -eu
if [ "$1" = --self-test ]; then
  moved=$2/moved libdir=$3
  shift 3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  cp -R "$moved" "$work/moved"
  rm "$work/moved/$libdir/libkorvan.so.1"
  must_fail "no library" 'cannot find -lkorvan\|unable to find library' "$0" "$work" "$libdir" "$@"
  rm -r "$work/moved"
  cp -R "$moved" "$work/moved"
  rm "$work/moved/$libdir"/libkorvan.so*
  "$CXX" -shared -fPIC -x c++ - -I"$moved/include" -Wl,-soname,libkorvan.so.1 \
    -o "$work/moved/$libdir/libkorvan.so.1" << 'END'
#include <korvan/korvan.h>
int LoadString_korvan(void*, unsigned int, char*, int) { return 0; }
namespace korvan {
const OID_TABLE_INFO oid_registry[9] = {};
COidData* FindOIDInfo(unsigned int, void*, unsigned int) { return nullptr; }
}  // namespace korvan
END
  ln -s libkorvan.so.1 "$work/moved/$libdir/libkorvan.so"
  must_fail "a library that knows nothing" 'answers wrongly\|no record' \
    "$0" "$work" "$libdir" "$@"
  end_self_test
fi
moved=$1/moved libdir=$1/moved/$2 source=$3
shift 3
here=$(cd "$(dirname "$0")" && pwd)
program=$(mktemp)
trap 'rm -f "$program"' EXIT
"$@" -Wall -Wextra -Wpedantic -Werror -I"$moved/include" -I"$here/.." \
  "$here/$source" -o "$program" -L"$libdir" -Wl,--as-needed -lkorvan \
  -lkorvan_platform -Wl,-rpath,"$libdir"
# What is loaded while the program runs takes this way.
LD_LIBRARY_PATH=$libdir "$program"
