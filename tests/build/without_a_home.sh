#!/bin/sh
# without_a_home.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR
# Builds by the preset `release` as a system user does who has no home folder:
# nothing may want to keep files there.
set -eu
if [ "$1" = --self-test ]; then
  shift
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # ccache wants a folder for its files.
  must_fail "a compiler cache" 'ccache: error' \
    env CMAKE_CXX_COMPILER_LAUNCHER=ccache "$0" "$1" "$2" "$3" "$work"
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4
rm -rf "$work"
unset CCACHE_DIR XDG_CACHE_HOME XDG_CONFIG_HOME
HOME=/dev/null/none
CXX=$compiler
export HOME CXX
cd "$source"
"$cmake" --preset release -B "$work/build" -DCMAKE_SUPPRESS_REGENERATION=ON
"$cmake" --build "$work/build" --target korvan_platform
