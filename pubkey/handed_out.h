// The buffers that callers get, and give back with `free` or by passing their
// pointer in again.
#ifndef KORVAN_PUBKEY_HANDED_OUT_H_
#define KORVAN_PUBKEY_HANDED_OUT_H_

#include <korvan/cryptoapi.h>
#include <korvan/platform/last_error.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>

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

// Stores a copy of `bytes` at `buffer`, as `HandOut` does.
inline bool HandOutCopy(unsigned char*& buffer,
                        std::span<const unsigned char> bytes) {
  if (!HandOut(buffer, bytes.size())) {
    return false;
  }
  Append(buffer, bytes.data(), static_cast<unsigned int>(bytes.size()));
  return true;
}

// Reports why a call fails, and gives what it then returns.
inline int Fail(unsigned int code) {
  SetLastError(code);
  return 0;
}

}  // namespace korvan::pubkey

#endif  // KORVAN_PUBKEY_HANDED_OUT_H_
