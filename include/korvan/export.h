/// @file
/// `KORVAN_API`, the only macro that a user of the library meets, and the
/// platforms that the library does not work with: they are refused here, by a
/// sentence, before anything else can fail. <korvan/text.h> and
/// <korvan/ini_file.h> refuse settings of the standard library.
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

/// Marks what the shared libraries export. Everything else in them is hidden.
#define KORVAN_API __attribute__((visibility("default")))

#endif  // KORVAN_EXPORT_H_
