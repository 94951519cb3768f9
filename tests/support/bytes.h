// Byte strings as tests write, join and print them.
#ifndef KORVAN_TESTS_SUPPORT_BYTES_H_
#define KORVAN_TESTS_SUPPORT_BYTES_H_

#include <cstddef>
#include <numeric>
#include <vector>

namespace korvan::test {

using Bytes = std::vector<unsigned char>;

// 1, 2, 3 and so on, so that no shift or swap goes unseen.
inline Bytes Counted(std::size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
  return bytes;
}

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline unsigned int SizeOf(const Bytes& bytes) {
  return static_cast<unsigned int>(bytes.size());
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_BYTES_H_
