#!/bin/sh
# throwing_host.sh COMPILER INSTALLED_DIR LIBDIR
# Builds the host beside this script against an installed library, and runs it.
set -eu
compiler=$1 installed=$2 libdir=$2/$3
"$compiler" -std=c++17 -Wall -Wextra -Werror "$(dirname "$0")/throwing_host.cc" \
  -I"$installed/include" -L"$libdir" -lkorvan -lkorvan_platform \
  -Wl,-rpath,"$libdir" -o "$installed/throwing_host"
"$installed/throwing_host"
