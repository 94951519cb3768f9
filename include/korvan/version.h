/// @file
/// The version of these headers. By the rules of semantic versioning: a program
/// that was built with a version runs with every later one of the same
/// `KORVAN_VERSION_MAJOR`.
///
/// This file is the one place where the version stands; CMake reads it here.
#ifndef KORVAN_VERSION_H_
#define KORVAN_VERSION_H_

/// Grows when programs must be built anew, and with it the number that the
/// library's file name ends in.
#define KORVAN_VERSION_MAJOR 1

/// Grows when something is added.
#define KORVAN_VERSION_MINOR 0

/// Grows when faults are mended.
#define KORVAN_VERSION_PATCH 0

/// The three as a string, for messages. The preprocessor compares the numbers.
#define KORVAN_VERSION "1.0.0"

#endif  // KORVAN_VERSION_H_
