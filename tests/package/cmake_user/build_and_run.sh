#!/bin/sh
# build_and_run.sh CMAKE COMPILER WORK_DIR
set -eu
cmake=$1 compiler=$2 work=$3
"$cmake" -S "$(dirname "$0")" -B "$work/cmake_user" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/moved"
"$cmake" --build "$work/cmake_user"
"$work/cmake_user/user"
