#!/bin/sh
# build_and_run.sh [--self-test] PKG_CONFIG COMPILER WORK_DIR LIBDIR
# Builds the user's program by pkg-config against WORK_DIR/moved, and runs it.
set -eu
here=$(dirname "$0")

if [ "$1" = --self-test ]; then
  pkg_config=$2 compiler=$3 moved=$4/moved libdir=$5
  # shellcheck source=tests/support/self_test.sh
  . "$here/../../support/self_test.sh"
  cp -R "$moved" "$work/moved"
  # with WHAT MESSAGE PKG_CONFIG: with the package of $moved within reach.
  with() {
    must_fail "$1" "$2" env "PKG_CONFIG_PATH=$moved/$libdir/pkgconfig" \
      "$0" "$3" "$compiler" "$work" "$libdir"
  }
  find "$work/moved" -name text.h -exec rm {} +
  with "a missing header" 'error: .*korvan/text\.h' "$pkg_config"
  sed -i "s#^prefix=.*#prefix=$moved#" "$work/moved/$libdir/pkgconfig"/*.pc
  with "a package that leads elsewhere" 'is not for' "$pkg_config"
  # shellcheck disable=SC2016  # the fake's own argument
  fake pkg-config '[ "$1" = --print-errors ]'
  with "a pkg-config that fails" 'pkg-config gives no flags' "$work/pkg-config"
  rm "$work/moved/$libdir/pkgconfig/korvan.pc"
  with "a package that is found elsewhere" 'korvan was not found' "$pkg_config"
  end_self_test
fi
pkg_config=$1 compiler=$2 work=$3 libdir=$3/moved/$4

unset PKG_CONFIG_PATH
export PKG_CONFIG_LIBDIR="$libdir/pkgconfig"  # and no other place
"$pkg_config" --print-errors --exists 'korvan >= 1.0' 'korvan-platform >= 1.0'
flags=$("$pkg_config" --cflags --libs korvan) ||
  { echo "pkg-config gives no flags"; exit 1; }
for flag in $flags; do
  case $flag in
    -I"$work/moved"/* | -L"$work/moved"/* | -l*) ;;
    *) echo "$flag is not for $work/moved"; exit 1 ;;
  esac
done
rm -f "$work/pkg_config_user"
# shellcheck disable=SC2086  # the flags are words
"$compiler" -std=c++11 "$here/../user.cc" -o "$work/pkg_config_user" $flags \
  -Wl,-rpath,"$libdir"
"$work/pkg_config_user"
