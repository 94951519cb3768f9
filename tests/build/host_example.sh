#!/bin/sh
# host_example.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR
# Builds the example of a host, a project outside of this one, and runs it: it
# prints what its source says.
set -eu
if [ "$1" = --self-test ]; then
  shift
  cmake=$1 compiler=$2 source=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # breaks WHAT MESSAGE FILE SED: another example, with the library as it is.
  breaks() {
    rm -rf "$work/source"
    mkdir -p "$work/source/examples"
    cp -r "$source/examples/host" "$work/source/examples/host"
    for file in CMakeLists.txt cmake include ini oid packaging platform pubkey \
      resources; do
      ln -s "$source/$file" "$work/source/$file"
    done
    sed -i "$4" "$work/source/examples/host/$3"
    must_fail "$1" "$2" "$0" "$cmake" "$compiler" "$work/source" "$work/work"
  }
  breaks "a host that prints something else" '^[-+]last error' \
    main.cc "s/oid\[0\] = '9'/oid[0] = '1'/"
  breaks "records that nobody defines" 'undefined reference' \
    CMakeLists.txt 's/ asn1_record.cc//'
  breaks "the bundled platform" 'is bundled' CMakeLists.txt '/KORVAN_PLATFORM/d'
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4
example=$source/examples/host
rm -rf "$work"
mkdir -p "$work"
{
  "$cmake" -S "$example" -B "$work/build" -G Ninja \
    -DCMAKE_CXX_COMPILER="$compiler" -DKORVAN_INSTALL=ON &&
    "$cmake" --build "$work/build"
} > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
if [ -n "$(find "$work/build" -name 'libkorvan_platform*')" ]; then
  echo "the platform is bundled"
  exit 1
fi
"$work/build/host" > "$work/printed"
sed -n '/^\/\/ It prints:$/,$s/^\/\/ //p' "$example/main.cc" | sed 1d \
  > "$work/wanted"
[ -s "$work/wanted" ] || { echo "main.cc does not say what it prints"; exit 1; }
diff -u "$work/wanted" "$work/printed"
find "$example" -type f -exec wc -l {} + | awk '$2 != "total" && $1 >= 60 {
  print $2 " is no small example"; long = 1 } END { exit long }'
