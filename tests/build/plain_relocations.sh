#!/bin/sh
# plain_relocations.sh [--self-test] CMAKE COMPILER SOURCE_DIR WORK_DIR FLAGS
# Without packed relocations the libraries ask for glibc 2.33 at most.
set -eu
export LC_ALL=C
if [ "$1" = --self-test ]; then
  cmake=$2 compiler=$3 source=$4 flags=$6
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # shellcheck disable=SC2016  # for the written script
  fake cmake 'case $1 in -S) set -- "$@" $more ;; esac
    exec '"'$cmake' \"\$@\""
  # with WHAT MESSAGE OPTION
  with() {
    must_fail "$1" "$2" env more="$3" "$0" "$work/cmake" "$compiler" \
      "$source" "$work/work" "$flags"
  }
  with "packed relocations" "asks for GLIBC_ABI_DT_RELR" \
    -DKORVAN_PACKED_RELOCATIONS=ON
  # A function that came with 2.34.
  echo 'extern "C" int __libc_start_main(); int Start() { return __libc_start_main(); }' \
    > "$work/new.cc"
  "$compiler" -fPIC -c "$work/new.cc" -o "$work/new.o"
  with "a newer function" "asks for GLIBC_2.34" \
    "-DCMAKE_SHARED_LINKER_FLAGS=$work/new.o"
  rm -rf "$work/work"
  # shellcheck disable=SC2016  # for the written script
  fake cmake 'case $1 in --build) ;; *) exec '"'$cmake' \"\$@\" ;; esac"
  with "no library" "No such file" ""
  end_self_test
fi
cmake=$1 compiler=$2 source=$3 work=$4 flags=$5

mkdir -p "$work"
"$cmake" -S "$source" -B "$work/build" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_FLAGS_RELEASE="$flags" -DKORVAN_PACKED_RELOCATIONS=OFF \
  -DKORVAN_BUILD_TESTS=OFF -DKORVAN_BUILD_EXAMPLES=OFF \
  -DKORVAN_BUILD_TOOLS=OFF > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
"$cmake" --build "$work/build" > "$work/log" 2>&1 || { cat "$work/log"; exit 1; }
for library in korvan korvan_platform; do
  versions=$(readelf -WV "$work/build/lib$library.so")
  versions=$(printf '%s\n' "$versions" | grep -oE 'GLIBC_[A-Z0-9_.]+' | sort -uV)
  [ -n "$versions" ] || { echo "$library asks for nothing"; exit 1; }
  for version in $versions; do
    case $version in
      GLIBC_2.*)
        [ "${version#GLIBC_2.}" = "$(printf '%s\n33\n' "${version#GLIBC_2.}" |
          sort -V | head -n 1)" ] || { echo "$library asks for $version"; exit 1; }
        ;;
      *) echo "$library asks for $version"; exit 1 ;;
    esac
  done
done
