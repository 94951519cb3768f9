#!/bin/sh
# install_and_move.sh [--self-test] CMAKE SOURCE_DIR BUILD_DIR WORK_DIR
# Installs the build and moves the installed tree to WORK_DIR/moved. Nothing in
# it may remember where it was built or first installed.
set -eu

if [ "$1" = --self-test ]; then
  source=$3 build=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # installed WHAT MESSAGE SCRIPT: by a CMake that does no more than SCRIPT, in
  # the folder that is the prefix.
  installed() {
    fake cmake "mkdir -p \"\$4/lib\" && cd \"\$4/lib\" && $3"
    set -- "$1" "$2" "$0" "$work/cmake" "$source" "$build" "$work/tree"
    if [ "$2" = "" ]; then
      shift 2
      must_pass "an innocent library" "$@"
    else
      must_fail "$@"
    fi
  }
  library="echo 'int one = 1;' | '$CXX' -shared -g -x c++ - -o libkorvan.so"
  installed "" "" "$library"
  installed "nothing" 'no library is installed' :
  installed "a text that names the sources" 'name a folder' \
    "$library && echo '$source/include' > one.pc"
  installed "a text that names the build" 'name a folder' \
    "$library && echo '$build' > one.cmake"
  installed "a text that names the first place" 'name a folder' \
    "$library && pwd > one.pc"
  installed "a library that looks for others in the build" 'name a folder' \
    "$library -Wl,-rpath,'$build'"
  installed "a library that can't be read" 'format not recognized' \
    'echo > libkorvan.so'
  installed "a program that looks for libraries in the build" 'name a folder' \
    "$library && mkdir bin && echo 'int main() {}' |
       '$CXX' -g -x c++ - -o bin/one -Wl,-rpath,'$build'"
  installed "" "" "$library && mkdir bin && echo 'int main() {}' > '$work/one.cc' &&
    '$CXX' -g '$work/one.cc' -o bin/one"
  fake cmake 'exit 3'
  must_fail "a CMake that fails" '^installing failed$' \
    "$0" "$work/cmake" "$source" "$build" "$work/tree"
  end_self_test
fi
cmake=$1 source=$2 build=$3 work=$4

rm -rf "$work"
"$cmake" --install "$build" --prefix "$work/installed" > /dev/null ||
  { echo "installing failed"; exit 1; }
mv "$work/installed" "$work/moved"

# Debug information names the sources, as it should, and stays out of this.
cp -R "$work/moved" "$work/stripped"
[ -n "$(find "$work/stripped" -name 'lib*.so')" ] ||
  { echo "no library is installed"; exit 1; }
find "$work/stripped" -type f ! -name '*.py' \
  \( -name 'lib*.so*' -o -path '*/bin/*' \) \
  -exec strip {} +
status=0
grep -r -l -F -e "$source" -e "$build" -e "$work/installed" \
  "$work/stripped" || status=$?
rm -rf "$work/stripped"
case $status in
  0) echo "the files above name a folder of the build"; exit 1 ;;
  1) ;;
  *) echo "the installed files can't be searched"; exit 1 ;;
esac
