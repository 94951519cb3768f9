// The buffers that callers get, and give back with `free` or by passing their
// pointer in again.
#ifndef KORVAN_PUBKEY_HANDED_OUT_H_
#define KORVAN_PUBKEY_HANDED_OUT_H_

#include <korvan/cryptoapi.h>
#include <korvan/platform/last_error.h>

#include <cstdlib>
#include <cstring>

namespace korvan::pubkey {

// Frees the buffer that an earlier call left at `buffer`.
inline void TakeBack(unsigned char*& buffer) {
  if (buffer != nullptr) {
    std::free(buffer);
    buffer = nullptr;
  }
}

// Stores a buffer of exactly `size` bytes at `buffer`. Without memory it
// stores null, sets the last error and returns false.
inline bool HandOut(unsigned char*& buffer, std::size_t size) {
  buffer = static_cast<unsigned char*>(std::malloc(size));
  if (buffer == nullptr) {
    SetLastError(NTE_NO_MEMORY);
  }
  return buffer != nullptr;
}

// Copies `count` bytes, of which there may be none at no address, and returns
// where the next ones go.
inline unsigned char* Append(unsigned char* to, const void* bytes,
                             unsigned int count) {
  if (count != 0) {
    std::memcpy(to, bytes, count);
  }
  return to + count;
}

// Reports why a call fails, and gives what it then returns.
inline int Fail(unsigned int code) {
  SetLastError(code);
  return 0;
}

}  // namespace korvan::pubkey

#endif  // KORVAN_PUBKEY_HANDED_OUT_H_
