#!/bin/sh
# build_library.sh CMAKE COMPILER SOURCE_DIR WORK_DIR FLAGS
# Builds the library alone with FLAGS, every warning an error, and installs it
# to WORK_DIR/installed.
set -eu
cmake=$1 compiler=$2 source=$3 work=$4 flags=$5
rm -rf "$work"
"$cmake" -S "$source" -B "$work/build" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_FLAGS_RELEASE="$flags" -DKORVAN_WARNINGS_AS_ERRORS=ON \
  -DKORVAN_BUILD_TESTS=OFF
"$cmake" --build "$work/build"
"$cmake" --install "$work/build" --prefix "$work/installed" > /dev/null
