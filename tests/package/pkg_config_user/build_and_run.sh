#!/bin/sh
# build_and_run.sh PKG_CONFIG COMPILER WORK_DIR LIBDIR
set -eu
pkg_config=$1 compiler=$2 work=$3 libdir=$work/moved/$4
export PKG_CONFIG_PATH="$libdir/pkgconfig"
"$pkg_config" --print-errors --exists 'korvan >= 1.0' 'korvan-platform >= 1.0'
# shellcheck disable=SC2046  # the flags are words
"$compiler" -std=c++11 "$(dirname "$0")/../user.cc" -o "$work/pkg_config_user" \
  $("$pkg_config" --cflags --libs korvan) -Wl,-rpath,"$libdir"
"$work/pkg_config_user"
