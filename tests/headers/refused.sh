#!/bin/sh
# refused.sh [--self-test] SOURCE_DIR COMPILER...
# What the library does not work with is refused: the first error is a sentence
# that tells it. The first compiler looks at every header, the others at the one
# that includes them.
set -eu
export LC_ALL=C

if [ "$1" = --self-test ]; then
  shift
  source=$1
  shift
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # changed HEADER SED COMPILER...
  # shellcheck disable=SC2317  # called by must_fail
  changed() {
    header=include/korvan/$1
    rm -rf "$work/source"
    mkdir "$work/source"
    cp -r "$source/include" "$source/ini" "$work/source"
    sed "$2" "$source/$header" > "$work/source/$header"
    ! cmp -s "$source/$header" "$work/source/$header" ||
      { echo "not changed: $2"; exit 1; }
    shift 2
    "$0" "$work/source" "$@"
  }
  must_pass "the headers as they are" "$0" "$source" "$@"
  for check in '#ifndef __cplusplus' '#elif __cplusplus' '#if __SIZEOF_POINTER' \
    '#if __BYTE_ORDER' '#if __SIZEOF_WCHAR'; do
    case $check in "#elif"*) never='#elif 0' ;; *) never='#if 0' ;; esac
    must_fail "no $check" "does not say" changed export.h \
      "s/^$check.*/$never/" "$@"
  done
  must_fail "no word of strings" "does not say" changed text.h \
    's/^#if defined(__GLIBCXX__).*/#if 0/' "$@"
  must_fail "no word of maps" "does not say" changed ini_file.h \
    's/^#if defined(__GLIBCXX__).*/#if 0/' "$@"
  must_fail "too many refusals" "needs the C++11 strings" changed oid_info.h \
    's/^#include <korvan.export.h>/#include <korvan\/ini_file.h>/' "$@"
  must_fail "a name less" "does not say 'a name" changed cryptoapi.h \
    's/defined(NTE_BAD_KEY)/0/' "$@"
  must_fail "a name of korvan less" "does not say 'a name of korvan" \
    changed oid_info.h 's/^#ifdef PARAMSET.*/#if 0/' "$@"
  must_fail "a name of Xlib" "unqualified-id" changed platform/asn1_record.h \
    's/FindStatus/Status/' "$@"
  must_fail "a layout of a host less" "does not say 'LPCWSTR" \
    changed cryptoapi.h '/^static_assert(sizeof(\*LPCWSTR/d' "$@"
  must_fail "a layout of korvan less" "does not say 'COidData" \
    changed oid_info.h 's/sizeof(COidData) ==/true || &/' "$@"
  must_fail "a host that is refused" "is not looked at" changed cryptoapi.h \
    '/^#ifndef KORVAN_HOST/d;/^#endif  \/\/ KORVAN_HOST/d' "$@"
  must_fail "no compiler" "^no compiler" "$0" "$source"
  fake compiler "case \$* in *-dM*) exit 1 ;; esac; exec '$1' \"\$@\""
  must_fail "a compiler that keeps its macros" "does not tell its macros" \
    "$0" "$source" "$work/compiler"
  end_self_test
fi
source=$1
shift
[ $# -gt 0 ] || { echo "no compiler"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# include HEADER...: makes each a source of its own.
include() {
  rm -f "$work"/*.cc
  for header; do
    echo "#include <$header>" > "$work/$(basename "$header" .h).cc"
  done
}
# All but the one that only has the numbers of the version.
# shellcheck disable=SC2046  # the headers are words
include $(cd "$source/include" && find korvan -name '*.h' ! -name version.h)
[ -s "$work/korvan.cc" ] || { echo "no header"; exit 1; }

# first_error SOURCE FLAG...: of the compiler, which stops there.
first_error() {
  file=$1
  shift
  "$compiler" -fsyntax-only -Wfatal-errors -I"$source/include" -I"$source" \
    "$@" "$file" > "$work/log" 2>&1 || true
  sed -n '/error: /{s/.*error: //;p;q;}' "$work/log"
}
# says SENTENCE SOURCE FLAG...
says() {
  sentence=$1
  shift
  said=$(first_error "$@")
  # Clang leaves out that it was an #error.
  case ${said#"#error "} in
    "\"$sentence\"" | "\"$sentence: "*) ;;
    *)
      cat "$work/log"
      echo "$compiler $* does not say '$sentence'"
      exit 1
      ;;
  esac
}
# passes SOURCE FLAG...
passes() {
  said=$(first_error "$@")
  [ -z "$said" ] || { cat "$work/log"; exit 1; }
}
# refused SENTENCE FLAG...: by every header that is a source.
refused() {
  wanted=$1
  shift
  for one in "$work"/*.cc; do
    says "$wanted" "$one" "$@"
  done
}
# asserts SENTENCE LINE...: a source of these lines is refused so.
asserts() {
  wanted=$1
  shift
  printf '%s\n' "$@" > "$work/layout"
  case $(first_error "$work/layout" -x c++) in
    *"$wanted"*) ;;
    *) cat "$work/log"; echo "$compiler does not say '$wanted'"; exit 1 ;;
  esac
}
# host SENTENCE SED: by a host's declarations, changed so.
host() {
  declared=$(dirname "$0")/host_cryptoapi.h
  sed "$2" "$declared" > "$work/host.h"
  ! cmp -s "$declared" "$work/host.h" ||
    { echo "not changed: $2"; exit 1; }
  asserts "$1" "#include \"$work/host.h\"" "#define KORVAN_HOST_CRYPTOAPI" \
    "#include <korvan/korvan.h>"
}
names=$(sed -n -e 's/^using \([A-Z_]*\) = .*/\1/p' \
  -e 's/^typedef struct \([A-Z_]*\) {$/\1/p' -e 's/^} \([A-Z_]*\);$/\1/p' \
  -e 's/^typedef [A-Z_]* \([A-Z_]*\);$/\1/p' \
  -e 's/^constexpr [A-Z_]* \([A-Z0-9_]*\) = .*/\1/p' \
  "$source/include/korvan/cryptoapi.h")
[ "$(echo "$names" | wc -l)" -gt 60 ] ||
  { echo "names are missed: $names"; exit 1; }

for compiler; do
  # Without a reason nothing is refused.
  passes "$work/korvan.cc" -std=c++11

  refused "korvan is a C++ library" -x c -std=c99
  refused "korvan needs C++11 or newer" -std=c++98
  refused "korvan needs a wchar_t of 32 bits" -fshort-wchar
  # Where the interface has strings or maps, and nowhere else. To another
  # standard library these mean nothing.
  "$compiler" -E -dM -include cstddef -x c++ /dev/null > "$work/macros" ||
    { echo "$compiler does not tell its macros"; exit 1; }
  if grep -q __GLIBCXX__ "$work/macros"; then
    for one in "$work"/*.cc; do
      case $(basename "$one") in
        korvan.cc | ini_file.cc | text.cc)
          says "korvan needs the C++11 strings" "$one" \
            -D_GLIBCXX_USE_CXX11_ABI=0 ;;
        *) passes "$one" -D_GLIBCXX_USE_CXX11_ABI=0 ;;
      esac
      case $(basename "$one") in
        korvan.cc | ini_file.cc)
          says "korvan's maps are not those of _GLIBCXX_DEBUG" "$one" \
            -D_GLIBCXX_DEBUG ;;
        *) passes "$one" -D_GLIBCXX_DEBUG ;;
      esac
    done
    # The library itself, too.
    says "korvan's maps are not those of _GLIBCXX_DEBUG" \
      "$source/ini/ini_file_a.cc" -std=c++20 -D_GLIBCXX_DEBUG
  fi

  # Platforms that the compiler knows and needs nothing else for: Clang knows
  # many, GCC those of its own kind of processor.
  narrow='' big=''
  case $("$compiler" --version) in
    *clang*)
      narrow="--target=i386-linux-gnu --target=x86_64-linux-gnux32
        --target=arm-linux-gnueabihf"
      big="--target=s390x-linux-gnu --target=powerpc64-linux-gnu
        --target=aarch64_be-linux-gnu"
      ;;
    *) case $("$compiler" -dumpmachine) in
         x86_64-*) narrow="-m32 -mx32" ;;
         aarch64-*) narrow="-mabi=ilp32" big="-mbig-endian" ;;
       esac ;;
  esac
  for flag in $narrow; do
    refused "korvan needs 64-bit pointers" "$flag"
  done
  for flag in $big; do
    refused "korvan needs little-endian numbers" "$flag"
  done

  # What Xlib makes of common names.
  for one in "$work"/*.cc; do
    passes "$one" -DBool=int -DStatus=int -DNone=0L -DTrue=1 -DFalse=0 \
      -DAlways=2 -DSuccess=0
  done

  # A host's macros, of which one is enough.
  says "a name of CryptoAPI is a macro" "$work/korvan.cc" -DBYTE=char
  [ -e "$work/cryptoapi.cc" ] || continue
  all=''
  for name in $names; do
    says "a name of CryptoAPI is a macro" "$work/cryptoapi.cc" "-D$name=1"
    all="$all -D$name=1"
  done
  # What else is wrong with these is said in other words.
  # shellcheck disable=SC2086  # the flags are words
  case $(first_error "$work/cryptoapi.cc" $all -DKORVAN_HOST_CRYPTOAPI) in
    *"is a macro"*) echo "KORVAN_HOST_CRYPTOAPI is not looked at"; exit 1 ;;
  esac
  says "a name of korvan is a macro" "$work/oid_info.cc" \
    -DPARAMSET_OID_GROUP_ID=20

  # Other layouts: a host's, and those that a #pragma before the headers makes.
  host "LPCWSTR is of 32-bit characters" 's/wchar_t\* LPCWSTR/char16_t* LPCWSTR/'
  host "DWORD has 32 bits" 's/unsigned int DWORD/unsigned long DWORD/'
  host "CRYPT_BIT_BLOB has the published layout" 's/cUnusedBits/&[4]/'
  asserts "COidData begins as a CRYPT_OID_INFO does" \
    "#include <korvan/cryptoapi.h>" "#pragma pack(4)" "#include <korvan/korvan.h>"
  include korvan/korvan.h
done
