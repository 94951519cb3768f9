// For a program with a `read` of its own: what a library that is compiled with
// _FORTIFY_SOURCE=3 calls instead. To be included by one source of a program.
#ifndef KORVAN_TESTS_INI_FORTIFIED_READ_H_
#define KORVAN_TESTS_INI_FORTIFIED_READ_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>

extern "C" ssize_t __read_chk(int descriptor, void* place, std::size_t size,
                              std::size_t room);
ssize_t __read_chk(int descriptor, void* place, std::size_t size,
                   std::size_t room) {
  EXPECT_LE(size, room);
  return read(descriptor, place, size);
}

#endif  // KORVAN_TESTS_INI_FORTIFIED_READ_H_
