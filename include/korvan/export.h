/// @file
/// `KORVAN_API`, the only macro that a user of the library meets, and the
/// platforms and settings that the library does not work with: they are refused
/// here, by a sentence, before anything else can fail.
#ifndef KORVAN_EXPORT_H_
#define KORVAN_EXPORT_H_

#ifndef __cplusplus
#error "korvan is a C++ library: a C compiler can't read its headers"
#elif __cplusplus < 201103L
#error "korvan needs C++11 or newer: compile with -std=c++11"
#endif
#if __SIZEOF_POINTER__ != 8
#error "korvan needs 64-bit pointers: there is no korvan for this platform"
#endif
#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error \
    "korvan needs little-endian numbers: there is no korvan for this platform"
#endif
#if __SIZEOF_WCHAR_T__ != 4
#error "korvan needs a wchar_t of 32 bits: compile without -fshort-wchar"
#endif

// The macros of the standard library need one of its headers.
#include <cstddef>

#ifdef __GLIBCXX__
#if !_GLIBCXX_USE_CXX11_ABI
#error "korvan needs the C++11 strings: compile with _GLIBCXX_USE_CXX11_ABI=1"
#endif
#ifdef _GLIBCXX_DEBUG
#error "korvan's maps are not those of _GLIBCXX_DEBUG: compile without it"
#endif
#endif

/// Marks what the shared libraries export. Everything else in them is hidden.
#define KORVAN_API __attribute__((visibility("default")))

#endif  // KORVAN_EXPORT_H_
