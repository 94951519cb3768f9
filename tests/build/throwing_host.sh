#!/bin/sh
# throwing_host.sh [--self-test] COMPILER INSTALLED_DIR LIBDIR
# Builds the host beside this script against an installed library, and runs it.
set -eu

if [ "$1" = --self-test ]; then
  compiler=$2 installed=$3 libdir=$4
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  cp -R "$installed" "$work/installed"
  # A library that keeps to itself whatever its host throws.
  rm "$work/installed/$libdir/libkorvan.so"
  "$compiler" -shared -fPIC -x c++ - -I"$installed/include" \
    -o "$work/installed/$libdir/libkorvan.so" << 'END'
#include <korvan/public_key.h>
#include <korvan/platform/last_error.h>
#include <cstdlib>
namespace {
int Fail(unsigned char** buffer) {
  std::free(*buffer);
  *buffer = nullptr;
  try { SetLastError(1); } catch (...) {}
  return 0;
}
}
namespace korvan {
int KRVConvertPublicKeyInfo(unsigned int, const _CERT_PUBLIC_KEY_INFO*,
    unsigned int, unsigned int, unsigned char** blob, unsigned int*) {
  return Fail(blob);
}
int KRVEncodePublicKeyAndParametrs(unsigned int, const char*,
    const unsigned char*, unsigned int, unsigned int, unsigned int,
    unsigned char** key, unsigned int*, unsigned char** parameters,
    unsigned int*) {
  return Fail(key) + Fail(parameters);
}
}
END
  must_fail "a library that lets nothing through" 'the exception arrives' \
    "$0" "$compiler" "$work/installed" "$libdir"
  rm -r "$work/installed/include"
  must_fail "no headers" 'public_key\.h: No such file' \
    "$0" "$compiler" "$work/installed" "$libdir"
  end_self_test
fi
compiler=$1 installed=$2 libdir=$2/$3

rm -f "$installed.throwing_host"
"$compiler" -std=c++17 -Wall -Wextra -Werror "$(dirname "$0")/throwing_host.cc" \
  -I"$installed/include" -L"$libdir" -lkorvan -lkorvan_platform \
  -Wl,-rpath,"$libdir" -o "$installed.throwing_host"
"$installed.throwing_host"
