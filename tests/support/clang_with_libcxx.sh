#!/bin/sh
# clang_with_libcxx.sh ARGUMENT...
# Clang 19 with its own standard library, as a compiler of one name: the preset
# `libcxx` builds with it, and so do the tests that build.
exec clang++-19 -stdlib=libc++ "$@"
