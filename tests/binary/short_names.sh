#!/bin/sh
# short_names.sh
# Demangles symbols, one a line, and sorts them. Standard strings and streams get
# their short names, which are the same with both string types of libstdc++ and
# with libc++. A constructor or a destructor has two symbols, so its name stands
# twice.
set -eu
export LC_ALL=C
c++filt |
  sed -e 's/std::__cxx11::/std::/g' -e 's/std::__1::/std::/g' \
    -e 's/\[abi:cxx11\]//g' \
    -e 's/std::basic_string<char,[^>]*>, std::allocator<char> >/std::string/g' \
    -e 's/std::basic_string<wchar_t,[^>]*>, std::allocator<wchar_t> >/std::wstring/g' \
    -e 's/std::basic_\([io]stream\)<char, std::char_traits<char> >/std::\1/g' \
    -e 's/std::basic_\([io]stream\)<wchar_t, std::char_traits<wchar_t> >/std::w\1/g' |
  sort
