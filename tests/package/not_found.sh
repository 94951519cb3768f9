#!/bin/sh
# not_found.sh [--self-test] CMAKE COMPILER WORK_DIR
# What find_package says where it can't give what a project asks of the library
# in WORK_DIR/moved.
set -eu
if [ "$1" = --self-test ]; then
  cmake=$2 compiler=$3 moved=$4/moved
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  cp -R "$moved" "$work/moved"
  config=$(find "$work/moved" -name korvan-config.cmake)
  sed 's/set(korvan_NOT_FOUND_MESSAGE/set(no_message/' \
    "$moved/${config#"$work/moved"}" > "$config"
  must_fail "no reasons" "should say" "$0" "$cmake" "$compiler" "$work"
  sed 's/set(korvan_FOUND FALSE)//' "$moved/${config#"$work/moved"}" > "$config"
  must_fail "components that are always found" "is found" \
    "$0" "$cmake" "$compiler" "$work"
  end_self_test
fi
cmake=$1 compiler=$2 work=$3
project=$work/not_found
rm -rf "$project"
mkdir "$project"

# configures PREFIX ARGUMENT...: a project that finds the package by these.
configures() {
  prefix=$1
  shift
  {
    echo 'cmake_minimum_required(VERSION 3.25)'
    echo 'project(user LANGUAGES CXX)'
    echo "find_package(korvan $* REQUIRED)"
    # shellcheck disable=SC2016  # for CMake
    echo 'message(STATUS "whose platform: ${korvan_PLATFORM}")'
  } > "$project/CMakeLists.txt"
  rm -rf "$project/build"
  "$cmake" -S "$project" -B "$project/build" -G Ninja \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
    > "$project/log" 2>&1
}
says() {  # says TEXT: CMake breaks lines where it likes
  tr -s '\n ' ' ' < "$project/log" | grep -q -F -e "$1" || {
    cat "$project/log"
    echo "should say '$1'"
    exit 1
  }
}
# finds PREFIX TEXT ARGUMENT...
finds() {
  text=$2
  prefix=$1
  shift 2
  configures "$prefix" "$@" || { cat "$project/log"; exit 1; }
  says "$text"
}
# refuses PREFIX TEXT ARGUMENT...
refuses() {
  text=$2
  prefix=$1
  shift 2
  if configures "$prefix" "$@"; then
    echo "find_package(korvan $*) is found"
    exit 1
  fi
  says "$text"
}
finds "$work/moved" 'whose platform: bundled' \
  1.0 COMPONENTS korvan platform tools
finds "$work/moved" 'whose platform: bundled' OPTIONAL_COMPONENTS other
refuses "$work/moved" 'requested version "1.999"' 1.999
refuses "$work/moved" 'requested version "2.0"' 2.0
refuses "$work/moved" 'requested version "0.9"' 0.9
refuses "$work/moved" "korvan has no component 'other'; it has korvan" \
  COMPONENTS other

# As it is where only the component `development` was installed.
cp -R "$work/moved" "$project/moved"
find "$project/moved" -name 'korvan-tools-targets*.cmake' -exec rm {} +
refuses "$project/moved" "'tools', its command-line programs, is not installed" \
  COMPONENTS tools
