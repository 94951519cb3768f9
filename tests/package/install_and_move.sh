#!/bin/sh
# install_and_move.sh CMAKE BUILD_DIR WORK_DIR
# Installs the build and moves the installed tree to WORK_DIR/moved.
set -eu
cmake=$1 build=$2 work=$3
rm -rf "$work"
"$cmake" --install "$build" --prefix "$work/installed" > /dev/null
mv "$work/installed" "$work/moved"
# Nothing may remember where it was built or first installed.
if grep -rIl -e "$build" -e "$work/installed" "$work/moved"; then
  echo "the files above name a folder of the build"
  exit 1
fi
