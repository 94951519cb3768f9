#!/bin/sh
# host_package.sh [--self-test] CMAKE COMPILER SOURCE_DIR BUILD_DIR WORK_DIR
# The CMake package of a library built for a host, as the example in BUILD_DIR
# installs it: it says that the host's libraries must be linked, and a program
# runs with them and is not linked without.
set -eu
if [ "$1" = --self-test ]; then
  script=$0 cmake=$2 compiler=$3 source=$4 build=$5
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # breaks WHAT MESSAGE SED: another package, with the library as it is.
  breaks() {
    fake cmake "'$cmake' \"\$@\" || exit
      [ \"\$1\" != --install ] ||
        find '$work' -name korvan-config.cmake -exec sed -i '$3' {} +"
    must_fail "$1" "$2" "$script" "$work/cmake" "$compiler" "$source" "$build" \
      "$work/work"
  }
  breaks "no word of the host" "should say 'must link the host's" \
    's/NOT korvan_FIND_QUIETLY/FALSE/'
  breaks "a bundled platform that is not there" 'is found' \
    's/set(korvan_FOUND FALSE)//'
  breaks "another platform" "should say 'whose platform: host'" \
    's/set(korvan_PLATFORM host)/set(korvan_PLATFORM bundled)/'
  # ends WHAT MESSAGE SCRIPT: another program, with the package as it is.
  # shellcheck disable=SC2016  # for the written scripts
  ends() {
    fake user 'real=$0.real
'"$3"
    fake cmake "'$cmake' \"\$@\" || exit
      [ \"\$1\" != --build ] || [ ! -x \"\$2/user\" ] ||
        { mv \"\$2/user\" \"\$2/user.real\" && cp '$work/user' \"\$2\"; }"
    must_fail "$1" "$2" "$script" "$work/cmake" "$compiler" "$source" "$build" \
      "$work/work"
  }
  # shellcheck disable=SC2016
  {
    ends "a program that fails" 'the program fails' '"$real"; exit 1'
    ends "a program that prints nothing" 'prints no last error' \
      '"$real" > /dev/null'
  }
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 build=$4 work=$5
example=$source/examples/host
rm -rf "$work"
mkdir -p "$work"
"$cmake" --install "$build" --prefix "$work/installed" > /dev/null

# configures PACKAGE LIBRARIES: a project that finds PACKAGE and links LIBRARIES.
configures() {
  cat > "$work/CMakeLists.txt" << END
cmake_minimum_required(VERSION 3.25)
project(user LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 17)
find_package($1 REQUIRED)
message(STATUS "whose platform: \${korvan_PLATFORM}")
add_library(host_platform SHARED "$example/platform.cc"
  "$example/asn1_record.cc")
target_include_directories(host_platform PUBLIC "$example/include")
add_executable(user "$example/main.cc")
target_include_directories(user PRIVATE "$example/include")
target_link_libraries(user PRIVATE $2)
END
  rm -rf "$work/build"
  "$cmake" -S "$work" -B "$work/build" -G Ninja \
    -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_PREFIX_PATH="$work/installed" > "$work/log" 2>&1
}
says() {  # says TEXT: CMake breaks lines where it likes
  tr -s '\n ' ' ' < "$work/log" | grep -q -F -e "$1" || {
    cat "$work/log"
    echo "should say '$1'"
    exit 1
  }
}

if configures "korvan COMPONENTS platform" korvan::korvan; then
  echo "the bundled platform is found"
  exit 1
fi
says "was built for a host's platform (KORVAN_PLATFORM=host) and has no"
says "link the host's libraries instead"

configures korvan korvan::korvan || { cat "$work/log"; exit 1; }
if "$cmake" --build "$work/build" > "$work/log" 2>&1; then
  echo "a program is linked without its host"
  exit 1
fi
says 'undefined reference'

configures korvan 'korvan::korvan host_platform' ||
  { cat "$work/log"; exit 1; }
says 'whose platform: host'
says "must link the host's libraries as well"
"$cmake" --build "$work/build" > "$work/log" 2>&1 ||
  { cat "$work/log"; exit 1; }
"$work/build/user" > "$work/printed" ||
  { cat "$work/printed"; echo "the program fails"; exit 1; }
grep -q 'last error' "$work/printed" ||
  { cat "$work/printed"; echo "the program prints no last error"; exit 1; }
